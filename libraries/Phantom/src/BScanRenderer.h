#pragma once

#include "RetinaSurfaces.h"

#include <QImage>

#include <cstdint>
#include <vector>

namespace kelp::phantom {

/// Paints B-scans as the device shows them: grey values of the layers' reflectivities, the axial
/// point spread, shadows, and speckle.
class BScanRenderer
{
public:
    BScanRenderer(const Options& options, const ScanGeometry& geometry);

    /// 8-bit grey. May run on several threads at once; the result depends on the B-scan alone.
    QImage render(std::size_t bScan, const SurfaceSlice& slice) const;

private:
    Options m_options;
    double m_aScanSpacing; ///< mm of a human eye
};

} // namespace kelp::phantom
