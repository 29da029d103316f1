#pragma once

#include <cstdint>

namespace kelp::phantom {

/// A well mixed number of a seed: equal seeds give equal numbers on every machine, which the
/// standard library's distributions do not promise.
inline std::uint64_t mix64(std::uint64_t value)
{
    value += 0x9E3779B97F4A7C15ULL;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
    return value ^ (value >> 31);
}

/// What a random stream is for. Streams of one seed are independent, so that a change in one part
/// of the phantom leaves the others as they are.
enum class Stream : std::uint64_t
{
    Identity = 1,
    Geometry,
    Thickness,
    Drusen,
    Vessels,
    Placement,
    Choroid,
    Brightness,
    Speckle,
    Localizer,
    Frame
};

/// The seed of a stream, or of one element (such as a B-scan) of it.
inline std::uint64_t streamSeed(std::uint64_t seed, Stream stream, std::uint64_t element = 0)
{
    return mix64(mix64(mix64(seed) ^ static_cast<std::uint64_t>(stream)) + element);
}

class Random
{
public:
    Random(std::uint64_t seed, Stream stream) : m_state(streamSeed(seed, stream)) {}

    std::uint64_t next()
    {
        m_state += 0x9E3779B97F4A7C15ULL;
        return mix64(m_state);
    }
    /// In [0, 1).
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    double uniform(double low, double high) { return low + (high - low) * uniform(); }
    /// In [low, high], both included.
    int integer(int low, int high)
    {
        const auto count = static_cast<std::uint64_t>(high - low) + 1;
        return low + static_cast<int>(next() % count);
    }
    bool chance(double probability) { return uniform() < probability; }
    /// Nearly normal with mean 0 and variance 1, never beyond 3.5.
    double bell();

private:
    std::uint64_t m_state;
};

/// Smooth noise over the line and the plane in [-1, 1]: random values at the integers, joined
/// without a break in the first derivative.
double smoothNoise(std::uint64_t seed, double x);
double smoothNoise(std::uint64_t seed, double x, double y);

} // namespace kelp::phantom
