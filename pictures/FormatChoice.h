// The formats of media files: as people name them, and what they hold.
#pragma once

#include <plugin/OutputFormats.h>

#include <string>

namespace ZetTool {

/// The format with this label, short name or index in the menu. Throws std::runtime_error that lists them.
const OutputFormat& findOutputFormat(const std::string& name);

/// A table of all formats, one a line: index, short name, label.
std::string listOutputFormats();

/// The output format that holds the same samples as a format of media files, in an order of its own.
const OutputFormat& closestOutputFormat(const Zentrel::FrameFormat& format);

/// Whether files of a media format hold an alpha channel.
bool holdsAlpha(const Zentrel::FrameFormat& format);
/// The bits of the format's deepest samples: 8, 10 or 12.
int bitsOf(const Zentrel::FrameFormat& format);

} // namespace ZetTool
