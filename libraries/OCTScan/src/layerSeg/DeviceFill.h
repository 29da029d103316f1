#pragma once

#include "OCTScan.h"
#include "kelpImage.h"

#include <QList>

#include <atomic>
#include <cstdint>

namespace kelp::oct {

/// The device moves and tilts a B-scan to straighten the retina, and paints white (255) what it has
/// no data for: triangles and bands along the image's border. A cut takes their edges for the
/// brightest surface there is, and since it runs over the whole volume, one such B-scan can draw
/// all others with it. So the steps see those areas as black (0). The scan itself stays.
///
/// In a B-scan of 8 bits an area is the device's fill if it is 4-connected, of exactly 255, touches
/// the border and has at least 50 pixels: inside of real images no such area had more than 24.
/// JPEG smears the fill's edge, which shows in the pixels next to those of 255; there an area is
/// fill if it is of 240 and above and half of it still 255, and so are two pixels more around it.
/// Images without fill are handed through as they are, shared, and so are those that are left when
/// the flag says that the run is to stop.
QList<kelp::ImagePtr> segmentationImages(const OCTScan& scan,
                                         const std::atomic<bool>* abortFlag = nullptr);

/// The same, each image scaled as BScan::getScaledImage does it.
QList<kelp::ImagePtr> segmentationImagesCoarse(const OCTScan& scan, double xScale, double yScale,
                                               const std::atomic<bool>* abortFlag = nullptr);

/// How much of a scan is the device's fill.
struct FillCount
{
    std::int64_t pixels = 0;
    int bScans = 0; ///< that have some
};

FillCount countDeviceFill(const OCTScan& scan);

/// One image: the image itself where there is no fill, else a copy without it. The time it takes
/// grows with the number of pixels, whatever they hold.
kelp::ImagePtr withoutDeviceFill(const kelp::ImagePtr& image);

} // namespace kelp::oct
