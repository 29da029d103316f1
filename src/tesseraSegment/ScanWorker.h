#pragma once

namespace kelp::command {

/// The first argument that makes the program segment one scan for another process of itself. The
/// second one is that process's number.
constexpr const char* workerArgument = "--segment-one-scan";

/// Reads a ScanRequest from standard input, segments the scan and builds its results; tells its
/// progress and its end on standard output. Returns the exit status.
int runScanWorker(int argc, char** argv);

} // namespace kelp::command
