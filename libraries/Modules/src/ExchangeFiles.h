#pragma once

#include "DataTreeNode.h"
#include "ExchangeManifest.h"
#include "PatientExchange.h"
#include "kelpException.h"
#include "kelpURI.h"

#include <QString>

#include <functional>

namespace kelp::exchange {

/// The file that is to be carried cannot be read, or is not what it should be. Trouble of the place
/// that it is carried to is a plain IOFailure.
class SourceFailure : public IOFailure
{
    using IOFailure::IOFailure;
};

/// Copies into a file that must not exist yet, and tells what was copied.
FileDigest copyFile(const QString& source, const QString& target);
FileDigest writeNewFile(const QString& path, const QByteArray& content);
/// Waits until all that was written to the file system of this folder is on the disk.
void flushToDisk(const QString& folder);
/// Makes it below the parent under this name, or with a number behind if that is taken. Returns the
/// path.
QString makeFolder(const QString& parent, const QString& wishedName);

/// The file that a URI names. The paths of some URIs are written with backslashes.
struct LocatedFile
{
    QString path;
    bool hasBackslashes = false;
};
/// The first reading of the URI's path that exists; if none does, its likeliest one. The path is
/// empty for a URI that names no file.
LocatedFile locate(const URI& uri, const std::function<bool(const QString& path)>& exists);
/// The URI with another path, written as the former one was.
URI relocated(const URI& uri, const LocatedFile& former, const QString& path);

/// Puts another URI in place of each one in the tree.
void rewriteUris(DataTreeNode& root, const std::function<URI(const URI&)>& rewrite);

/// Tells the progress of the files of one patient after the other, on one scale.
class PatientProgress
{
public:
    PatientProgress(const Progress& progress, int patients)
        : m_progress(progress), m_patients(patients)
    {
    }
    void nextPatient() { ++m_patient; }
    /// Files done of all files of the patient. False once the user wants to stop.
    bool tell(int done, int all, const QString& what);
    bool isCancelled() const { return m_isCancelled; }

private:
    const Progress& m_progress;
    int m_patients;
    int m_patient = -1;
    bool m_isCancelled = false;
};

/// A folder that goes with all its content unless it is kept.
class TemporaryFolder
{
public:
    explicit TemporaryFolder(const QString& path) : m_path(path) {}
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();
    const QString& getPath() const { return m_path; }
    void keep() { m_isKept = true; }

private:
    QString m_path;
    bool m_isKept = false;
};

/// How a patient is called in reports.
QString displayName(const QString& name, const QString& guid);

} // namespace kelp::exchange
