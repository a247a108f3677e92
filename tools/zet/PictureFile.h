// Picture files: all that OpenImageIO reads, and media files.
#pragma once

#include <pictures/Picture.h>

#include <filesystem>
#include <functional>

namespace ZetTool {

/// May refuse a picture, by throwing, before memory is taken for its pixels.
using HeaderCheck = std::function<void(const PictureHeader&)>;

/// Both take the file's first picture; grey becomes equal red, green and blue, and straight alpha stays
/// straight. They throw std::runtime_error that names the file and the reason.
PictureHeader readPictureHeader(const std::filesystem::path& file);
Picture readPicture(const std::filesystem::path& file, const HeaderCheck& check = {});

/// The threads that the reading of one picture may use.
void setPictureThreads(int threads);

} // namespace ZetTool
