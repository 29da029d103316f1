#pragma once

#include "Vector2d.h"

/// Two by two doubles, given row by row.
struct Matrix2x2
{
    double m00 = 0.0;
    double m01 = 0.0;
    double m10 = 0.0;
    double m11 = 0.0;

    static Matrix2x2 identity() { return {1.0, 0.0, 0.0, 1.0}; }

    friend bool operator==(const Matrix2x2&, const Matrix2x2&) = default;
};

inline Vector2d operator*(const Matrix2x2& m, const Vector2d& v)
{
    return {m.m00 * v.x + m.m01 * v.y, m.m10 * v.x + m.m11 * v.y};
}
