// Picture files written with OpenImageIO.
#pragma once

#include <pictures/PictureFileType.h>

#include <memory>

namespace ZetImageIo {

/// As PictureLibrary has it.
std::unique_ptr<const ZetTool::PictureFileType> pictureFileType(const std::filesystem::path& file);

} // namespace ZetImageIo
