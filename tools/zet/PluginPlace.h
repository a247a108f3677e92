// Where the writer plug-in is.
#pragma once

#include <filesystem>

namespace ZetTool {

/// The plug-in that was built or installed together with this program, found relative to the program itself,
/// so that both may be moved together.
std::filesystem::path ownPlugin();

} // namespace ZetTool
