#include "StoreKeeper.h"

#include "DataIOManager.h"
#include "DataTreeNode.h"
#include "HeidelbergExport.h"
#include "OCTScanChecks.h"
#include "OCTScanLoadingUtils.h"
#include "OCTScanUtils.h"
#include "kelpException.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kelp::command {

namespace {

using kelp::oct::ExportSeries;

/// As the batch import names the study when it is told no other name.
const QString studyName = "DefaultStudy";
const QString copyPrefix = "HRA_XML_";
constexpr int maximumSegmentationNumber = 999;

void requireNoError(const CaError& error, const QString& what)
{
    if (error != CaError::nullError) {
        throw RuntimeException(QString("%1: %2").arg(what, error.toString()));
    }
}

DataPointer<Patient> findOrMakePatient(const QString& name, const QDate& birthDate)
{
    QList<Patient*> patients;
    requireNoError(DataIOManager::getPatientList(patients), "The patients cannot be listed");
    for (Patient* patient : patients) {
        if (patient->getName() == name && patient->getBirthDate() == birthDate) {
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

DataPointer<Study> findOrMakeStudy(Patient& patient)
{
    DataPointer<Study> study(patient.getStudy(studyName));
    if (study.isNull()) {
        study = DataPointer<Study>(new Study);
        study->setId(studyName);
        requireNoError(patient.addStudy(study.data(), true), "The study cannot be added");
    }
    requireNoError(study->ensureLoaded(), "The study cannot be read");
    return study;
}

OCTScanPtr findScan(Study& study, const QString& id)
{
    QList<Data*> items;
    study.getAllData(items);
    for (Data* item : items) {
        if (item->getId() == id && item->isA(OCTScan::classId())) {
            return static_cast<OCTScan*>(item);
        }
    }
    return nullptr;
}

ExportSeries findSeries(const QString& xmlPath, const QString& seriesId)
{
    for (const ExportSeries& series : kelp::oct::readExportSeries(xmlPath)) {
        if (series.id == seriesId && series.decodable) {
            return series;
        }
    }
    throw ParsingError(QString("%1 has no series %2 any more.").arg(xmlPath, seriesId));
}

/// The scan of files that are copied into the store first.
OCTScanPtr importScan(const QString& xmlPath, const QString& seriesId)
{
    const QString folder = QFileInfo(xmlPath).absolutePath() + '/';
    QStringList files;
    for (const QString& name : findSeries(xmlPath, seriesId).imageFileNames) {
        files.append(folder + name);
    }
    files.append(xmlPath);
    QStringList copies = OCTScanLoadingUtils::AutoCopyFiles(
        files, DataTreeIO::binaryDataDirUri().path(), false, copyPrefix);
    const QString newXmlPath = OCTScanLoadingUtils::FindXMLFile(copies);
    copies.removeAll(newXmlPath);
    return kelp::oct::makeScan(newXmlPath, seriesId, copies);
}

OCTScanSegPtr readSegmentation(const OCTScanPtr& scan, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw IOFailure(QString("%1: %2.").arg(path, file.errorString()));
    }
    const QString base64 = QString::fromLatin1(file.readAll()).trimmed();
    kelp::oct::loadScan(*scan);
    OCTScanSegPtr segmentation(new kelp::oct::OCTScanSegmentation(scan));
    segmentation->setStoredData(base64);
    // A scan of other sizes under the same id shows here and not when the store is next opened.
    segmentation->ensureDecoded();
    return segmentation;
}

QString segmentationName(const Study& study)
{
    const QString base = DataTreeNode::makeIdValid(
        "Segment_" + QDateTime::currentDateTime().toString("yyyy.MM.dd-hh:mm"));
    QString name;
    for (int number = 1; number <= maximumSegmentationNumber; ++number) {
        name = DataTreeNode::makeIdValid(QString("%1_%2").arg(base).arg(number));
        if (!study.hasChild(name)) {
            break;
        }
    }
    return name;
}

} // namespace

StoreKeeper::StoreKeeper(const QString& folder)
{
    const CaError error = DataIOManager::openStore(QDir(folder).absolutePath());
    if (error != CaError::nullError) {
        throw IOFailure(
            QString("The store at %1 cannot be used: %2").arg(folder, error.toString()));
    }
}

StoreKeeper::~StoreKeeper()
{
    DataIOManager::closeStore();
}

void StoreKeeper::keep(const QString& xmlPath, const QString& seriesId,
                       const QString& resultsFolder, Segmentations segmentations)
{
    QString name;
    QDate birthDate;
    OCTScanLoadingUtils::GetPatientInfoFromXML(xmlPath, name, birthDate);
    const DataPointer<Patient> patient = findOrMakePatient(name, birthDate);
    const DataPointer<Study> study = findOrMakeStudy(*patient);

    OCTScanPtr scan = findScan(*study, seriesId);
    const bool isNew = scan.isNull();
    if (isNew) {
        scan = importScan(xmlPath, seriesId);
    } else if (segmentations == Segmentations::OnlyTheFirst &&
               !kelp::oct::OCTScanUtils::getAllSegmentationsOf(study, scan).isEmpty()) {
        return;
    }
    const OCTScanSegPtr segmentation = readSegmentation(scan, resultsFolder + "/segmentation.b64");
    if (isNew) {
        requireNoError(study->addData(scan.data(), seriesId, true), "The scan cannot be added");
    }
    const QString segmentationId = segmentationName(*study);
    requireNoError(study->addProcessData(segmentation.data(), segmentationId, true),
                   "The segmentation cannot be added");
    const CaError stored = DataIOManager::storePatient(patient);
    if (stored != CaError::nullError) {
        // A later scan of the patient must not bring in what was told to have failed.
        study->removeProcessData(segmentationId);
        if (isNew) {
            study->removeData(seriesId);
        }
        requireNoError(stored, "The patient cannot be stored");
    }
}

} // namespace kelp::command
