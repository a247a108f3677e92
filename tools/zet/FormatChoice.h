// The output format as people name it.
#pragma once

#include <plugin/OutputFormats.h>

#include <string>

namespace ZetTool {

/// The format with this label, short name or index in the menu. Throws std::runtime_error that lists them.
const OutputFormat& findOutputFormat(const std::string& name);

/// A table of all formats, one a line: index, short name, label.
std::string listOutputFormats();

} // namespace ZetTool
