#pragma once

#include "Vector2d.h"

#include <array>
#include <vector>

namespace kelp::phantom {

/// A thickness over the radius: a monotone cubic through the knots, so that it never swings beyond
/// them, rounded off over a tenth of a millimetre or so, and constant past the last knot.
class RadialProfile
{
public:
    struct Knot
    {
        double radius;    ///< millimetres
        double thickness; ///< micrometres
    };

    /// At least two knots, radii rising from 0.
    explicit RadialProfile(const std::vector<Knot>& knots);
    double at(double radius) const;

private:
    /// Micrometres at the multiples of a fixed step.
    std::vector<double> m_table;
};

/// One layer's thickness around the fovea: radial profiles along the four axes, joined smoothly
/// over the angle.
class ThicknessMap
{
public:
    enum Axis
    {
        Superior,
        Nasal,
        Inferior,
        Temporal
    };

    /// The published means of a layer.
    struct Figures
    {
        std::array<RadialProfile::Knot, 3> center; ///< the same in all directions
        std::array<double, 4> innerRing;           ///< by Axis, micrometres
        std::array<double, 4> outerRing;
        std::array<double, 4> periphery;
    };

    explicit ThicknessMap(const Figures& figures);

    /// Micrometres. The position is relative to the fovea: x towards the nose, y upwards, in mm.
    double at(const Vector2d& position) const;

private:
    std::vector<RadialProfile> m_profiles;
};

} // namespace kelp::phantom
