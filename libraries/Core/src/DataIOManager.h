#pragma once

#include "DataTreeIO.h"

/// The one store that the process works on.
class DataIOManager
{
public:
    /// Opens the store in the folder; an empty folder means TESSERA_STORE, or else the default
    /// place in the user's data folder. Replaces a store that was open.
    static CaError openStore(const QString& folder = QString());
    static void closeStore();
    static bool isStoreOpen();
    static QString storeFolder();
    static QString defaultStoreFolder();

    /// All patients of the open store, with their studies; study bodies are read on demand. The
    /// same objects at every call.
    static CaError getPatientList(QList<Patient*>& patients);
    /// The patient files of the open store that could not be read, each with its reason.
    static QList<CaError> getProblems();

    /// Stores a patient with all studies that are new or loaded. Opens the default store if none
    /// is. A patient that is new enters the store here.
    static CaError storePatient(const DataPointer<Patient>& patient);
    static CaError removePatient(const DataPointer<Patient>& patient);
    /// Which of the words stand in any study of the open store; see DataTreeIO.
    static CaError findMentions(const QStringList& words, QSet<QString>& found);

    /// The patient as it would be stored now, into an empty tree.
    static CaError readPatientTree(const DataPointer<Patient>& patient, PatientTree& tree);
    /// Stores a patient by its tree. One of its GUID is replaced: the object that getPatientList
    /// gives for it stays and gets new studies.
    static CaError storePatientTree(const PatientTree& tree);

private:
    friend class DataTreeIO;
    static DataTreeIO* currentIO();
};
