#pragma once

#include "tables/column.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace quobrix {

struct FindOptions {
    bool matchCase = false;
    bool wholeCell = false; ///< the cell reads NEEDLE and nothing else
    bool backwards = false;
    bool wrap = true; ///< goes on from the other end
};

/// A cell by its place in a window: COLUMN counts in the columns given, ROW in the order shown.
struct CellPlace {
    std::size_t column = 0;
    std::size_t row = 0;
    bool operator==(const CellPlace&) const = default;
};

/// The next cell behind FROM (before it, when searching backwards), row by row, that reads NEEDLE as the user sees it.
/// FROM itself is looked at last, and without FROM the search starts at the first (last) cell. SHOWN are the stored
/// rows that are shown, in the order shown. Nothing if NEEDLE is empty.
std::optional<CellPlace> findText(std::span<const Column* const> columns, std::span<const RowIndex> shown,
                                  const TextContext& context, std::string_view needle, const FindOptions& options,
                                  std::optional<CellPlace> from);

/// Those of ROWS that read NEEDLE in a cell of COLUMNS, as the user sees it and in any case. All, if NEEDLE is empty.
std::vector<RowIndex> rowsReading(std::span<const Column* const> columns, std::vector<RowIndex> rows,
                                  const TextContext& context, std::string_view needle);

} // namespace quobrix
