#pragma once

#include "OCTScanSegmentation.h"
#include "kelpColorTransferFunction.h"

#include <QTransform>

#include <optional>

/// What every picture of a thickness map on the localizer shares.
namespace kelp::oct {

/// A map of one pixel an A-scan has a regular place on the localizer for these only.
bool isVolumeScan(const OCTScan& scan);

/// From the pixels of a map of one pixel an A-scan to millimetres on the localizer: the centres of
/// the map's corner pixels lie at the first and last A-scans of the first and last B-scans. None
/// where these span no area.
std::optional<QTransform> mapToLocalizer(const OCTScan& scan);

/// Colours for LayerUtils::RenderThicknessImage, which asks for thicknesses in rows. The limits are
/// micrometres, the axial spacing millimetres. Throws Assertion unless low is below high.
PredefinedTransferfunctions thicknessColors(ColorMaps map, double low, double high,
                                            double axialSpacing);

/// Whether some B-scan has this surface.
bool hasLayer(const OCTScanSegmentation& segmentation, const LayerNamePtr& wanted);

} // namespace kelp::oct
