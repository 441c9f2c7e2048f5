#pragma once

#include "tables/column.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
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
    std::function<std::string(RowIndex)> rowTitle{};   ///< may be none
    std::vector<std::shared_ptr<const Column>> made{}; ///< those of the columns that are there for this table only

    void add(std::shared_ptr<const Column> column, std::string heading = {}) {
        columns.push_back({column.get(), std::move(heading)});
        made.push_back(std::move(column));
    }
};

} // namespace quobrix
