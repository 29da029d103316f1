#pragma once

namespace kelp::command {

/// The command tessera-segment. Returns the exit status: 0 all well, 1 at least one scan failed,
/// 2 wrong usage, 128 and the signal when it was interrupted.
int runCommand(int argc, char** argv);

} // namespace kelp::command
