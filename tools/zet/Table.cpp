#include "Table.h"

#include <fmt/format.h>

#include <algorithm>

namespace ZetTool {

std::string alignedTable(const std::vector<std::vector<std::string>>& rows, std::string_view sides) {
    std::vector<std::size_t> widths(sides.size());
    for (const auto& row : rows)
        for (std::size_t column = 0; column < sides.size(); ++column)
            widths[column] = std::max(widths[column], row[column].size());

    std::string table;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < sides.size(); ++column) {
            if (widths[column] == 0)
                continue;
            line += line.empty() ? "" : "  ";
            line += sides[column] == 'r' ? fmt::format("{:>{}}", row[column], widths[column])
                                         : fmt::format("{:<{}}", row[column], widths[column]);
        }
        table += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return table;
}

} // namespace ZetTool
