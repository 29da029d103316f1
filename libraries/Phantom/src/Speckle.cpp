#include "Speckle.h"

#include "PhantomRandom.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelp::phantom {

namespace {

/// Standard deviation of the speckle over its mean, and of the additive noise in grey values.
constexpr double speckleContrast = 0.10;
constexpr double additiveDeviation = 5.0;

/// Weights of a pixel and of its neighbours, along each axis; they give neighbouring pixels the
/// correlation of real B-scans, a half.
constexpr float own = 0.6F;
constexpr float neighbour = 0.2F;

/// Both noise fields of one row before the mixing over rows, mixed along the row.
struct NoiseRow
{
    std::vector<float> speckle;
    std::vector<float> additive;
};

/// Two nearly normal numbers of mean 0 and variance 1 of one pixel, each the sum of two uniform
/// ones; the mixing of neighbours rounds off what is left of the corners.
struct WhiteNoise
{
    float speckle;
    float additive;
};

WhiteNoise whiteNoise(std::uint64_t seed, std::uint64_t index)
{
    const std::uint64_t bits = mix64(seed + index * 0xD1342543DE82EF95ULL);
    const auto part = [bits](int i) { return static_cast<float>((bits >> (16 * i)) & 0xFFFFU); };
    constexpr float middle = 65535.0F;
    constexpr float deviation = 26754.6F; // of the sum of two, sqrt(2 (2^32 - 1) / 12)
    return {(part(0) + part(1) - middle) / deviation, (part(2) + part(3) - middle) / deviation};
}

void mixAlongRow(std::vector<float>& row, std::vector<float>& scratch)
{
    // Two more values than columns, so that every pixel has both neighbours.
    scratch.resize(row.size() - 2);
    for (std::size_t i = 0; i < scratch.size(); ++i) {
        scratch[i] = own * row[i + 1] + neighbour * (row[i] + row[i + 2]);
    }
    row.swap(scratch);
}

void fillRow(NoiseRow& noise, int columns, std::uint64_t seed, std::uint64_t row,
             std::vector<float>& scratch)
{
    const auto width = static_cast<std::size_t>(columns) + 2;
    noise.speckle.resize(width);
    noise.additive.resize(width);
    for (std::size_t i = 0; i < width; ++i) {
        const WhiteNoise white = whiteNoise(seed, row * width + i);
        noise.speckle[i] = white.speckle;
        noise.additive[i] = white.additive;
    }
    mixAlongRow(noise.speckle, scratch);
    mixAlongRow(noise.additive, scratch);
}

} // namespace

void addSpeckle(std::vector<float>& image, int columns, int rows, double strength,
                std::uint64_t seed)
{
    if (strength <= 0.0) {
        return;
    }
    // The mixing along both axes leaves own^2 + 2 neighbour^2 of the variance, twice.
    const float toUnit = 1.0F / (own * own + 2.0F * neighbour * neighbour);
    const double contrast = speckleContrast * strength;
    // A gamma distribution of mean 1 and this contrast, by the cubes of Wilson and Hilferty.
    const auto offset = static_cast<float>(1.0 - contrast * contrast / 9.0);
    const auto slope = static_cast<float>(contrast / 3.0) * toUnit;
    const auto deviation = static_cast<float>(additiveDeviation * strength) * toUnit;

    std::array<NoiseRow, 3> window;
    std::vector<float> scratch;
    fillRow(window[0], columns, seed, 0, scratch);
    fillRow(window[1], columns, seed, 1, scratch);
    for (int row = 0; row < rows; ++row) {
        const auto first = static_cast<std::size_t>(row);
        fillRow(window[(first + 2) % 3], columns, seed, first + 2, scratch);
        const NoiseRow& above = window[first % 3];
        const NoiseRow& here = window[(first + 1) % 3];
        const NoiseRow& below = window[(first + 2) % 3];
        float* pixels = image.data() + first * static_cast<std::size_t>(columns);
        for (std::size_t i = 0; i < static_cast<std::size_t>(columns); ++i) {
            const float speckle =
                own * here.speckle[i] + neighbour * (above.speckle[i] + below.speckle[i]);
            const float additive =
                own * here.additive[i] + neighbour * (above.additive[i] + below.additive[i]);
            const float root = std::max(0.0F, offset + slope * speckle);
            pixels[i] = pixels[i] * (root * root * root) + deviation * additive;
        }
    }
}

} // namespace kelp::phantom
