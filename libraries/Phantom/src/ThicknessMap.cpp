#include "ThicknessMap.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace kelp::phantom {

namespace {

/// Where the means of the two rings hold, and where the periphery begins.
constexpr double innerRingRadius = 1.0;
constexpr double outerRingRadius = 2.25;
constexpr double peripheryRadius = 4.0;

/// Of the tabulated profiles, in mm, and over how many steps to each side they are rounded off: the
/// rim of the pit has no edge.
constexpr double tableStep = 0.01;
constexpr int roundingSteps = 16;

/// Slopes after Fritsch and Carlson: weighted harmonic means of the neighbouring secants, zero at
/// an extremum and at both ends, where the retina is to run on level.
std::vector<double> monotoneSlopes(const std::vector<RadialProfile::Knot>& knots)
{
    std::vector<double> slopes(knots.size(), 0.0);
    for (std::size_t i = 1; i + 1 < knots.size(); ++i) {
        const double before = knots[i].radius - knots[i - 1].radius;
        const double after = knots[i + 1].radius - knots[i].radius;
        const double secantBefore = (knots[i].thickness - knots[i - 1].thickness) / before;
        const double secantAfter = (knots[i + 1].thickness - knots[i].thickness) / after;
        if (secantBefore * secantAfter > 0.0) {
            const double weightBefore = 2.0 * after + before;
            const double weightAfter = after + 2.0 * before;
            slopes[i] = (weightBefore + weightAfter) /
                        (weightBefore / secantBefore + weightAfter / secantAfter);
        }
    }
    return slopes;
}

double cubicAt(const std::vector<RadialProfile::Knot>& knots, const std::vector<double>& slopes,
               double radius)
{
    if (radius >= knots.back().radius) {
        return knots.back().thickness;
    }
    std::size_t i = 0;
    while (radius >= knots[i + 1].radius) {
        ++i;
    }
    const double width = knots[i + 1].radius - knots[i].radius;
    const double t = (radius - knots[i].radius) / width;
    const double s = 1.0 - t;
    return s * s * (1.0 + 2.0 * t) * knots[i].thickness + s * s * t * width * slopes[i] +
           t * t * (3.0 - 2.0 * t) * knots[i + 1].thickness - t * t * s * width * slopes[i + 1];
}

} // namespace

RadialProfile::RadialProfile(const std::vector<Knot>& knots)
{
    const std::vector<double> slopes = monotoneSlopes(knots);
    const int count = static_cast<int>(knots.back().radius / tableStep) + roundingSteps + 2;
    for (int i = 0; i < count; ++i) {
        // Triangular weights; the profile is the same on both sides of the centre.
        double sum = 0.0;
        for (int j = -roundingSteps; j <= roundingSteps; ++j) {
            const double weight = roundingSteps + 1 - std::abs(j);
            sum += weight * cubicAt(knots, slopes, std::abs(i + j) * tableStep);
        }
        m_table.push_back(sum / ((roundingSteps + 1) * (roundingSteps + 1)));
    }
}

double RadialProfile::at(double radius) const
{
    const double place = radius / tableStep;
    if (place >= static_cast<double>(m_table.size() - 1)) {
        return m_table.back();
    }
    const auto i = static_cast<std::size_t>(place);
    const double share = place - static_cast<double>(i);
    return m_table[i] + share * (m_table[i + 1] - m_table[i]);
}

ThicknessMap::ThicknessMap(const Figures& figures)
{
    for (std::size_t axis = 0; axis < 4; ++axis) {
        std::vector<RadialProfile::Knot> knots(figures.center.begin(), figures.center.end());
        knots.push_back({innerRingRadius, figures.innerRing[axis]});
        knots.push_back({outerRingRadius, figures.outerRing[axis]});
        knots.push_back({peripheryRadius, figures.periphery[axis]});
        m_profiles.emplace_back(knots);
    }
}

double ThicknessMap::at(const Vector2d& position) const
{
    const double radius = position.length();
    if (radius <= 1e-9) {
        return m_profiles[Superior].at(0.0);
    }
    const RadialProfile& horizontal = m_profiles[position.x > 0.0 ? Nasal : Temporal];
    const RadialProfile& vertical = m_profiles[position.y > 0.0 ? Superior : Inferior];
    // The squared cosine of the angle to an axis is the weight of that axis.
    const double cosine = position.x / radius;
    const double weight = cosine * cosine;
    return weight * horizontal.at(radius) + (1.0 - weight) * vertical.at(radius);
}

} // namespace kelp::phantom
