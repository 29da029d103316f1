#pragma once

#include "BatchReport.h"
#include "Patient.h"

namespace kelp::oct {

/// Stores the patient at once. A failure is reported with its reason, and the patient stays marked
/// as changed, so that it is stored with the next try.
void storeInBatch(const DataPointer<Patient>& patient, const BatchReport& report);

} // namespace kelp::oct
