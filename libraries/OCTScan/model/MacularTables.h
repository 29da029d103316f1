#pragma once

#include <array>
#include <cstddef>

/// The published figures that the model stands on, in micrometres; README.md names the sources.
namespace macula {

constexpr std::size_t layerCount = 5;
constexpr std::size_t surfaceCount = layerCount + 1;
constexpr std::array<const char*, surfaceCount> surfaceNames{"ILM", "GCL", "INL",
                                                             "ONL", "ISe", "BM"};

/// Superior, nasal, inferior, temporal.
using Sectors = std::array<double, 4>;

/// The mean thickness between two neighbouring surfaces.
struct Layer
{
    double centre; ///< at the fovea
    double pit;    ///< at the bottom of the pit's wall, pitRadius away
    double slope;  ///< at slopeRadius
    Sectors inner; ///< at innerRadius, the middle of the inner ring
    Sectors outer; ///< at outerRadius, the middle of the outer ring
};

constexpr std::array<Layer, layerCount> layers{{
    {16.0, 13.4, 13.8, {23.4, 20.1, 24.5, 16.8}, {37.5, 46.1, 38.9, 19.2}},
    {12.0, 12.0, 33.0, {93.2, 92.5, 92.2, 87.7}, {66.2, 71.7, 61.8, 69.5}},
    {16.0, 16.0, 40.0, {72.6, 70.3, 76.6, 67.6}, {58.5, 63.3, 59.1, 60.3}},
    {122.9, 122.4, 116.5, {95.5, 100.5, 88.5, 98.0}, {86.2, 83.9, 77.6, 83.8}},
    {62.0, 62.0, 62.0, {62.0, 62.0, 62.0, 62.0}, {62.0, 62.0, 62.0, 62.0}},
}};

/// Standard deviation of a sector's mean between subjects: up to slopeRadius, at innerRadius, from
/// outerRadius.
constexpr std::array<std::array<double, 3>, layerCount> deviations{{
    {2.2, 2.6, 5.5},
    {5.2, 8.2, 6.2},
    {9.1, 11.5, 5.3},
    {11.4, 11.5, 7.2},
    {32.0 / 9.0, 32.0 / 9.0, 32.0 / 9.0},
}};

/// The thickest places of the model, both where the nerve fibres gather before the optic disc.
constexpr double thickestNerveFibres = 98.7;
constexpr double thickestRetina = 361.7;

} // namespace macula
