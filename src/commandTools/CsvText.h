#pragma once

#include <QByteArray>
#include <QStringList>

namespace kelp::command {

/// One line of comma-separated values, with quotes where they are needed, and a line feed.
QByteArray csvLine(const QStringList& cells);

} // namespace kelp::command
