#include "kelpFileWriter.h"

#include "kelpException.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelp {

namespace {

const QString temporarySuffix = QStringLiteral(".tessera-part");

QByteArray temporaryName(const QString& target)
{
    static std::atomic<unsigned> counter{0};
    const QFileInfo info(target);
    return QFile::encodeName(QString("%1/.%2.%3.%4%5")
                                 .arg(info.path(), info.fileName().left(60))
                                 .arg(::getpid())
                                 .arg(counter++)
                                 .arg(temporarySuffix));
}

/// A rename outlives a power failure only once its folder is on the disk too.
bool flushFolderOf(const QByteArray& path)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(QFile::decodeName(path)).path());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    // Some file systems cannot flush folders and say so; there is nothing more to do then.
    const bool flushed = ::fsync(descriptor) == 0 || errno == EINVAL;
    const int systemError = errno;
    ::close(descriptor);
    errno = systemError;
    return flushed;
}

} // namespace

AtomicFile::AtomicFile(const QString& path) : m_path(path)
{
    const QByteArray wanted = QFile::encodeName(path);
    struct stat status = {};
    const bool exists = ::stat(wanted.constData(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    const QString target = exists ? QFileInfo(path).canonicalFilePath() : path;
    m_target = QFile::encodeName(target);
    m_temporary = temporaryName(target);
    m_descriptor = ::open(m_temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (m_descriptor < 0) {
        fail(errno);
    }
    if (exists) {
        // The right to set it may be missing; the file then has the rights of a new one.
        static_cast<void>(::fchmod(m_descriptor, status.st_mode & 07777) == 0);
    }
}

AtomicFile::~AtomicFile()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
        ::unlink(m_temporary.constData());
    }
}

void AtomicFile::write(const void* bytes, std::size_t count)
{
    const char* position = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = ::write(m_descriptor, position, count);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            fail(written < 0 ? errno : ENOSPC);
        }
        position += written;
        count -= static_cast<std::size_t>(written);
    }
}

void AtomicFile::write(const QByteArray& bytes)
{
    write(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

void AtomicFile::commit()
{
    if (::fsync(m_descriptor) != 0) {
        fail(errno);
    }
    if (::rename(m_temporary.constData(), m_target.constData()) != 0) {
        fail(errno);
    }
    const int closed = ::close(m_descriptor);
    m_descriptor = -1;
    if (closed != 0 || !flushFolderOf(m_target)) {
        fail(errno);
    }
}

void AtomicFile::removeLeftovers(const QString& folder)
{
    QDir directory(folder);
    for (const QString& name :
         directory.entryList({".*" + temporarySuffix}, QDir::Files | QDir::Hidden)) {
        directory.remove(name);
    }
}

void AtomicFile::fail(int systemError) const
{
    throw IOFailure(
        QString("Could not write file %1: %2").arg(m_path, qt_error_string(systemError)));
}

void writeFileAtomically(const QString& path, const QByteArray& content)
{
    AtomicFile file(path);
    file.write(content);
    file.commit();
}

} // namespace kelp
