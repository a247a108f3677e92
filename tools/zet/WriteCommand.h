// "zet write": pictures or the line-up chart become media files.
#pragma once

#include "ExitCode.h"

#include <CLI/CLI.hpp>

#include <string>

namespace ZetTool {

/// Adds the sub-command. When it is chosen, its outcome goes to `exitCode`; `commandLine` is the program's
/// own, to tell how an interrupted run is resumed. The sub-command throws std::runtime_error when it cannot
/// start.
void addWriteCommand(CLI::App& program, const std::string& commandLine, ExitCode& exitCode);

} // namespace ZetTool
