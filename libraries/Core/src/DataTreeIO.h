#pragma once

#include "Patient.h"
#include "PatientTree.h"

#include <QSet>

/// Reader and writer of a patient store. The concrete one is made by createXMLDataTreeIOFactory.
class DataTreeIO
{
public:
    virtual ~DataTreeIO() = default;

    /// The registry of writers by scheme.
    static CaFactory<DataTreeIO>& getFactory();

    /// The folder below which imports copy their files, of the store that is open. An empty URI if
    /// none is.
    static kelp::URI binaryDataDirUri();

    /// Opens or makes the store in this folder and takes its lock. An error when another process
    /// holds it or the folder cannot be used.
    virtual CaError open(const QString& folder) = 0;
    virtual QString getFolder() const = 0;
    /// Every patient whose header can be read. One file that cannot be does not hide the others:
    /// it is named in getProblems and stays as it is.
    virtual CaError listPatients(QList<DataPointer<Patient>>& patients) = 0;
    /// What the last listing found wrong, each with its file and reason.
    virtual QList<CaError> getProblems() const = 0;
    virtual CaError savePatient(Patient& patient) = 0;
    virtual CaError loadPatient(Patient& patient) = 0;
    virtual CaError removePatient(const QString& guid) = 0;
    /// The patient as it would be stored now, into an empty tree. Studies that are not in memory
    /// come as they are stored, without a look at their items.
    virtual CaError readTree(Patient& patient, PatientTree& tree) = 0;
    /// Stores the tree as it stands, in place of the patient that has its GUID, and makes the given
    /// patient the one that is stored. After a failure the store holds what it held before.
    virtual CaError writeTree(const PatientTree& tree, Patient& patient) = 0;
    /// Which of the words stand in any stored study, whether or not it could be read as one. Words
    /// are of letters, digits, '_', '-' and '.'.
    virtual CaError findMentions(const QStringList& words, QSet<QString>& found) const = 0;
};
