#pragma once

#include "base/bytes.h"
#include "tables/table.h"

#include <vector>

namespace quobrix {

// Cells as they lie in the streams, which is how steps of undo keep them.

/// The cells of COLUMN in ROWS.
Bytes cellsOf(const Column& column, const RowRuns& rows);
/// Sets the cells of COLUMN in ROWS to those that cellsOf() gave.
void readCells(Column& column, ByteReader& in, const RowRuns& rows);
/// The columns that have cells to be kept: those that the document lacks are empty.
std::vector<Column*> columnsWithCells(const Table& table);
/// All their cells of some rows, one column after the other.
Bytes wholeRows(const Table& table, const RowRuns& rows);

} // namespace quobrix
