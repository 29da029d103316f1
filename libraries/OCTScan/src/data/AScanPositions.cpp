#include "AScanPositions.h"

#include <cmath>
#include <numbers>

namespace kelp::oct {

QList<Vector2d> positionsOnLine(const Vector2d& start, const Vector2d& end, int count)
{
    QList<Vector2d> positions;
    positions.reserve(count);
    const Vector2d whole = end - start;
    for (int i = 0; i < count; ++i) {
        positions.append(start + (i * whole) / (count - 1));
    }
    return positions;
}

QList<Vector2d> positionsOnCircle(const Vector2d& start, const Vector2d& center, int count,
                                  bool counterClockwise)
{
    QList<Vector2d> positions;
    positions.reserve(count);
    const Vector2d d = start - center;
    const double radius = d.length();
    const double startAngle = 3.0 * std::numbers::pi - std::atan2(d.x, -d.y);
    const double fullStep = 2.0 * std::numbers::pi / count;
    const double step = counterClockwise ? -fullStep : fullStep;
    for (int i = 0; i < count; ++i) {
        const double angle = startAngle + i * step;
        positions.append(center + Vector2d{radius * std::sin(angle), -radius * std::cos(angle)});
    }
    return positions;
}

} // namespace kelp::oct
