// Whether a file holds what its picture should have become.
#pragma once

#include "Checksum.h"

#include <host/EmbeddedHost.h>
#include <pictures/Picture.h>
#include <plugin/OutputFormats.h>

#include <filesystem>

namespace ZetTool {

/// Reads the file whole, checks its headers and length, and compares every pixel byte with a conversion of
/// the picture that is made here by the library, without the writer plug-in. Returns the sum of the bytes
/// that it compared. Throws std::runtime_error, without the file's name, that tells the first difference.
FileSum verifyFile(const std::filesystem::path& file, Picture& picture,
                   const EmbeddedHost::RenderSettings& settings, const OutputFormat& output);

} // namespace ZetTool
