// "zet formats": the output formats and what they cost.
#pragma once

#include "ExitCode.h"

#include <CLI/CLI.hpp>

namespace ZetTool {

/// Adds the sub-command. When it is chosen, its outcome goes to `exitCode`; it throws std::runtime_error when
/// it cannot start.
void addFormatsCommand(CLI::App& program, ExitCode& exitCode);

} // namespace ZetTool
