#pragma once

#include "OCTScan.h"

#include <QString>

namespace kelp::command {

/// "sha1:<hexadecimal digits>" over the scan's size and the pixels of its B-scans as they were
/// decoded: two results with the same digest are of the same acquisition, wherever its files lay
/// and whatever their format.
///
/// Of SHA-1, since no one forges a scan to have it compared, and Qt's SHA-256 alone would take 4 %
/// of the time of a run. Each B-scan has a digest of its own, and these are digested in turn, so
/// that all cores can work.
QString pixelDigest(const OCTScan& scan);

} // namespace kelp::command
