#pragma once

#include "OCTScan.h"

namespace kelp::oct {

/// Loads the scan unless it is loaded. Throws kelp::IOFailure with a plain sentence that names the
/// file and the reason, for whoever shows it to a user.
void loadScan(OCTScan& scan);

/// Whether the segmentation chains can work on this loaded scan: its pattern, the sizes of its
/// B-scans, and a geometry of finite, positive distances. Throws kelp::Exception with a plain
/// sentence that names the B-scan, counted from 1, its file where it has one, and the reason.
void checkReadyForSegmentation(const OCTScan& scan);

} // namespace kelp::oct
