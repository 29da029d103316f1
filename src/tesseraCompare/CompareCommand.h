#pragma once

namespace kelp::compare {

/// The command tessera-compare. Returns the exit status: 0 all well, 1 something could not be
/// compared or written, 2 wrong usage.
int runCommand(int argc, char** argv);

} // namespace kelp::compare
