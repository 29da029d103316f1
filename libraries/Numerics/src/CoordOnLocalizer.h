#pragma once

#include "Vector2d.h"

#include <QMetaType>

/// A position on the localizer in millimetres. A type of its own, so that it is not mixed up with
/// indices or displacements.
struct CoordOnLocalizer
{
    double x = 0.0;
    double y = 0.0;

    CoordOnLocalizer() = default;
    CoordOnLocalizer(double xMillimetres, double yMillimetres) : x(xMillimetres), y(yMillimetres) {}
    explicit CoordOnLocalizer(const Vector2d& position) : x(position.x), y(position.y) {}

    Vector2d toVector() const { return {x, y}; }

    friend bool operator==(const CoordOnLocalizer&, const CoordOnLocalizer&) = default;
};

Q_DECLARE_METATYPE(CoordOnLocalizer)
