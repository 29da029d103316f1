#pragma once

#include <QByteArray>
#include <QString>

namespace kelp::phantom {

/// Writes the whole file or leaves what was there. Throws kelp::IOFailure with path and reason.
void writeWholeFile(const QString& path, const QByteArray& content);

} // namespace kelp::phantom
