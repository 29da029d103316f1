#pragma once

#include <QByteArray>

namespace kelp::command {

/// False if standard output does not take it all.
bool printWhole(const QByteArray& text);

} // namespace kelp::command
