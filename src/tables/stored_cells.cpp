#include "tables/stored_cells.h"

namespace quobrix {

Bytes cellsOf(const Column& column, const RowRuns& rows) {
    ByteWriter out;
    for (const RowRun& run : rows)
        column.writeCells(out, run.first, run.count);
    return out.take();
}

void readCells(Column& column, ByteReader& in, const RowRuns& rows) {
    for (const RowRun& run : rows)
        column.readCells(in, run.first, run.count);
}

std::vector<Column*> columnsWithCells(const Table& table) {
    std::vector<Column*> columns;
    for (std::size_t i = 0; i < table.columnCount(); ++i)
        if (Column& column = table.column(i); column.stored() && !table.lacks(i))
            columns.push_back(&column);
    return columns;
}

Bytes wholeRows(const Table& table, const RowRuns& rows) {
    ByteWriter out;
    for (const Column* column : columnsWithCells(table))
        for (const RowRun& run : rows)
            column->writeCells(out, run.first, run.count);
    return out.take();
}

} // namespace quobrix
