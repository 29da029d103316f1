#pragma once

#include "Phantom.h"
#include "Vector2d.h"

#include <vector>

namespace kelp::phantom {

/// Where one B-scan lies on the localizer, in millimetres, as the export tells it.
struct ScanPath
{
    Vector2d start;
    Vector2d end;    ///< not for circles
    Vector2d center; ///< circles only
    /// Of each A-scan.
    std::vector<Vector2d> positions;
};

/// All that is known of a scan's place and size before any tissue: paths, spacings, the fovea.
struct ScanGeometry
{
    double localizerSpacing = 0.0; ///< mm per pixel
    double aScanSpacing = 0.0;     ///< mm
    double axialSpacing = 0.0;     ///< mm per row
    /// How large this eye is beside a human one.
    double eyeScale = 1.0;
    bool rightEye = true;
    Vector2d fovea;      ///< on the localizer
    Vector2d scanCenter; ///< on the localizer
    bool counterClockwise = false;
    std::vector<ScanPath> paths;

    /// Relative to the fovea in millimetres of a human eye, x towards the nose, y upwards.
    Vector2d toEye(const Vector2d& onLocalizer) const;
};

ScanGeometry makeGeometry(const Options& options);

} // namespace kelp::phantom
