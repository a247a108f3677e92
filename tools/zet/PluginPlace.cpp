#include "PluginPlace.h"

namespace ZetTool {

std::filesystem::path ownPlugin() {
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    return (program.parent_path() / ZET_PLUGIN_FROM_PROGRAM).lexically_normal();
}

} // namespace ZetTool
