#include "FormatChoice.h"

#include <fmt/format.h>

#include <stdexcept>

namespace ZetTool {

const OutputFormat& findOutputFormat(const std::string& name) {
    for (std::size_t index = 0; index < outputFormats.size(); ++index) {
        const OutputFormat& output = outputFormats[index];
        if (name == output.label || name == output.shortName || name == std::to_string(index))
            return output;
    }
    throw std::runtime_error(
        fmt::format("unknown format \"{}\"; the formats are\n{}", name, listOutputFormats()));
}

std::string listOutputFormats() {
    std::string table;
    for (std::size_t index = 0; index < outputFormats.size(); ++index)
        table += fmt::format("  {}  {:<7} \"{}\"\n", index, outputFormats[index].shortName,
                             outputFormats[index].label);
    table.pop_back();
    return table;
}

} // namespace ZetTool
