#pragma once

namespace kelp {

template <typename T>
struct Vector2
{
    T x{};
    T y{};

    friend bool operator==(const Vector2&, const Vector2&) = default;
};

template <typename T>
struct Vector3
{
    T x{};
    T y{};
    T z{};

    friend bool operator==(const Vector3&, const Vector3&) = default;
};

} // namespace kelp
