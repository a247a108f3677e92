// "zet sheet": what is in media files, at a glance.
#pragma once

#include "ExitCode.h"

#include <CLI/CLI.hpp>

namespace ZetTool {

/// Adds the sub-command. When it is chosen, its outcome goes to `exitCode`; it throws std::runtime_error when
/// it cannot start.
void addSheetCommand(CLI::App& program, ExitCode& exitCode);

} // namespace ZetTool
