#pragma once

#include "OCTScan.h"
#include "kelpImage.h"

#include <QList>

namespace kelp::oct {

/// The device moves and tilts a B-scan to straighten the retina, and paints white (255) what it has
/// no data for: triangles and bands along the image's border. A cut takes their edges for the
/// brightest surface there is, and since it runs over the whole volume, one such B-scan can draw
/// all others with it. So the steps see those areas as black (0). The scan itself stays.
///
/// In a B-scan of 8 bits an area is the device's fill if it is 4-connected, of exactly 255, touches
/// the border and has at least 50 pixels: inside of real images no such area had more than 24.
/// JPEG smears the fill's edge, which shows in the pixels next to it; there everything from 240 on
/// that hangs together with the fill belongs to it too, and two pixels more around all of it.
/// Images without fill are handed through as they are, shared.
QList<kelp::ImagePtr> segmentationImages(const OCTScan& scan);

/// The same, each image scaled as BScan::getScaledImage does it.
QList<kelp::ImagePtr> segmentationImagesCoarse(const OCTScan& scan, double xScale, double yScale);

/// One image: the image itself where there is no fill, else a copy without it.
kelp::ImagePtr withoutDeviceFill(const kelp::ImagePtr& image);

} // namespace kelp::oct
