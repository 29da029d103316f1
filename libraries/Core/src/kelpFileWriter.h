#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>

namespace kelp {

/// A file that appears whole or not at all: written to a temporary one beside it, which commit()
/// flushes to the disk and renames. Without a commit the former content stays and the temporary
/// file goes. Every failure throws IOFailure with the path and the system's reason.
class AtomicFile
{
public:
    /// Follows symbolic links; refuses a path that is something else than a regular file.
    explicit AtomicFile(const QString& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    void write(const void* bytes, std::size_t count);
    void write(const QByteArray& bytes);
    void commit();

    /// Removes what runs that were killed have left in this folder. Only for a folder in which no
    /// other process writes.
    static void removeLeftovers(const QString& folder);

private:
    [[noreturn]] void fail(int systemError) const;

    QString m_path;
    QByteArray m_target;
    QByteArray m_temporary;
    int m_descriptor = -1;
};

/// Writes the whole file through AtomicFile.
void writeFileAtomically(const QString& path, const QByteArray& content);

} // namespace kelp
