#pragma once

#include "RetinaAnatomy.h"
#include "ScanGeometry.h"
#include "VesselMap.h"

#include <QImage>

namespace kelp::phantom {

/// Paints the infrared image of the back of the eye: vessels, the disc, the darker macula, bright
/// nerve fibres.
QImage renderLocalizer(const Options& options, const ScanGeometry& geometry,
                       const RetinaAnatomy& anatomy, const VesselMap& vessels);

} // namespace kelp::phantom
