#pragma once

#include "RetinaSurfaces.h"

#include <QImage>

#include <cstddef>
#include <vector>

namespace kelp::phantom {

/// Where the frame that the device captured lies in the image of a B-scan. The device moves and
/// tilts it to keep the retina in place and level; what the frame then leaves uncovered is white.
/// So the surfaces are where they are without it, and the white never comes close to the retina,
/// but for one or two columns beside the frame: their tissue was not captured.
class DeviceFrame
{
public:
    /// Every B-scan of a seed has a frame of its own.
    DeviceFrame(const Options& options, std::size_t bScan, const SurfaceSlice& slice);

    /// Of the image's pixels.
    int uncoveredPixels() const;
    void paintUncovered(QImage& image) const;

    /// The rows that an image must have, so that every kind of retina leaves room above and below.
    static constexpr int leastRows = 160;

private:
    /// Rows without data: above the frame if positive, below it if negative.
    void tilt(double leftEnd, double rightEnd, const SurfaceSlice& slice);
    bool isUncovered(int row, int column) const;

    int m_rows;
    std::vector<int> m_shifts; ///< one a column
    int m_firstColumn = 0;     ///< of the frame
    int m_endColumn;           ///< behind its last one
};

} // namespace kelp::phantom
