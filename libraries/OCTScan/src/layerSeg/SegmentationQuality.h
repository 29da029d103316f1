#pragma once

#include "SegStatistics.h"

#include <QStringList>

#include <vector>

/// What a finished run says about its own result, in words.
namespace kelp::oct {

/// One plain sentence for each thing that a user should look at before trusting the layers, the
/// worst first, without a full stop at the end; empty for a run that came out as it should. Names
/// the surfaces by their short names, the share of the A-scans and, unless all are concerned, the
/// B-scans (from 1), for instance
/// "GCL, INL, ONL: no surface found in 100 % of the A-scans, the result is not a segmentation".
QStringList qualityWarnings(const std::vector<StepStatistics>& steps);

/// Identifiers of the final surfaces for which the last step that made them found no row in so many
/// A-scans that the warning would be one of the whole surface: half or more. What positions they
/// have are no result, and the layers between them and others no measurement.
QStringList surfacesNotFound(const std::vector<StepStatistics>& steps);

} // namespace kelp::oct
