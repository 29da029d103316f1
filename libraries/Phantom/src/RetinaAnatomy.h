#pragma once

#include "Drusen.h"
#include "Phantom.h"
#include "ThicknessMap.h"
#include "Vector2d.h"

#include <optional>

namespace kelp::phantom {

/// Layer thicknesses at one place of the retina, in micrometres.
struct LayerThicknesses
{
    double ilmToGcl = 0.0;
    double gclToInl = 0.0;
    double inlToOnl = 0.0;
    double onlToIse = 0.0;
    double iseToBm = 0.0;
    /// The inner border of the pigment epithelium above Bruch's membrane; meant only with drusen.
    double irpeToBm = 0.0;
};

/// The retina of one synthetic eye. Positions are relative to the fovea: x towards the nose, y
/// upwards, in millimetres of a human eye.
class RetinaAnatomy
{
public:
    RetinaAnatomy(Kind kind, std::uint64_t seed);

    LayerThicknesses at(const Vector2d& position) const;
    /// The centre of the optic disc.
    static Vector2d discCenter() { return {4.6, 0.5}; }
    static constexpr double discRadius = 0.88;

private:
    LayerThicknesses human(const Vector2d& position) const;
    LayerThicknesses mouse(const Vector2d& position) const;

    Kind m_kind;
    std::optional<Drusen> m_drusen;
    ThicknessMap m_nerveFibers;
    ThicknessMap m_ganglionCells;
    ThicknessMap m_innerNuclear;
    ThicknessMap m_outerNuclear;
    /// How this eye differs from the mean eye, as factors.
    LayerThicknesses m_individual;
};

} // namespace kelp::phantom
