// What was built or installed together with this program and is loaded when it runs. It is found relative to
// the program, so that all may be moved together.
#pragma once

#include <filesystem>

namespace ZetTool {

std::filesystem::path ownPlugin();
std::filesystem::path ownPictureLibrary();

} // namespace ZetTool
