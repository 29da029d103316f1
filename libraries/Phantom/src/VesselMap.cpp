#include "VesselMap.h"

#include "PhantomRandom.h"
#include "RetinaAnatomy.h"

#include <algorithm>
#include <cmath>

namespace kelp::phantom {

namespace {

// The part of the eye that scans and localizers of all patterns can show, in mm from the fovea.
constexpr double left = -6.5;
constexpr double right = 10.0;
constexpr double bottom = -6.0;
constexpr double top = 6.0;
constexpr double cell = 0.0125;

constexpr int nrSteps = 900;

} // namespace

VesselMap::VesselMap(std::uint64_t seed)
    : m_columns(static_cast<int>((right - left) / cell) + 1),
      m_rows(static_cast<int>((top - bottom) / cell) + 1),
      m_halfHeights(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows), 0.0F)
{
    Random random(seed, Stream::Vessels);
    const Vector2d disc = RetinaAnatomy::discCenter();
    for (const double side : {1.0, -1.0}) {
        // Vein and artery of an arcade run beside each other; the control point lies far out, so
        // that the curve goes around the macula.
        for (const double outwards : {0.0, 0.45}) {
            const double reach = 4.6 + outwards + random.uniform(-0.3, 0.3);
            const double end = 1.6 + 1.6 * outwards + random.uniform(0.0, 0.5);
            drawArcade({disc + Vector2d{0.1, 0.08 * side},
                        {2.2 - outwards, side * reach},
                        {-6.4, side * end},
                        0.062 - 0.03 * outwards,
                        0.032,
                        random.next()},
                       side, random);
        }
        const double nasalEnd = random.uniform(2.0, 3.5);
        draw({disc, {6.2, side * 1.2}, {9.8, side * nasalEnd}, 0.05, 0.03, random.next()});
        const double macularEnd = random.uniform(0.6, 1.0);
        draw({disc, {3.2, side * 0.9}, {1.0, side * macularEnd}, 0.022, 0.008, random.next()});
    }
}

void VesselMap::drawArcade(const Course& arcade, double side, Random& random)
{
    draw(arcade);
    const int nrBranches = random.integer(4, 6);
    for (int i = 0; i < nrBranches; ++i) {
        const Vector2d from = arcade.at((i + random.uniform(0.3, 0.9)) / nrBranches);
        // The foveal avascular zone stays free.
        const double endX = 0.25 * from.x + random.uniform(-0.5, 0.5);
        const double endY = side * random.uniform(0.55, 0.9);
        const double bendX = 0.5 * (from.x + endX) - random.uniform(0.1, 0.5);
        const double bendY = 0.5 * (from.y + endY) + side * random.uniform(-0.3, 0.3);
        draw({from, {bendX, bendY}, {endX, endY}, 0.028, 0.008, random.next()});
    }
}

Vector2d VesselMap::Course::at(double t) const
{
    const double s = 1.0 - t;
    const Vector2d smooth = s * s * start + 2.0 * s * t * middle + t * t * end;
    const Vector2d wiggle{0.09 * smoothNoise(wiggleSeed, 7.0 * t),
                          0.09 * smoothNoise(wiggleSeed + 1, 7.0 * t)};
    // The start stays where it belongs: at the disc or on the parent vessel.
    return smooth + std::min(1.0, 8.0 * t) * wiggle;
}

void VesselMap::draw(const Course& course)
{
    for (int i = 0; i <= nrSteps; ++i) {
        const double t = static_cast<double>(i) / nrSteps;
        stamp(course.at(t), course.startRadius + t * (course.endRadius - course.startRadius));
    }
}

void VesselMap::stamp(const Vector2d& center, double radius)
{
    const int firstColumn = std::max(0, static_cast<int>((center.x - radius - left) / cell));
    const int lastColumn =
        std::min(m_columns - 1, static_cast<int>((center.x + radius - left) / cell) + 1);
    const int firstRow = std::max(0, static_cast<int>((center.y - radius - bottom) / cell));
    const int lastRow =
        std::min(m_rows - 1, static_cast<int>((center.y + radius - bottom) / cell) + 1);
    for (int row = firstRow; row <= lastRow; ++row) {
        for (int column = firstColumn; column <= lastColumn; ++column) {
            const Vector2d position{left + column * cell, bottom + row * cell};
            const double square = radius * radius - (position - center).squaredLength();
            if (square > 0.0) {
                float& value = m_halfHeights[static_cast<std::size_t>(row) *
                                                 static_cast<std::size_t>(m_columns) +
                                             static_cast<std::size_t>(column)];
                value = std::max(value, static_cast<float>(std::sqrt(square)));
            }
        }
    }
}

double VesselMap::halfHeightAt(const Vector2d& position) const
{
    const double x = (position.x - left) / cell;
    const double y = (position.y - bottom) / cell;
    if (!(x >= 0.0 && y >= 0.0 && x < m_columns - 1 && y < m_rows - 1)) {
        return 0.0;
    }
    const auto column = static_cast<std::size_t>(x);
    const auto row = static_cast<std::size_t>(y);
    const double fx = x - static_cast<double>(column);
    const double fy = y - static_cast<double>(row);
    const float* upper = &m_halfHeights[row * static_cast<std::size_t>(m_columns) + column];
    const float* lower = upper + m_columns;
    return (1.0 - fy) * ((1.0 - fx) * upper[0] + fx * upper[1]) +
           fy * ((1.0 - fx) * lower[0] + fx * lower[1]);
}

} // namespace kelp::phantom
