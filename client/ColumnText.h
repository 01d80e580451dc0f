#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dtclient
{
/// Columns that a terminal needs for `text`: letters of East Asia take two, combining marks none.
///
/// Shape: UTF-8; a byte that does not belong counts as one column.
std::size_t ColumnsOf(std::string_view text);

/// `text` fit for one cell of a table: one line, without control characters (a subject must not be
/// able to move the cursor), without blanks at the ends, and cut to `maxColumns` with an ellipsis.
std::string CellText(std::string_view text, std::size_t maxColumns);

/// Puts rows of cells under each other, two blanks between the columns and none at line ends. The
/// first row is the heading and is underlined.
std::string TableText(const std::vector<std::vector<std::string>>& rows);
} // namespace dtclient
