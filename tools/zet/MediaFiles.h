// Media files as they are found: what they say of themselves, or what is wrong with them.
#pragma once

#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>

#include <pictures/Picture.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>

namespace ZetTool {

using MediaFileInfo = MediaConversion::ZentrelMediaFileInfo;

struct FoundFile {
    std::filesystem::path path;
    std::optional<MediaFileInfo> info; ///< without one there is a fault
    std::string fault;                 ///< what is wrong, without the path
};

/// Checks the file's headers and length without reading its pixels.
FoundFile inspect(const std::filesystem::path& file);

/// What makes files alike: format, width, height and version.
using MediaFileLook = std::tuple<std::uint32_t, int, int, int, int>;
MediaFileLook lookOf(const MediaFileInfo& info);

/// The label in the writer's menu; the library's name for a format that is not in it.
std::string formatText(const MediaFileInfo& info);
PictureSize sizeOf(const MediaFileInfo& info);
/// "1.0"
std::string versionText(const MediaFileInfo& info);

} // namespace ZetTool
