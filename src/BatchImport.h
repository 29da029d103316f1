#pragma once

#include "BatchReport.h"

namespace kelp::oct {

/// Brings one XML export into the store: finds or makes its patient and the study of this name,
/// copies its files, adds its scans and stores the patient. All that happens and all that fails is
/// reported; nothing is thrown.
void importExport(const QString& xmlPath, const QString& studyName, const BatchReport& report);

} // namespace kelp::oct
