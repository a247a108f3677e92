// Text in columns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ZetTool {

/// Rows of cells as lines, two blanks between columns; columns without any text are left out. `sides` says
/// for each column whether its texts stand at the left ('l') or right ('r').
std::string alignedTable(const std::vector<std::vector<std::string>>& rows, std::string_view sides);

} // namespace ZetTool
