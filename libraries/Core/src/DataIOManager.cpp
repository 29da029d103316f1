#include "DataIOManager.h"

#include "kelpLog.h"

#include <QDir>
#include <QStandardPaths>

#include <algorithm>
#include <memory>

namespace {

/// Members go in reverse order: the patients, whose studies read their bodies through the reader,
/// before it.
struct OpenStore
{
    std::unique_ptr<DataTreeIO> io;
    QList<DataPointer<Patient>> patients;
};

std::unique_ptr<OpenStore>& current()
{
    static std::unique_ptr<OpenStore> store;
    return store;
}

CaError ensureOpen()
{
    return DataIOManager::isStoreOpen() ? CaError::nullError : DataIOManager::openStore();
}

QList<DataPointer<Patient>>::iterator findByGuid(const QString& guid)
{
    QList<DataPointer<Patient>>& patients = current()->patients;
    return std::find_if(
        patients.begin(), patients.end(),
        [&guid](const DataPointer<Patient>& patient) { return patient->getGUID() == guid; });
}

QString absoluteFolder(const QString& folder)
{
    return QDir::cleanPath(
        QDir(folder.isEmpty() ? DataIOManager::defaultStoreFolder() : folder).absolutePath());
}

} // namespace

CaError DataIOManager::openStore(const QString& folder)
{
    const QString wanted = absoluteFolder(folder);
    if (isStoreOpen() && storeFolder() == wanted) {
        return CaError::nullError;
    }
    auto store = std::make_unique<OpenStore>();
    store->io.reset(DataTreeIO::getFactory().create("xml"));
    if (!store->io) {
        return CaError("NoStoreFormat", "No reader of stored trees is registered.", QString());
    }
    CaError error = store->io->open(wanted);
    if (error == CaError::nullError) {
        error = store->io->listPatients(store->patients);
    }
    if (error != CaError::nullError) {
        return error;
    }
    for (const CaError& problem : store->io->getProblems()) {
        kelp::Log::getInstance("libraries/Core/src/DataIOManager", "DataIOManager::openStore",
                               __LINE__)
            << problem.toString();
    }
    current() = std::move(store);
    return CaError::nullError;
}

void DataIOManager::closeStore()
{
    current().reset();
}

bool DataIOManager::isStoreOpen()
{
    return current() != nullptr;
}

QString DataIOManager::storeFolder()
{
    return isStoreOpen() ? current()->io->getFolder() : QString();
}

QString DataIOManager::defaultStoreFolder()
{
    const QString named = qEnvironmentVariable("TESSERA_STORE");
    return named.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                                 "/Tessera/store"
                           : named;
}

CaError DataIOManager::getPatientList(QList<Patient*>& patients)
{
    patients.clear();
    const CaError error = ensureOpen();
    if (error != CaError::nullError) {
        return error;
    }
    for (const DataPointer<Patient>& patient : current()->patients) {
        patients.append(patient.data());
    }
    return CaError::nullError;
}

QList<CaError> DataIOManager::getProblems()
{
    return isStoreOpen() ? current()->io->getProblems() : QList<CaError>();
}

CaError DataIOManager::storePatient(const DataPointer<Patient>& patient)
{
    if (!patient) {
        return CaError("NullArgument", "There is no patient to store.", QString());
    }
    CaError error = ensureOpen();
    if (error == CaError::nullError) {
        error = patient->save(current()->io.get());
    }
    if (error != CaError::nullError) {
        return error;
    }
    const auto known = findByGuid(patient->getGUID());
    if (known == current()->patients.end()) {
        current()->patients.append(patient);
    } else {
        *known = patient;
    }
    return CaError::nullError;
}

CaError DataIOManager::readPatientTree(const DataPointer<Patient>& patient, PatientTree& tree)
{
    if (!patient || !isStoreOpen()) {
        return CaError("NullArgument", "There is no patient to read, or no open store.", QString());
    }
    return current()->io->readTree(*patient, tree);
}

CaError DataIOManager::storePatientTree(const PatientTree& tree)
{
    CaError error = ensureOpen();
    if (error != CaError::nullError) {
        return error;
    }
    const auto known = findByGuid(tree.header.getAttribute("GUID"));
    const bool isNew = known == current()->patients.end();
    const DataPointer<Patient> patient = isNew ? DataPointer<Patient>(new Patient) : *known;
    error = current()->io->writeTree(tree, *patient);
    if (error == CaError::nullError && isNew) {
        current()->patients.append(patient);
    }
    return error;
}

CaError DataIOManager::removePatient(const DataPointer<Patient>& patient)
{
    if (!patient || !isStoreOpen()) {
        return CaError("NullArgument", "There is no patient to remove, or no open store.",
                       QString());
    }
    const CaError error = current()->io->removePatient(patient->getGUID());
    if (error != CaError::nullError) {
        return error;
    }
    const auto known = findByGuid(patient->getGUID());
    if (known != current()->patients.end()) {
        current()->patients.erase(known);
    }
    return CaError::nullError;
}

CaError DataIOManager::findMentions(const QStringList& words, QSet<QString>& found)
{
    return isStoreOpen() ? current()->io->findMentions(words, found)
                         : CaError("NoStore", "There is no open store.", QString());
}

DataTreeIO* DataIOManager::currentIO()
{
    return isStoreOpen() ? current()->io.get() : nullptr;
}
