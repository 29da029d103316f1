#pragma once

namespace kelp::command {

/// Registers what scans are read and stored with.
void registerScanLibrary();

} // namespace kelp::command
