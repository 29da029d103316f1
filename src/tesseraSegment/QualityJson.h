#pragma once

#include "JsonWriter.h"
#include "SegStatistics.h"

#include <vector>

namespace kelp::command {

/// The item "quality" of an object that is being written: how each surface came out of each step,
/// as shares of the A-scans that are not masked, over all B-scans and for each.
void writeQuality(JsonWriter& json, const std::vector<kelp::oct::StepStatistics>& steps);

} // namespace kelp::command
