#include "SliceStackCosts.h"

#include <cstddef>
#include <cstdint>

namespace kelp::oct {

namespace {

constexpr float capacityPerCost = 1000.0F;

/// The image with the rows of an A-scan side by side.
std::vector<std::uint16_t> transposed(const kelp::Image& image)
{
    const auto columns = static_cast<std::size_t>(image.getColumns());
    const auto rows = static_cast<std::size_t>(image.getRows());
    const auto* const pixels = image.pixels<std::uint16_t>();
    std::vector<std::uint16_t> result(columns * rows);
    // Block by block, since either order alone misses the cache on one side.
    constexpr std::size_t block = 32;
    for (std::size_t x0 = 0; x0 < columns; x0 += block) {
        for (std::size_t y = 0; y < rows; ++y) {
            for (std::size_t x = x0; x < columns && x < x0 + block; ++x) {
                result[x * rows + y] = pixels[y * columns + x];
            }
        }
    }
    return result;
}

} // namespace

std::vector<int> columnCapacities(const kelp::Image& image, const CostFunction& costFunction,
                                  const VolumeLayer& top, const VolumeLayer& bottom,
                                  const MaskMatrix& mask, unsigned bScan)
{
    const kelp::ImagePtr mono = image.convertTo(kelp::MonoUInt16);
    const std::vector<std::uint16_t> pixels = transposed(*mono);
    const auto rows = static_cast<std::size_t>(mono->getRows());
    kelp::DynamicVector<unsigned short> column(rows);
    CostFunction::Values costs;
    std::vector<int> capacities;
    for (unsigned x = 0; x < top.columns; ++x) {
        if (mask(bScan, x) != 0) {
            continue;
        }
        std::copy_n(pixels.begin() + static_cast<std::ptrdiff_t>(x * rows), rows, column.data());
        const int rangeTop = top(bScan, x);
        const int rangeBottom = bottom(bScan, x);
        costFunction.computeColumnCost(column, rangeTop, rangeBottom, costs);
        capacities.push_back(static_cast<int>(costs[0] - costs[1]));
        for (std::size_t k = 1; k + 1 < static_cast<std::size_t>(rangeBottom - rangeTop); ++k) {
            capacities.push_back(static_cast<int>((costs[k] - costs[k + 1]) * capacityPerCost));
        }
    }
    return capacities;
}

} // namespace kelp::oct
