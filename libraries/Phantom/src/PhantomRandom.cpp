#include "PhantomRandom.h"

#include <cmath>

namespace kelp::phantom {

namespace {

double latticeValue(std::uint64_t seed, std::int64_t x, std::int64_t y)
{
    const std::uint64_t mixed =
        mix64(mix64(seed ^ static_cast<std::uint64_t>(x)) + static_cast<std::uint64_t>(y));
    return static_cast<double>(mixed >> 11) * 0x1.0p-52 - 1.0;
}

double fade(double t)
{
    return t * t * (3.0 - 2.0 * t);
}

double mixed(double a, double b, double t)
{
    return a + (b - a) * t;
}

} // namespace

double Random::bell()
{
    // Twelve uniform numbers have the variance 1; beyond 3.5 there is hardly anything to cut off.
    double sum = -6.0;
    for (int i = 0; i < 12; ++i) {
        sum += uniform();
    }
    return sum < -3.5 ? -3.5 : (sum > 3.5 ? 3.5 : sum);
}

double smoothNoise(std::uint64_t seed, double x)
{
    const double floorX = std::floor(x);
    const auto cell = static_cast<std::int64_t>(floorX);
    return mixed(latticeValue(seed, cell, 0), latticeValue(seed, cell + 1, 0), fade(x - floorX));
}

double smoothNoise(std::uint64_t seed, double x, double y)
{
    const double floorX = std::floor(x);
    const double floorY = std::floor(y);
    const auto cellX = static_cast<std::int64_t>(floorX);
    const auto cellY = static_cast<std::int64_t>(floorY);
    const double t = fade(x - floorX);
    return mixed(
        mixed(latticeValue(seed, cellX, cellY), latticeValue(seed, cellX + 1, cellY), t),
        mixed(latticeValue(seed, cellX, cellY + 1), latticeValue(seed, cellX + 1, cellY + 1), t),
        fade(y - floorY));
}

} // namespace kelp::phantom
