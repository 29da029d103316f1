#include "LocalizerRenderer.h"

#include "GreyImage.h"
#include "PhantomRandom.h"
#include "Speckle.h"

#include <algorithm>
#include <cmath>

namespace kelp::phantom {

namespace {

double softEdge(double distance, double width)
{
    const double t = std::clamp(0.5 - distance / width, 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

/// The tissue without vessels and disc.
double background(const Vector2d& position, const RetinaAnatomy& anatomy, Kind kind,
                  std::uint64_t seed)
{
    const double nerveFibers = std::min(anatomy.at(position).ilmToGcl, 130.0);
    double value = 112.0 + 0.42 * nerveFibers;
    value += 9.0 * smoothNoise(seed, position.x / 1.3, position.y / 1.3);
    value += 6.0 * smoothNoise(seed + 1, position.x / 0.25, position.y / 0.25);
    value += 4.0 * smoothNoise(seed + 2, position.x / 0.06, position.y / 0.06);
    // The pigment of the macula and its pit.
    if (kind != Kind::Mouse) {
        const double square = position.squaredLength();
        value -= 16.0 * std::exp(-square / 0.5) + 14.0 * std::exp(-square / 0.04);
    }
    return value;
}

double withDisc(double value, const Vector2d& position)
{
    const double distance = (position - RetinaAnatomy::discCenter()).length();
    const double rim = softEdge(distance - RetinaAnatomy::discRadius, 0.18);
    const double cup = softEdge(distance - 0.42 * RetinaAnatomy::discRadius, 0.3);
    value += rim * (122.0 - value);
    return value + cup * (205.0 - value);
}

double withVessels(double value, const Vector2d& position, const VesselMap& vessels)
{
    const double halfHeight = vessels.halfHeightAt(position);
    if (halfHeight <= 0.0) {
        return value;
    }
    const double dark = 0.5 * std::min(1.0, halfHeight / 0.035);
    // Large vessels show a bright line of reflected light along their middle.
    const double reflex = std::clamp((halfHeight - 0.05) / 0.012, 0.0, 1.0);
    return value * (1.0 - dark + 0.22 * reflex);
}

} // namespace

QImage renderLocalizer(const Options& options, const ScanGeometry& geometry,
                       const RetinaAnatomy& anatomy, const VesselMap& vessels)
{
    const int size = options.localizerSize;
    const std::uint64_t seed = streamSeed(options.seed, Stream::Localizer);
    std::vector<float> values(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    float* value = values.data();
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            const Vector2d position = geometry.toEye(
                {column * geometry.localizerSpacing, row * geometry.localizerSpacing});
            const double tissue = background(position, anatomy, options.kind, seed);
            *value++ =
                static_cast<float>(withVessels(withDisc(tissue, position), position, vessels));
        }
    }
    addSpeckle(values, size, size, 0.35 * options.noise, seed + 3);
    return toGrey(values, size, size);
}

} // namespace kelp::phantom
