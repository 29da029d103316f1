#pragma once

#include "RunRecord.h"

#include <functional>

namespace kelp::command {

/// Writes what the formats of the record's settings ask for, and segmentation.b64, into the folder.
/// Throws IOFailure with path and reason for a file that does not stand whole on the disk. progress
/// is told what is written next and the percentage of all that is written.
void writeResults(const OCTScanSegPtr& segmentation, const RunRecord& record, const QString& folder,
                  const std::function<void(const QString&, int)>& progress);

} // namespace kelp::command
