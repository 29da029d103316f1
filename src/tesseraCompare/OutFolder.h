#pragma once

#include "ResultsFolder.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

#include <optional>

namespace kelp::compare {

/// The folder that --out names. Its record, compare.json, lists the files that a comparison wrote,
/// so that the next one can take their place and nothing else is ever removed or overwritten. The
/// files are made in a hidden working folder inside it; a former comparison stays whole until all
/// of them are there.
class OutFolder
{
public:
    /// Makes the folder if need be. names: files that may be written. Throws IOFailure where there
    /// is a file, a folder with other files, one that cannot be written, or another's file with one
    /// of the names.
    OutFolder(const QString& path, const QStringList& names);
    /// Without publish() the folder is left as it was found.
    ~OutFolder();
    OutFolder(const OutFolder&) = delete;
    OutFolder& operator=(const OutFolder&) = delete;

    /// name: relative; folders in it are made. Throw IOFailure with path and reason.
    void appendText(const QString& name, const QByteArray& content);
    void writePicture(const QString& name, const QImage& picture);

    const QStringList& writtenFiles() const { return m_written; }

    /// Puts the files into the place of those of the former comparison. Throws IOFailure, and the
    /// former comparison then still stands.
    void publish(const QByteArray& record);

private:
    QString prepare(const QString& name);

    QString m_path;
    QStringList m_madeFolders; ///< the innermost first
    std::optional<command::ResultsFolder> m_results;
    QString m_buildFolder;
    QStringList m_written;
    bool m_isPublished = false;
};

} // namespace kelp::compare
