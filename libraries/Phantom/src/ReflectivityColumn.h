#pragma once

#include "Phantom.h"
#include "RetinaSurfaces.h"

#include <vector>

namespace kelp::phantom {

/// The noiseless grey values of one A-scan down to Bruch's membrane. Every pixel is the mean of the
/// reflectivity over the depths that it covers, so that surfaces between pixels are not shifted.
class ReflectivityColumn
{
public:
    explicit ReflectivityColumn(int rows) : m_values(static_cast<std::size_t>(rows), 0.0F) {}

    void paint(const SurfaceColumn& surfaces, Kind kind);
    /// Row r covers the depths r to r + 1. Rows below Bruch's membrane hold 0.
    std::vector<float>& values() { return m_values; }

private:
    /// Goes on to this depth, the reflectivity changing evenly on the way.
    void lineTo(double depth, double reflectivity);
    /// Changes the reflectivity at the present depth.
    void stepTo(double reflectivity) { m_reflectivity = reflectivity; }

    void paintInnerRetina(const SurfaceColumn& surfaces);
    void paintOuterRetina(const SurfaceColumn& surfaces);
    void paintOuterRetinaWithDrusen(const SurfaceColumn& surfaces);

    std::vector<float> m_values;
    double m_depth = 0.0;
    double m_reflectivity = 0.0;
};

} // namespace kelp::phantom
