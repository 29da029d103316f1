#pragma once

#include <QByteArray>
#include <QString>

namespace kelp {

/// Writes the whole file through a temporary one beside it, flushed to the disk and renamed: either
/// the new content stands at the path afterwards or the former one. Throws IOFailure with the path
/// and the system's reason.
void writeFileAtomically(const QString& path, const QByteArray& content);

} // namespace kelp
