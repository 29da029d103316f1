#pragma once

#include "OCTScan.h"

namespace kelp::command {

/// The fewest A-scans and rows that are segmented, and the fewest B-scans of a volume: what the
/// graph's neighbourhoods need to say anything.
constexpr int minimumExtent = 4;

/// Loads the scan and makes sure that it can be segmented. Throws kelp::Exception with a plain
/// sentence that names what is wrong.
void loadAndCheck(const OCTScanPtr& scan);

} // namespace kelp::command
