#include "OutFolder.h"

#include "FileExchange.h"
#include "FolderContent.h"
#include "PictureFile.h"
#include "kelpException.h"
#include "kelpFileWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kelp::compare {

using command::FolderLock;

namespace {

QStringList foldersToMake(const QString& path)
{
    QStringList folders;
    for (QString folder = path; !QFileInfo::exists(folder); folder = QFileInfo(folder).path()) {
        folders.append(folder);
    }
    return folders;
}

void refuseOtherFolders(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isDir()) {
        throw IOFailure(QString("%1: This is a file, not a folder for the comparison.").arg(path));
    }
    const FolderContent content(path);
    if (!content.holdsComparison() && !content.isEmpty()) {
        throw IOFailure(QString("%1: The folder holds other files; --out takes a new folder, an "
                                "empty one, or one of an earlier comparison.")
                            .arg(path));
    }
}

} // namespace

OutFolder::OutFolder(const QString& path, const QStringList& names)
    : m_path(QDir::cleanPath(QFileInfo(path).absoluteFilePath()))
{
    refuseOtherFolders(m_path);
    FolderContent(m_path).refuseForeign(names);
    m_madeFolders = foldersToMake(m_path);
    m_results.emplace(m_path);
    m_buildFolder = m_results->makeBuildFolder("new");
}

OutFolder::~OutFolder()
{
    m_results.reset();
    if (!m_isPublished) {
        for (const QString& folder : m_madeFolders) {
            QDir().rmdir(folder);
        }
    }
}

QString OutFolder::prepare(const QString& name)
{
    const QString path = QDir(m_buildFolder).filePath(name);
    if (!QDir().mkpath(QFileInfo(path).path())) {
        throw IOFailure(QString("%1: The folder cannot be made.").arg(QFileInfo(path).path()));
    }
    if (!m_written.contains(name)) {
        m_written.append(name);
    }
    return path;
}

void OutFolder::appendText(const QString& name, const QByteArray& content)
{
    QFile file(prepare(name));
    const bool isWritten = file.open(QIODevice::WriteOnly | QIODevice::Append) &&
                           file.write(content) == content.size() && file.flush();
    if (!isWritten) {
        throw IOFailure(QString("%1: %2.").arg(file.fileName(), file.errorString()));
    }
}

void OutFolder::writePicture(const QString& name, const QImage& picture)
{
    command::writePicture(picture, prepare(name));
}

void OutFolder::publish(const QByteArray& record)
{
    kelp::writeFileAtomically(QDir(m_buildFolder).filePath(comparisonRecord), record);
    FileExchange exchange(m_path, m_results->makeBuildFolder("former"));
    // Another comparison may have ended here since this one began.
    const FolderLock publishing(m_path, FolderLock::Wait::Yes);
    const FolderContent content(m_path);
    content.refuseForeign(m_written);
    exchange.run(content.comparisonFiles(), m_buildFolder, m_written);
    m_isPublished = true;
}

} // namespace kelp::compare
