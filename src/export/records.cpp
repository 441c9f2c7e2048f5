#include "export/records.h"

#include "tables/table.h"

#include <numeric>

namespace quobrix {

ExportRecords allRecords(const Table& table, Repeats repeats) {
    ExportRecords records;
    for (std::size_t i = 0; i < table.columnCount(); ++i)
        if (const Column& column = table.column(i);
            column.kind() != ColumnKind::Table && (repeats == Repeats::Keep || !column.repeatsSibling()))
            records.columns.push_back(&column);
    records.rows.resize(table.rowCount());
    std::iota(records.rows.begin(), records.rows.end(), RowIndex{0});
    return records;
}

} // namespace quobrix
