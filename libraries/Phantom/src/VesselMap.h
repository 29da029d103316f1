#pragma once

#include "Vector2d.h"

#include <cstdint>
#include <vector>

namespace kelp::phantom {

class Random;

/// The retinal vessels of one eye, seen from the front: two arcades around the macula, their
/// branches towards it, and the vessels on the nasal side of the disc.
class VesselMap
{
public:
    explicit VesselMap(std::uint64_t seed);

    /// Half the height of the vessel at this position in mm, 0 where there is none. The position is
    /// relative to the fovea: x towards the nose, y upwards, in mm.
    double halfHeightAt(const Vector2d& position) const;

private:
    struct Course
    {
        Vector2d start;
        Vector2d middle;
        Vector2d end;
        double startRadius; ///< mm
        double endRadius;
        std::uint64_t wiggleSeed;

        /// From the start (0) to the end (1).
        Vector2d at(double t) const;
    };

    void drawArcade(const Course& arcade, double side, Random& random);
    void draw(const Course& course);
    void stamp(const Vector2d& center, double radius);

    int m_columns;
    int m_rows;
    std::vector<float> m_halfHeights;
};

} // namespace kelp::phantom
