#pragma once

/// What the commands tell the shell.
namespace kelp::command {

constexpr int allWell = 0;
constexpr int someFailed = 1;
constexpr int wrongUsage = 2;
/// Plus the number of the signal, as the shell has it.
constexpr int interruptedBy = 128;

} // namespace kelp::command
