#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

class Table;

/// What programs that read an export have to know of a column.
struct ColumnDescription {
    std::string_view key; ///< of its values
    std::string heading;  ///< where people read them
    std::string_view
        kind;         ///< "boolean", "integer", "real", "text", "selection", "datetime", "list", "table", "samples"
    std::string unit; ///< base unit; empty where there is none, or where each series of samples has its own
    std::vector<ColumnDescription> columns{}; ///< of the table that a cell owns
};

/// The columns of TABLE, in their order, and of what its cells own.
std::vector<ColumnDescription> describeColumns(const Table& table);

} // namespace quobrix
