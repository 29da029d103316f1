#pragma once

#include "Vector2d.h"

#include <QList>

namespace kelp::oct {

/// Equal steps from the start to the end, both included. One position alone is not-a-number.
QList<Vector2d> positionsOnLine(const Vector2d& start, const Vector2d& end, int count);

/// Equal steps around the circle through the start. The first position is the start mirrored in y
/// about the centre, as the export's angles count.
QList<Vector2d> positionsOnCircle(const Vector2d& start, const Vector2d& center, int count,
                                  bool counterClockwise);

} // namespace kelp::oct
