#pragma once

#include "DataTreeIO.h"
#include "DataTreeNode.h"
#include "FileIO.h"
#include "StoreLock.h"

#include <QHash>

#include <memory>

/// A store in a folder: "patients/<GUID>.xml" for each patient, which names its studies,
/// "studies/<GUID>.xml" for each study's items, "binary" for what imports copy, "lock" for the
/// process that has it open.
///
/// A file that cannot be read is never written over, and goes only with the removal of its study or
/// patient.
class XMLDataTreeIO : public DataTreeIO
{
public:
    CaError open(const QString& folder) override;
    QString getFolder() const override { return m_folder; }
    CaError listPatients(QList<DataPointer<Patient>>& patients) override;
    QList<CaError> getProblems() const override { return m_problems; }
    CaError savePatient(Patient& patient) override;
    CaError loadPatient(Patient& patient) override;
    CaError removePatient(const QString& guid) override;
    CaError readTree(Patient& patient, PatientTree& tree) override;
    CaError writeTree(const PatientTree& tree, Patient& patient) override;
    CaError findMentions(const QStringList& words, QSet<QString>& found) const override;

private:
    /// File access and what it last read or wrote. Shared with the studies whose bodies are still
    /// to be read, which may outlive the store's being open.
    struct Files
    {
        std::unique_ptr<const FileIO> io;
        QHash<QString, QByteArray> digests;

        CaError readTree(const QString& path, DataTreeNode& root);
        /// Leaves a file alone that has this content already.
        CaError writeTree(const QString& path, const DataTreeNode& root);
    };

    /// The tree of a patient's file, or why there is none.
    struct Header
    {
        QString guid;
        DataTreeNode tree;
        CaError error;
    };

    class Undo;

    /// GUIDs become file names, and stored ones may have been tampered with.
    static CaError checkGuid(const QString& guid);
    static CaError readBody(Files& files, const QString& path, Study& study);
    static CaError checkHeader(const DataTreeNode& header, const QString& path,
                               const QString& guid);

    QString patientPath(const QString& guid) const;
    QString studyPath(const QString& guid) const;
    /// May run in several threads at a time.
    CaError readHeader(const QString& guid, DataTreeNode& header) const;
    CaError loadHeader(const QString& guid, Patient& patient) const;
    CaError takeHeader(Header& header, Patient& patient) const;
    CaError saveBody(Study& study);
    CaError readBodyTree(Study& study, DataTreeNode& body);
    CaError checkTree(const PatientTree& tree, const DataTreeNode& formerHeader) const;
    CaError writeFiles(const PatientTree& tree, Undo& undo);
    CaError removeStudiesOf(const DataTreeNode& formerHeader, const QStringList& keep);

    QString m_folder;
    StoreLock m_lock;
    std::shared_ptr<Files> m_files;
    QList<CaError> m_problems;
};
