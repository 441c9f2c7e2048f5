#pragma once

#include "tables/column.h"

#include <functional>
#include <string_view>
#include <vector>

namespace quobrix {

/// What is exported: COLUMNS of one table from left to right, of which ROWS in that order.
struct ExportRecords {
    std::vector<const Column*> columns;
    std::vector<RowIndex> rows;
};

/// Takes the next bytes of an export; false ends it.
using ExportSink = std::function<bool(std::string_view)>;

/// Whether columns that repeat another one under another heading are exported too.
enum class Repeats { LeaveOut, Keep };

/// All rows of TABLE, and its columns but for those whose cells are objects.
ExportRecords allRecords(const Table& table, Repeats repeats);

} // namespace quobrix
