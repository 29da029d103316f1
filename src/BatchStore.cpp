#include "BatchStore.h"

#include "AppBase.h"
#include "DataIOManager.h"

namespace kelp::oct {

void storeInBatch(const DataPointer<Patient>& patient, const BatchReport& report)
{
    const CaError error = DataIOManager::storePatient(patient);
    if (error != CaError::nullError) {
        report(QStringLiteral("Could not store patient."), BatchLine::Problem);
        report(error.toString(), BatchLine::Problem);
        AppBase::markChanged(patient);
    }
}

} // namespace kelp::oct
