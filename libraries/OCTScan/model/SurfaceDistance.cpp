#include "SurfaceDistance.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace macula {

namespace {

void append(Profile& profile, double place, double mean, double deviation)
{
    profile.places.push_back(place);
    profile.means.push_back(mean);
    profile.deviations.push_back(deviation);
}

} // namespace

double xOfColumn(double column)
{
    return (column - foveaColumn) * stepX / 1000.0;
}

double yOfRow(double row)
{
    return (foveaRow - row) * stepY / 1000.0;
}

SurfaceDistance::SurfaceDistance(const MacularModel& model, std::size_t upperSurface,
                                 std::size_t lowerSurface)
    : m_means(model.layerMean(upperSurface)),
      m_deviations(model.threeDeviations(upperSurface, lowerSurface))
{
    for (std::size_t layer = upperSurface + 1; layer < lowerSurface; ++layer) {
        const Map& means = model.layerMean(layer);
        std::transform(means.begin(), means.end(), m_means.begin(), m_means.begin(), std::plus<>());
    }
    for (double& deviation : m_deviations) {
        deviation /= 3.0;
    }
}

Profile SurfaceDistance::horizontalProfile() const
{
    Profile profile;
    for (int column = 0; column < columns; ++column) {
        append(profile, xOfColumn(column), valueAt(m_means, foveaRow, column),
               valueAt(m_deviations, foveaRow, column));
    }
    return profile;
}

Profile SurfaceDistance::verticalProfile() const
{
    Profile profile;
    for (int row = rows - 1; row >= 0; --row) {
        append(profile, yOfRow(row), valueAt(m_means, row, foveaColumn),
               valueAt(m_deviations, row, foveaColumn));
    }
    return profile;
}

double valueAt(const Map& map, int row, int column)
{
    return map[static_cast<std::size_t>(row) * columns + static_cast<std::size_t>(column)];
}

double valueAtFovea(const Map& map)
{
    return valueAt(map, foveaRow, foveaColumn);
}

std::pair<double, double> rangeWithin(const Map& map, double radius)
{
    std::pair<double, double> range{valueAtFovea(map), valueAtFovea(map)};
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (std::hypot(xOfColumn(column), yOfRow(row)) <= radius) {
                range.first = std::min(range.first, valueAt(map, row, column));
                range.second = std::max(range.second, valueAt(map, row, column));
            }
        }
    }
    return range;
}

std::pair<double, double> rangeOf(const Map& map)
{
    return rangeWithin(map, std::numeric_limits<double>::infinity());
}

} // namespace macula
