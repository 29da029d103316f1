#pragma once

#include <array>

/// Three doubles. As a spacing: between A-scans (x), between rows (y), between B-scans (z), in mm.
struct Vector3d
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    std::array<double, 3> toArray() const { return {x, y, z}; }

    friend bool operator==(const Vector3d&, const Vector3d&) = default;
};
