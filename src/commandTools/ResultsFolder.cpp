#include "ResultsFolder.h"

#include "kelpException.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelp::command {

namespace {

const QString workingPrefix = ".tessera-run-";

QString systemReason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

bool isSameFolder(int descriptor, const QByteArray& path)
{
    struct stat opened
    {
    };
    struct stat named
    {
    };
    return fstat(descriptor, &opened) == 0 && stat(path.constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// Renames where the file system can swap two folders at once; else moves the old one aside first.
void exchange(const QByteArray& fresh, const QByteArray& place)
{
    if (renameat2(AT_FDCWD, fresh.constData(), AT_FDCWD, place.constData(), RENAME_EXCHANGE) == 0) {
        return;
    }
    const QByteArray aside = fresh + ".old";
    if (std::rename(place.constData(), aside.constData()) != 0) {
        throw IOFailure(QString("%1: %2.").arg(QFile::decodeName(place), systemReason(errno)));
    }
    if (std::rename(fresh.constData(), place.constData()) != 0) {
        const int error = errno;
        std::rename(aside.constData(), place.constData());
        throw IOFailure(QString("%1: %2.").arg(QFile::decodeName(place), systemReason(error)));
    }
    std::rename(aside.constData(), fresh.constData());
}

} // namespace

FolderLock::FolderLock(const QString& folder, Wait wait)
{
    const QByteArray path = QFile::encodeName(folder);
    m_descriptor = open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_descriptor < 0) {
        return;
    }
    int result = 0;
    do {
        result = flock(m_descriptor, LOCK_EX | (wait == Wait::No ? LOCK_NB : 0));
    } while (result != 0 && errno == EINTR);
    // The folder may have been removed while its lock was waited for.
    if (result != 0 || !isSameFolder(m_descriptor, path)) {
        close(m_descriptor);
        m_descriptor = -1;
    }
}

FolderLock::~FolderLock()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

FolderLock::FolderLock(FolderLock&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

FolderLock& FolderLock::operator=(FolderLock&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

ResultsFolder::ResultsFolder(const QString& path) : m_path(QFileInfo(path).absoluteFilePath())
{
    const QFileInfo info(m_path);
    if (info.exists() && !info.isDir()) {
        throw IOFailure(QString("%1: This is a file, not a folder for results.").arg(m_path));
    }
    errno = 0;
    if (!QDir().mkpath(m_path)) {
        const int error = errno;
        throw IOFailure(QString("%1: The folder for the results cannot be made: %2.")
                            .arg(m_path, error != 0 ? systemReason(error) : "unknown reason"));
    }
    // Between making a working folder and locking it no other run may look.
    const FolderLock setup(m_path, FolderLock::Wait::Yes);
    removeLeftovers();
    makeWorkingFolder();
}

ResultsFolder::~ResultsFolder()
{
    QDir(m_workingFolder).removeRecursively();
}

bool ResultsFolder::isWorkingFolder(const QString& name)
{
    return name.startsWith(workingPrefix);
}

void ResultsFolder::removeLeftovers()
{
    const QStringList names = QDir(m_path).entryList(
        {workingPrefix + "*"}, QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    for (const QString& name : names) {
        const QString folder = pathOf(name);
        const FolderLock lock(folder, FolderLock::Wait::No);
        if (lock.isHeld()) {
            QDir(folder).removeRecursively();
        }
    }
}

void ResultsFolder::makeWorkingFolder()
{
    m_workingFolder = pathOf(workingPrefix + QUuid::createUuid().toString(QUuid::Id128));
    if (mkdir(QFile::encodeName(m_workingFolder).constData(), 0777) != 0) {
        throw IOFailure(
            QString("%1: The folder cannot be written: %2.").arg(m_path, systemReason(errno)));
    }
    m_lock = FolderLock(m_workingFolder, FolderLock::Wait::No);
}

QString ResultsFolder::makeBuildFolder(const QString& name)
{
    const QString folder = m_workingFolder + '/' + name;
    QDir(folder).removeRecursively();
    if (mkdir(QFile::encodeName(folder).constData(), 0777) != 0) {
        throw IOFailure(QString("%1: %2.").arg(folder, systemReason(errno)));
    }
    return folder;
}

void ResultsFolder::discard(const QString& buildFolder)
{
    QDir(buildFolder).removeRecursively();
}

void ResultsFolder::publish(const QString& buildFolder, const QString& name,
                            const std::function<bool(const QString&)>& mayReplace)
{
    const QByteArray fresh = QFile::encodeName(buildFolder);
    const QByteArray place = QFile::encodeName(pathOf(name));
    const FolderLock publishing(m_path, FolderLock::Wait::Yes);
    if (std::rename(fresh.constData(), place.constData()) == 0) {
        return;
    }
    const int error = errno;
    if (error != ENOTEMPTY && error != EEXIST) {
        throw IOFailure(QString("%1: %2.").arg(pathOf(name), systemReason(error)));
    }
    if (!mayReplace(pathOf(name))) {
        throw IOFailure(
            QString("%1 has been taken by other results meanwhile; run again.").arg(pathOf(name)));
    }
    exchange(fresh, place);
    discard(buildFolder);
}

} // namespace kelp::command
