// Picture files: the common sort of EXR, all others that the picture library knows, and media files.
#pragma once

#include <pictures/PictureLibrary.h>

#include <filesystem>
#include <memory>

namespace ZetTool {

/// As PictureLibrary has them.
PictureHeader readPictureHeader(const std::filesystem::path& file);
Picture readPicture(const std::filesystem::path& file, const HeaderCheck& check = {});
std::unique_ptr<const PictureFileType> pictureFileType(const std::filesystem::path& file);

} // namespace ZetTool
