// The whole command line, with all sub-commands and their options.
#pragma once

#include "ExitCode.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace ZetTool {

/// The sub-command that is parsed is carried out and leaves its outcome in `exitCode`. Both arguments must
/// outlive the program; `commandLine` is what a message repeats of it.
std::unique_ptr<CLI::App> makeProgram(const std::string& commandLine, ExitCode& exitCode);

} // namespace ZetTool
