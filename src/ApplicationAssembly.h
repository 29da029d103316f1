#pragma once

class AppBase;

namespace kelp::oct {

/// Makes known what the framework must be able to create: decoders, files, stored trees, scans and
/// the widget that adds them. Before the application is built.
void registerFactories();

/// Identifies the application and adds the tabs, in their order, to one that has none yet. What is
/// thrown here ends the program.
void assembleApplication(AppBase& application);

} // namespace kelp::oct
