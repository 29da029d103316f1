#include "BatchScans.h"

#include "AppBase.h"
#include "kelpException.h"
#include "kelpTrace.h"

namespace kelp::oct {

namespace {

const QString scanUriKey = QStringLiteral("OCTScanURI");
const QString seriesIdKey = QStringLiteral("seriesId");

bool namesItsSeries(const Data& scan)
{
    const URI uri = scan.getUri(scanUriKey);
    Trace() << "full uri: " << uri.toString();
    if (!uri.hasQueryItem(seriesIdKey)) {
        Trace() << "query not found";
        return false;
    }
    Trace() << "series Id found: ";
    return true;
}

void appendScans(const DataPointer<Patient>& patient, const DataPointer<Study>& study,
                 QList<BatchScan>& scans)
{
    QList<Data*> items;
    study->getAllData(items);
    for (Data* const item : items) {
        if (!item) {
            Trace() << "data is null";
            continue;
        }
        Trace() << "data: " << item->getId();
        if (!item->isA(OCTScan::classId())) {
            Trace() << "data is not " << OCTScan::classId() << " class, but " << item->getClassId();
            continue;
        }
        if (namesItsSeries(*item)) {
            scans.append({static_cast<OCTScan*>(item), study, patient});
        }
    }
}

void appendScans(const DataPointer<Patient>& patient, QList<BatchScan>& scans)
{
    Trace() << "patient: " << patient->getName();
    QList<Data*> studies;
    patient->getAllStudies(studies);
    for (Data* const item : studies) {
        if (!item) {
            Trace() << "study is null";
            continue;
        }
        Trace() << "study: " << item->getId();
        appendScans(patient, static_cast<Study*>(item), scans);
    }
}

} // namespace

QString seriesIdOf(const OCTScan& scan)
{
    return scan.getUri(scanUriKey).queryItem(seriesIdKey);
}

QList<BatchScan> listBatchScans()
{
    QList<BatchScan> scans;
    QList<Patient*> patients;
    if (AppBase::getPatientList(patients) != CaError::nullError) {
        return scans;
    }
    for (Patient* const listed : patients) {
        if (listed) {
            appendScans(currentObjectOf(listed), scans);
        } else {
            Trace() << "patient is null";
        }
    }
    return scans;
}

DataPointer<Patient> currentObjectOf(const DataPointer<Patient>& patient)
{
    const DataPointer<Patient> current = AppBase::getCurrentPatient();
    return current && patient && current->getGUID() == patient->getGUID() ? current : patient;
}

DataPointer<Patient> findOrCreatePatient(const QString& name, const QDate& birthDate)
{
    QList<Patient*> patients;
    const CaError error = AppBase::getPatientList(patients);
    if (error != CaError::nullError) {
        throw IOFailure(error.toString());
    }
    for (Patient* const listed : patients) {
        const DataPointer<Patient> patient = currentObjectOf(listed);
        if (patient && patient->getName() == name && patient->getBirthDate() == birthDate) {
            return patient;
        }
    }
    DataPointer<Patient> patient(new Patient);
    patient->setName(name);
    patient->setId(name);
    patient->setBirthDate(birthDate);
    patient->setKeyText(name + birthDate.toString(Qt::TextDate));
    return patient;
}

} // namespace kelp::oct
