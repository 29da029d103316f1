#include "kelpCheck.h"
#include "kelpImageTools.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace kelp {

namespace {

/// The source pixels first, first + 1, ... that one target pixel is made of, with whole-numbered
/// weights.
struct Taps
{
    int first = 0;
    std::vector<double> weights;
};

/// One axis. Weights are kept as whole numbers over a common divisor, so that the sums over 8 and
/// 16 bit pixels are exact, and a result that lies on a half is seen as one.
struct AxisResampling
{
    std::vector<Taps> taps;
    double divisor = 1.0;
};

AxisResampling nearestNeighbour(std::int64_t source, std::int64_t target)
{
    AxisResampling axis;
    for (std::int64_t t = 0; t < target; ++t) {
        axis.taps.push_back({static_cast<int>((2 * t + 1) * source / (2 * target)), {1.0}});
    }
    return axis;
}

/// Target pixel t covers [t S, (t + 1) S) where source pixel i covers [i T, (i + 1) T).
AxisResampling areaMean(std::int64_t source, std::int64_t target)
{
    AxisResampling axis;
    axis.divisor = static_cast<double>(source);
    for (std::int64_t t = 0; t < target; ++t) {
        const std::int64_t begin = t * source;
        const std::int64_t end = begin + source;
        Taps taps{static_cast<int>(begin / target), {}};
        for (std::int64_t i = taps.first; i * target < end; ++i) {
            taps.weights.push_back(
                static_cast<double>(std::min(end, (i + 1) * target) - std::max(begin, i * target)));
        }
        axis.taps.push_back(std::move(taps));
    }
    return axis;
}

/// The position (t + 0.5) S / T - 0.5 in units of 1 / (2 T), clamped to the outermost pixels.
AxisResampling linear(std::int64_t source, std::int64_t target)
{
    AxisResampling axis;
    const std::int64_t unit = 2 * target;
    axis.divisor = static_cast<double>(unit);
    for (std::int64_t t = 0; t < target; ++t) {
        const std::int64_t position =
            std::clamp<std::int64_t>((2 * t + 1) * source - target, 0, (source - 1) * unit);
        const std::int64_t fraction = position % unit;
        Taps taps{static_cast<int>(position / unit), {static_cast<double>(unit - fraction)}};
        if (fraction != 0) {
            taps.weights.push_back(static_cast<double>(fraction));
        }
        axis.taps.push_back(std::move(taps));
    }
    return axis;
}

AxisResampling resampling(int source, int target, InterpolationModes mode)
{
    if (mode == InterpolationModes::NearestNeighbour) {
        return nearestNeighbour(source, target);
    }
    return target < source ? areaMean(source, target) : linear(source, target);
}

template <typename T>
T roundedTo(double value)
{
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(value);
    } else {
        return static_cast<T>(std::clamp(std::floor(value + 0.5),
                                         static_cast<double>(std::numeric_limits<T>::min()),
                                         static_cast<double>(std::numeric_limits<T>::max())));
    }
}

template <typename T>
void addRow(std::vector<double>& sum, const T* row, double weight)
{
    for (std::size_t x = 0; x < sum.size(); ++x) {
        sum[x] += weight * static_cast<double>(row[x]);
    }
}

/// Rows are summed first, as whole rows, which the compiler turns into vector instructions.
template <typename T>
void resample(const Image& source, Image& target, InterpolationModes mode)
{
    const Vector3<int>& from = source.getDimensions();
    const Vector3<int>& to = target.getDimensions();
    const AxisResampling alongX = resampling(from.x, to.x, mode);
    const AxisResampling alongY = resampling(from.y, to.y, mode);
    const AxisResampling alongZ = resampling(from.z, to.z, mode);
    const double divisor = alongX.divisor * alongY.divisor * alongZ.divisor;
    const auto width = static_cast<std::size_t>(from.x);
    const auto height = static_cast<std::size_t>(from.y);

    T* output = target.pixels<T>();
    std::vector<double> sum(width);
    for (const Taps& z : alongZ.taps) {
        for (const Taps& y : alongY.taps) {
            std::fill(sum.begin(), sum.end(), 0.0);
            for (std::size_t k = 0; k < z.weights.size(); ++k) {
                const T* const slice =
                    source.pixels<T>() + (static_cast<std::size_t>(z.first) + k) * height * width;
                for (std::size_t j = 0; j < y.weights.size(); ++j) {
                    addRow(sum, slice + (static_cast<std::size_t>(y.first) + j) * width,
                           z.weights[k] * y.weights[j]);
                }
            }
            for (const Taps& x : alongX.taps) {
                double total = 0.0;
                for (std::size_t i = 0; i < x.weights.size(); ++i) {
                    total += x.weights[i] * sum[static_cast<std::size_t>(x.first) + i];
                }
                *output++ = roundedTo<T>(total / divisor);
            }
        }
    }
}

} // namespace

ImagePtr ImageTools::resize(const ConstImagePtr& image, const Vector3<int>& dimensions,
                            InterpolationModes mode)
{
    constexpr Place place{"libraries/Core/src/ImageLib/kelpImageTools", "kelp::ImageTools::resize"};
    check(!image.isNull(), place, "Image is null.");
    const Vector3<int>& from = image->getDimensions();
    check(from.x > 0 && from.y > 0 && from.z > 0, place, "Image is empty.");
    check(dimensions.x > 0 && dimensions.y > 0 && dimensions.z > 0, place,
          "Image dimension is below 1.");
    if (image->getPixelTypeId() == ColorRGBA8) {
        throw NotImplemented("Color images cannot be resized.");
    }
    const Vector3<double>& spacing = image->getSpacing();
    const ImagePtr result =
        Image::create(image->getPixelTypeId(), dimensions,
                      {spacing.x * from.x / dimensions.x, spacing.y * from.y / dimensions.y,
                       spacing.z * from.z / dimensions.z});
    monoImageSwitch(image->getPixelTypeId(),
                    [&](auto pixel) { resample<decltype(pixel)>(*image, *result, mode); });
    return result;
}

} // namespace kelp
