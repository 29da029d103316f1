#pragma once

#include <cstdint>
#include <vector>

namespace kelp::phantom {

/// Adds what a device that averages some frames leaves: multiplicative speckle, gamma distributed
/// and correlated over neighbouring pixels, and a little additive noise. The image is row by row;
/// strength 1 is that of a real device, 0 leaves the image alone.
void addSpeckle(std::vector<float>& image, int columns, int rows, double strength,
                std::uint64_t seed);

} // namespace kelp::phantom
