#pragma once

#include "CaError.h"

/// The claim of one process on a store, held by a lock of the operating system on the file "lock"
/// in its folder. It goes with the process, so a crash leaves nothing behind that must be cleaned.
class StoreLock
{
public:
    StoreLock() = default;
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;
    ~StoreLock();

    /// The error names who holds the store: program, process, user, host and since when.
    CaError acquire(const QString& folder);
    void release();

private:
    int m_descriptor = -1;
};
