// Picture files read with OpenImageIO.
#pragma once

#include <pictures/PictureLibrary.h>

namespace ZetImageIo {

/// As PictureLibrary has them.
ZetTool::PictureHeader readPictureHeader(const std::filesystem::path& file);
ZetTool::Picture readPicture(const std::filesystem::path& file, const ZetTool::HeaderCheck& check,
                             IMemoryPool& memory);

} // namespace ZetImageIo
