// Options and texts that several sub-commands have.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace ZetTool {

// `text` says what the option means to the command.

void addFrames(CLI::App& command, std::optional<std::string>& ranges, const std::string& text);
void addTransfer(CLI::App& command, std::string& choice, const std::string& text);
/// As many as there are processors, unless others are asked for.
void addJobs(CLI::App& command, unsigned& jobs, const std::string& text);
void addQuiet(CLI::App& command, bool& quiet, const std::string& text = "Print nothing but errors");

/// What the arguments may be of which each is a frame, with this extension.
std::string oneSequenceOrList(const std::string& extension);
/// What the arguments may be of which each may be several files.
extern const char mediaFilesOrSequences[];

/// The paragraph of a help text on how files appear.
extern const char temporaryNames[];

} // namespace ZetTool
