#include "MediaFiles.h"

#include <plugin/OutputFormats.h>

#include <fmt/format.h>

namespace fs = std::filesystem;

namespace ZetTool {

FoundFile inspect(const fs::path& file) {
    if (std::error_code error; fs::status(file, error).type() == fs::file_type::not_found)
        return {file, std::nullopt, "does not exist"};
    try {
        MediaConversion::FileStreamFactory streams;
        return {file, MediaConversion::ZentrelMediaFileReader(streams).readInfo(file), {}};
    } catch (const std::exception& error) {
        return {file, std::nullopt, error.what()};
    }
}

MediaFileLook lookOf(const MediaFileInfo& info) {
    return {info.mediaFormat, info.width, info.height, info.majorVersion, info.minorVersion};
}

std::string formatText(const MediaFileInfo& info) {
    for (const OutputFormat& output : outputFormats)
        if (output.format() == info.format)
            return output.label;
    return Zentrel::FrameFormat::toString(info.format);
}

PictureSize sizeOf(const MediaFileInfo& info) { return {info.width, info.height}; }

std::string versionText(const MediaFileInfo& info) {
    return fmt::format("{}.{}", info.majorVersion, info.minorVersion);
}

} // namespace ZetTool
