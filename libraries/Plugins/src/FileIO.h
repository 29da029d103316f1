#pragma once

#include "CaError.h"
#include "CaFactory.h"

#include <QByteArray>

/// Access to the files of a store. A seam of its own, so that a store can be tried out on file
/// systems that fail.
class FileIO
{
public:
    virtual ~FileIO() = default;

    /// The registry by scheme; createFileIOFactory registers local files under "file".
    static CaFactory<FileIO>& getFactory();

    /// Every error names the file and the system's reason. Runs in several threads at a time.
    virtual CaError read(const QString& path, QByteArray& content) const = 0;
    /// Either the new content stands there afterwards or the former one.
    virtual CaError write(const QString& path, const QByteArray& content) const = 0;
    virtual CaError remove(const QString& path) const = 0;
};
