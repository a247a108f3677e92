// Picture files: all that OpenImageIO reads, and media files.
#pragma once

#include <pictures/Picture.h>

#include <filesystem>

namespace ZetTool {

/// Both take the file's first picture; grey becomes equal red, green and blue, and straight alpha stays
/// straight. They throw std::runtime_error that names the file and the reason.
PictureHeader readPictureHeader(const std::filesystem::path& file);
Picture readPicture(const std::filesystem::path& file);

/// The threads that the reading of one picture may use.
void setPictureThreads(int threads);

} // namespace ZetTool
