#pragma once

#include "OCTScan.h"
#include "Patient.h"

#include <QList>

namespace kelp::oct {

/// A scan of the store with the study and the patient that hold it.
struct BatchScan
{
    DataPointer<OCTScan> scan;
    DataPointer<Study> study;
    DataPointer<Patient> patient;
};

/// The series that the scan was imported from; empty for a scan that names none.
QString seriesIdOf(const OCTScan& scan);

/// Every scan of every patient that can be segmented in a batch: those that come from a series of
/// an export. Prints what it meets. Nothing when the patients cannot be listed.
QList<BatchScan> listBatchScans();

/// The current patient's own object if it is this patient, else the patient given.
DataPointer<Patient> currentObjectOf(const DataPointer<Patient>& patient);

/// The patient with this name and birth date, or a new one, which is not in the store yet. Throws
/// kelp::IOFailure when the patients cannot be listed.
DataPointer<Patient> findOrCreatePatient(const QString& name, const QDate& birthDate);

} // namespace kelp::oct
