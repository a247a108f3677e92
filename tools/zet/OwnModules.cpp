#include "OwnModules.h"

namespace ZetTool {
namespace {

std::filesystem::path besideProgram(const char* file) {
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    return (program.parent_path() / ZET_MODULES_FROM_PROGRAM / file).lexically_normal();
}

} // namespace

std::filesystem::path ownPlugin() { return besideProgram(ZET_PLUGIN); }
std::filesystem::path ownPictureLibrary() { return besideProgram(ZET_PICTURE_LIBRARY); }

} // namespace ZetTool
