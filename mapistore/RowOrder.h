#pragma once

#include "Row.h"

namespace mapistore
{

/// The order of a table's rows: by its sort keys, and by the rows' own order between equals.
/// A missing key sorts before every value, as a null would.
bool SortsBefore(const IRow& left, const IRow& right, const std::vector<SSortOrder>& order);

void SortRows(std::vector<RowPtr>& rows, const std::vector<SSortOrder>& order);

} // namespace mapistore
