#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

namespace kelp::exchange {

/// What a file is recognised by.
struct FileDigest
{
    qint64 size = 0;
    QByteArray sha256; ///< in hexadecimal digits

    friend bool operator==(const FileDigest& a, const FileDigest& b)
    {
        return a.size == b.size && a.sha256 == b.sha256;
    }
};

/// The list of all that an export consists of, by which an import notices a copy that is not whole.
/// Paths are relative to the export's folder, with slashes.
class Manifest
{
public:
    struct Patient
    {
        QString guid;
        QString name;
    };

    void addPatient(const QString& guid, const QString& name);
    void addFile(const QString& path, const FileDigest& digest);
    /// One that could not be read when the export was written.
    void addMissing(const QString& path);

    const QList<Patient>& getPatients() const { return m_patients; }
    bool contains(const QString& path) const;
    bool isMissing(const QString& path) const;
    FileDigest getDigest(const QString& path) const;

    QByteArray toText() const;
    /// Throws IOFailure for a manifest that is missing, damaged or of a newer form, and for one
    /// that names a place outside of the export.
    static Manifest read(const QString& folder);
    static bool existsIn(const QString& folder);
    static QString fileName();

private:
    struct Entry
    {
        FileDigest digest;
        bool isMissing = false;
    };

    QList<Patient> m_patients;
    QList<QString> m_paths; ///< in the order added
    QHash<QString, Entry> m_entries;
};

/// Where an export keeps the trees of its patients.
QString patientTreePath(const QString& guid);
QString studyTreePath(const QString& guid);

} // namespace kelp::exchange
