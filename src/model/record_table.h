#pragma once

#include "tables/column.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// One of the tables of a record, as it is to be shown.
struct RecordTable {
    struct Shown {
        const Column* column;
        std::string heading{}; ///< empty: the column's own
    };

    std::string_view name; ///< for scripts and settings
    SourceText title;      ///< "Samples"
    ShownText emptyText;   ///< stands in place of rows
    std::vector<Shown> columns{};
    std::function<std::string(RowIndex)> rowTitle{}; ///< may be none
};

} // namespace quobrix
