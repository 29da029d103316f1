#pragma once

#include "Phantom.h"
#include "RetinaAnatomy.h"
#include "ScanGeometry.h"
#include "VesselMap.h"

#include <array>
#include <vector>

namespace kelp::phantom {

/// The surfaces that a phantom knows, from top to bottom.
enum SurfaceIndex
{
    ILM,
    GCL,
    INL,
    ONL,
    ISe,
    IRPE,
    BM,
    nrSurfaces
};

/// Depths in one A-scan as real numbers: row r of the image covers the depths from r to r + 1.
struct SurfaceColumn
{
    std::array<double, nrSurfaces> depth{}; ///< IRPE only with drusen
    double vesselHalfHeight = 0.0;          ///< rows; 0 outside vessels
    double shadow = 0.0;                    ///< the share of the light that a vessel takes
};

using SurfaceSlice = std::vector<SurfaceColumn>;

/// The true surfaces of all B-scans: the anatomy, laid on the curved, tilted and moving back of the
/// eye, and moved to where the device keeps the retina in the image.
std::vector<SurfaceSlice> placeSurfaces(const Options& options, const ScanGeometry& geometry,
                                        const RetinaAnatomy& anatomy, const VesselMap& vessels);

} // namespace kelp::phantom
