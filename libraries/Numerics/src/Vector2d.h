#pragma once

#include <cmath>

/// Two doubles. Positions and displacements on the localizer are in millimetres.
struct Vector2d
{
    double x = 0.0;
    double y = 0.0;

    double squaredLength() const { return x * x + y * y; }
    double length() const { return std::sqrt(squaredLength()); }

    /// Scaled to the given length. A vector of a length up to 1e-9 has no direction and stays.
    Vector2d scaledTo(double newLength) const
    {
        const double oldLength = length();
        if (oldLength <= 1e-9) {
            return *this;
        }
        const double factor = newLength / oldLength;
        return {x * factor, y * factor};
    }

    friend bool operator==(const Vector2d&, const Vector2d&) = default;
};

inline Vector2d operator+(const Vector2d& a, const Vector2d& b)
{
    return {a.x + b.x, a.y + b.y};
}

inline Vector2d operator-(const Vector2d& a, const Vector2d& b)
{
    return {a.x - b.x, a.y - b.y};
}

inline Vector2d operator*(double factor, const Vector2d& a)
{
    return {factor * a.x, factor * a.y};
}

inline Vector2d operator*(const Vector2d& a, double factor)
{
    return factor * a;
}

inline Vector2d operator/(const Vector2d& a, double divisor)
{
    return {a.x / divisor, a.y / divisor};
}

inline double dot(const Vector2d& a, const Vector2d& b)
{
    return a.x * b.x + a.y * b.y;
}
