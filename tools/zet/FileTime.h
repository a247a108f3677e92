// When files changed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <utility>

namespace ZetTool {

/// Seconds and nanoseconds since 1970, of the clock of whichever machine has the file.
using FileTime = std::pair<std::int64_t, std::int64_t>;

/// When the file was last written to; nothing when there is none.
std::optional<FileTime> timeWritten(const std::filesystem::path& file);

/// When the file came to be what it is: when it was last written to, put into its place or linked to. What is
/// moved or copied may keep the time of its content, but not that of its place.
std::optional<FileTime> timeChanged(const std::filesystem::path& file);

} // namespace ZetTool
