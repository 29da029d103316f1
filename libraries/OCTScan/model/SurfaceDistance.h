#pragma once

#include "MacularModel.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace macula {

/// Millimetres from the fovea of a right eye, of places on the model's grid: x towards the nose, y
/// upwards.
double xOfColumn(double column);
double yOfRow(double row);

/// Means and standard deviations along a line through the fovea, in micrometres.
struct Profile
{
    std::vector<double> places; ///< mm, ascending
    std::vector<double> means;
    std::vector<double> deviations;
};

/// The distance between two surfaces as the model has it, in micrometres.
class SurfaceDistance
{
public:
    SurfaceDistance(const MacularModel& model, std::size_t upperSurface, std::size_t lowerSurface);

    const Map& means() const { return m_means; }
    /// One standard deviation.
    const Map& deviations() const { return m_deviations; }

    Profile horizontalProfile() const; ///< from temporal to nasal
    Profile verticalProfile() const;   ///< from inferior to superior

private:
    Map m_means;
    Map m_deviations;
};

double valueAt(const Map& map, int row, int column);
double valueAtFovea(const Map& map);
/// Smallest and largest value up to this distance (mm) from the fovea.
std::pair<double, double> rangeWithin(const Map& map, double radius);
std::pair<double, double> rangeOf(const Map& map);

} // namespace macula
