#include "MacularModel.h"

#include "MonotoneCubic.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace macula {

namespace {

// Millimetres. The pit's radius lies on the grid, so that the thinnest place is met exactly.
constexpr double pitRadius = 2.0 * stepX / 1000.0;
constexpr double slopeRadius = 0.4;
constexpr double innerRadius = 1.0;
constexpr double outerRadius = 2.25;
constexpr double edgeRadius = 3.6;
/// How the difference of the rings goes on to the edge.
constexpr double continuedPart = 0.35;
/// The sectors that were measured end here.
constexpr double measuredRadius = 3.0;
constexpr double fadedRadius = 4.4;
/// From here on the spread says that nothing is known.
constexpr double unknownRadius = 6.5;

/// A point varies more between subjects than the mean of a sector.
constexpr double pointFactor = 1.5;
/// Error of a found fovea in millimetres, and the steepest slope (micrometres per millimetre) for
/// which it counts.
constexpr double foveaError = 0.10;
constexpr double steepestSlope = 150.0;
/// Share of the half difference between a place and its mirror image that counts as a deviation. An
/// eye lies half the difference to one side or to the other and never further, while the search
/// ranges reach 2.7 deviations: half of it is enough to hold both eyes. All of it lets the nerve
/// fibres' lower border slip into the ganglion cells on the temporal side.
constexpr double sideShare = 0.5;
constexpr double leastDeviation = 16.0 / 3.0;
constexpr double unknownDeviation = 64.25;
/// Half width of the fibres' bundle at the disc, as an angle seen from the fovea.
constexpr double bundleAngle = 0.35;

constexpr std::size_t positions = static_cast<std::size_t>(rows) * columns;

struct Place
{
    double x; ///< nasal, mm
    double y; ///< superior, mm
    double radius() const { return std::sqrt(x * x + y * y); }
    double angle() const { return std::atan2(y, x); }
    Place mirrored() const { return {-x, y}; }
};

Place placeOf(std::size_t position)
{
    const int row = static_cast<int>(position) / columns;
    const int column = static_cast<int>(position) % columns;
    return {(column - foveaColumn) * stepX / 1000.0, (foveaRow - row) * stepY / 1000.0};
}

double smoothStep(double from, double to, double value)
{
    const double t = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

/// The map of one layer as measured, in a right eye.
class SectorMap
{
public:
    explicit SectorMap(const Layer& layer)
        : m_curves{curve(layer, 1), curve(layer, 0), curve(layer, 3), curve(layer, 2)}
    {
    }

    double operator()(const Place& place) const
    {
        // Quarters from nasal over superior and temporal to inferior, each a half cosine wave.
        const double turns = place.angle() / (std::numbers::pi / 2.0) + 4.0;
        const double whole = std::floor(turns);
        const auto quarter = static_cast<std::size_t>(whole);
        const double part = 0.5 - 0.5 * std::cos((turns - whole) * std::numbers::pi);
        const double radius = place.radius();
        return (1.0 - part) * m_curves[quarter % 4](radius) +
               part * m_curves[(quarter + 1) % 4](radius);
    }

private:
    using Curve = MonotoneCubic<6>;

    static Curve curve(const Layer& layer, std::size_t sector)
    {
        const double inner = layer.inner[sector];
        const double outer = layer.outer[sector];
        return {{0.0, pitRadius, slopeRadius, innerRadius, outerRadius, edgeRadius},
                {layer.centre, layer.pit, layer.slope, inner, outer,
                 outer + continuedPart * (outer - inner)},
                // Level in all layers, so that the whole retina is thinnest there too.
                1};
    }

    std::array<Curve, 4> m_curves;
};

double meanOfMeasured(const Map& map)
{
    double sum = 0.0;
    int count = 0;
    for (std::size_t i = 0; i < positions; ++i) {
        if (placeOf(i).radius() <= measuredRadius) {
            sum += map[i];
            ++count;
        }
    }
    return sum / count;
}

/// Grows from nothing at the end of the measured sectors to 1 at the disc.
Map fibreBundle()
{
    Map bundle(positions);
    for (std::size_t i = 0; i < positions; ++i) {
        const Place place = placeOf(i);
        const double offset = place.angle() / bundleAngle;
        bundle[i] =
            smoothStep(measuredRadius, fadedRadius, place.radius()) * std::exp(-offset * offset);
    }
    return bundle;
}

/// The factor at which the highest value of map + factor * bundle is `highest`. The bundle must
/// reach 1 somewhere, and the map lie below `highest`.
double factorForHighest(const Map& map, const Map& bundle, double highest)
{
    double factor = highest;
    for (std::size_t i = 0; i < positions; ++i) {
        if (bundle[i] > 0.0) {
            factor = std::min(factor, (highest - map[i]) / bundle[i]);
        }
    }
    return factor;
}

/// Micrometres per millimetre.
double slopeAt(const Map& map, std::size_t position)
{
    const int row = static_cast<int>(position) / columns;
    const int column = static_cast<int>(position) % columns;
    const auto at = [&map](int r, int c) {
        return map[static_cast<std::size_t>(r) * columns + static_cast<std::size_t>(c)];
    };
    const int left = std::max(column - 1, 0);
    const int right = std::min(column + 1, columns - 1);
    const int upper = std::max(row - 1, 0);
    const int lower = std::min(row + 1, rows - 1);
    const double alongX = (at(row, right) - at(row, left)) / ((right - left) * stepX / 1000.0);
    const double alongY =
        (at(lower, column) - at(upper, column)) / ((lower - upper) * stepY / 1000.0);
    return std::sqrt(alongX * alongX + alongY * alongY);
}

} // namespace

MacularModel::MacularModel()
{
    for (std::size_t layer = 0; layer < layerCount; ++layer) {
        const SectorMap measured(layers[layer]);
        Map& means = m_means[layer];
        Map& differences = m_halfSideDifferences[layer];
        means.resize(positions);
        differences.resize(positions);
        for (std::size_t i = 0; i < positions; ++i) {
            // The model serves both eyes without being mirrored itself.
            const Place place = placeOf(i);
            const double here = measured(place);
            const double there = measured(place.mirrored());
            means[i] = (here + there) / 2.0;
            differences[i] = (here - there) / 2.0;
        }
        const double far = meanOfMeasured(means);
        for (std::size_t i = 0; i < positions; ++i) {
            const double part = smoothStep(measuredRadius, fadedRadius, placeOf(i).radius());
            means[i] += part * (far - means[i]);
        }
    }
    addDiscFibres();
}

void MacularModel::addDiscFibres()
{
    const Map bundle = fibreBundle();
    const auto add = [&bundle](Map& map, double factor) {
        for (std::size_t i = 0; i < positions; ++i) {
            map[i] += factor * bundle[i];
        }
    };
    add(m_means[0], factorForHighest(m_means[0], bundle, thickestNerveFibres));
    // Towards the disc the ganglion cells thin out while their fibres gather.
    Map total(positions);
    for (const Map& map : m_means) {
        std::transform(map.begin(), map.end(), total.begin(), total.begin(), std::plus<>());
    }
    add(m_means[1], factorForHighest(total, bundle, thickestRetina));
}

Map MacularModel::threeDeviations(std::size_t upperSurface, std::size_t lowerSurface) const
{
    if (upperSurface + 1 == layerCount) {
        return Map(positions, 3.0 * leastDeviation);
    }
    Map means(positions);
    Map sideDifferences(positions);
    for (std::size_t layer = upperSurface; layer < lowerSurface; ++layer) {
        for (std::size_t i = 0; i < positions; ++i) {
            means[i] += m_means[layer][i];
            sideDifferences[i] += m_halfSideDifferences[layer][i];
        }
    }
    std::vector<MonotoneCubic<3>> betweenSubjects;
    for (std::size_t layer = upperSurface; layer < lowerSurface; ++layer) {
        betweenSubjects.emplace_back(std::array{slopeRadius, innerRadius, outerRadius},
                                     deviations[layer]);
    }
    const double unknown =
        unknownDeviation * std::sqrt(static_cast<double>(lowerSurface - upperSurface));
    Map result(positions);
    for (std::size_t i = 0; i < positions; ++i) {
        const double radius = placeOf(i).radius();
        const double ofSide = sideShare * sideDifferences[i];
        double variance = ofSide * ofSide;
        for (const MonotoneCubic<3>& deviation : betweenSubjects) {
            const double ofPoint = pointFactor * deviation(radius);
            variance += ofPoint * ofPoint;
        }
        const double ofFovea = foveaError * std::min(slopeAt(means, i), steepestSlope);
        variance += ofFovea * ofFovea;
        const double known = std::max(std::sqrt(variance), leastDeviation);
        const double grown =
            std::clamp((radius - measuredRadius) / (unknownRadius - measuredRadius), 0.0, 1.0);
        const double part = grown * grown;
        result[i] = 3.0 * ((1.0 - part) * known + part * unknown);
    }
    return result;
}

} // namespace macula
