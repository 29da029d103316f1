#include "ThicknessMap.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelp::phantom {

namespace {

/// Where the means of the two rings hold, and where the periphery begins.
constexpr double innerRingRadius = 1.0;
constexpr double outerRingRadius = 2.25;
constexpr double peripheryRadius = 4.0;

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

} // namespace

RadialProfile::RadialProfile(std::vector<Knot> knots)
    : m_knots(std::move(knots)), m_slopes(monotoneSlopes(m_knots))
{
}

double RadialProfile::at(double radius) const
{
    if (radius >= m_knots.back().radius) {
        return m_knots.back().thickness;
    }
    std::size_t i = 0;
    while (radius >= m_knots[i + 1].radius) {
        ++i;
    }
    const double width = m_knots[i + 1].radius - m_knots[i].radius;
    const double t = (radius - m_knots[i].radius) / width;
    const double s = 1.0 - t;
    return s * s * (1.0 + 2.0 * t) * m_knots[i].thickness + s * s * t * width * m_slopes[i] +
           t * t * (3.0 - 2.0 * t) * m_knots[i + 1].thickness - t * t * s * width * m_slopes[i + 1];
}

ThicknessMap::ThicknessMap(const Figures& figures)
{
    for (std::size_t axis = 0; axis < 4; ++axis) {
        std::vector<RadialProfile::Knot> knots(figures.center.begin(), figures.center.end());
        knots.push_back({innerRingRadius, figures.innerRing[axis]});
        knots.push_back({outerRingRadius, figures.outerRing[axis]});
        knots.push_back({peripheryRadius, figures.periphery[axis]});
        m_profiles.emplace_back(std::move(knots));
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
