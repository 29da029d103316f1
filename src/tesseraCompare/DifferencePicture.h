#pragma once

#include "ScanComparison.h"

#include <QImage>

namespace kelp::compare {

/// Where A and B differ in one surface: for several B-scans a map seen from the front at true
/// proportions, laid as on the localizer where its places are known; for a single one a curve over
/// its A-scans. In micrometres, or in rows where their height is not known.
QImage differencePicture(const ScanComparison& scan, const QString& identifier);

} // namespace kelp::compare
