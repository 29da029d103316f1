#pragma once

#include <QString>

namespace kelp::command {

/// The path of the running program's file.
QString programPath();

/// Takes Qt's plug-ins from the folder plugins beside the program, where there is one. Before the
/// application object is made.
void preparePlugins();

/// Sends Qt's own messages to the trace. They are of no use to who segments.
void traceQtMessages();

} // namespace kelp::command
