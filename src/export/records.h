#pragma once

#include "tables/column.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// A column as it is exported.
struct ExportColumn {
    const Column* column;
    std::string heading{}; ///< empty: its own
};

/// What is exported: COLUMNS of one table from left to right, of which ROWS in that order. Several exported together
/// follow each other; they have the same columns, and FILE says of each where it comes from.
struct ExportRecords {
    std::vector<ExportColumn> columns;
    std::vector<RowIndex> rows;
    std::optional<std::string> file{}; ///< in a column of its own; with none there is no such column
};

/// Takes the next bytes of an export; false ends it.
using ExportSink = std::function<bool(std::string_view)>;

/// Whether columns that repeat another one under another heading are exported too.
enum class Repeats { LeaveOut, Keep };
/// Whether what the cells of a column own is exported too.
enum class Owned { LeaveOut, Keep };

/// The columns of TABLE that have values, or own some.
std::vector<ExportColumn> exportColumns(const Table& table, Repeats repeats, Owned owned = Owned::LeaveOut);

/// The columns of TABLE, which a cell owns, whose values are their own: none that is computed beside them.
std::vector<ExportColumn> ownColumns(const Table& table);

/// What heads a column of figures: with the user's unit, if there is one.
std::string exportHeading(const ExportColumn& column, const TextContext& context);
/// What heads the column that names files.
ShownText fileHeading();

} // namespace quobrix
