// "zet check": whether a whole sequence is as it should be.
#pragma once

#include "ExitCode.h"

#include <CLI/CLI.hpp>

namespace ZetTool {

/// Adds the sub-command. When it is chosen, its outcome goes to `exitCode`; it throws std::runtime_error when
/// it cannot start.
void addCheckCommand(CLI::App& program, ExitCode& exitCode);

} // namespace ZetTool
