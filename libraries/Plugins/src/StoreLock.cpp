#include "StoreLock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

QByteArray describeThisProcess()
{
    const QString program =
        QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).fileName();
    const QString user = qEnvironmentVariable("USER", QString::number(::getuid()));
    return QString("%1, process %2, user %3 on %4, since %5")
        .arg(program.isEmpty() ? QStringLiteral("a program") : program)
        .arg(::getpid())
        .arg(user, QSysInfo::machineHostName(),
             QDateTime::currentDateTime().toString("yyyy-MM-dd hh:mm:ss"))
        .toUtf8();
}

QString readHolder(int descriptor)
{
    char text[512];
    const ssize_t count = ::pread(descriptor, text, sizeof(text), 0);
    return count > 0 ? QString::fromUtf8(text, static_cast<int>(count))
                     : QStringLiteral("another process");
}

void writeHolder(int descriptor, const QByteArray& holder)
{
    // For the message to others only: the lock holds without it, on a full disk for example.
    if (::ftruncate(descriptor, 0) == 0) {
        static_cast<void>(::pwrite(descriptor, holder.constData(),
                                   static_cast<std::size_t>(holder.size()), 0) > 0);
    }
}

} // namespace

StoreLock::~StoreLock()
{
    release();
}

CaError StoreLock::acquire(const QString& folder)
{
    release();
    const QString path = folder + "/lock";
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return CaError("StoreUnusable",
                       QString("Could not open file %1: %2").arg(path, qt_error_string(errno)),
                       QString());
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        const int systemError = errno;
        const QString holder = readHolder(descriptor);
        ::close(descriptor);
        if (systemError == EWOULDBLOCK) {
            return CaError("StoreLocked",
                           QString("The patient store %1 is in use by %2.").arg(folder, holder),
                           QString());
        }
        return CaError(
            "StoreUnusable",
            QString("Could not lock file %1: %2").arg(path, qt_error_string(systemError)),
            QString());
    }
    writeHolder(descriptor, describeThisProcess());
    m_descriptor = descriptor;
    return CaError::nullError;
}

void StoreLock::release()
{
    if (m_descriptor >= 0) {
        // The file itself stays: removing it would let two others lock two different ones.
        writeHolder(m_descriptor, QByteArray());
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}
