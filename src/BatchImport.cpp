#include "BatchImport.h"

#include "BatchScans.h"
#include "BatchStore.h"
#include "DataTreeIO.h"
#include "HeidelbergExport.h"
#include "OCTScanLoadingUtils.h"
#include "kelpException.h"

namespace kelp::oct {

namespace {

/// Null when the file is no export or its patient cannot be had, which is then reported.
DataPointer<Patient> patientOf(const QString& xmlPath, const BatchReport& report)
{
    QString name;
    QDate birthDate;
    try {
        OCTScanLoadingUtils::GetPatientInfoFromXML(xmlPath, name, birthDate);
    } catch (const Exception& exception) {
        report(QStringLiteral("Could not get patient information from XML file %1. Reason: %2")
                   .arg(xmlPath, QString::fromUtf8(exception.what())),
               BatchLine::Problem);
        return nullptr;
    }
    try {
        return findOrCreatePatient(name, birthDate);
    } catch (const Exception& exception) {
        report(QStringLiteral("Could not get patient with name %1. Reason: %2")
                   .arg(name, QString::fromUtf8(exception.what())),
               BatchLine::Problem);
        return nullptr;
    }
}

DataPointer<Study> findOrCreateStudy(Patient& patient, const QString& name)
{
    DataPointer<Study> study(patient.getStudy(name));
    if (!study) {
        study = new Study;
        study->setId(name);
        patient.addStudy(study.data(), true);
    }
    return study;
}

void addScan(Study& study, const OCTScanPtr& scan, const QString& patientName,
             const BatchReport& report)
{
    const QString id = scan->getId();
    if (study.hasChild(id)) {
        report(
            QStringLiteral("OCT with id %1 already exists for patient %2.\n").arg(id, patientName),
            BatchLine::Problem);
        return;
    }
    const CaError error = study.addData(scan.data(), id, true);
    if (error == CaError::nullError) {
        report(QStringLiteral("OCT with id %1 added to patient %2.\n").arg(id, patientName),
               BatchLine::Success);
    } else {
        report(QStringLiteral("OCT with id %1 could not be added to patient %2. Reason: %3\n")
                   .arg(id, patientName, error.toString()),
               BatchLine::Problem);
    }
}

} // namespace

void importExport(const QString& xmlPath, const QString& studyName, const BatchReport& report)
{
    const DataPointer<Patient> patient = patientOf(xmlPath, report);
    if (!patient) {
        return;
    }
    const DataPointer<Study> study = findOrCreateStudy(*patient, studyName);
    // The files are copied before it is known whether the scans are there already.
    const QList<OCTScanPtr> scans =
        importScans(xmlPath, DataTreeIO::binaryDataDirUri().path(),
                    [&report](const QString& text) { report(text, BatchLine::Problem); });
    for (const OCTScanPtr& scan : scans) {
        addScan(*study, scan, patient->getName(), report);
    }
    storeInBatch(patient, report);
}

} // namespace kelp::oct
