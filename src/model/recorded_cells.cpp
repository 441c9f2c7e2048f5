#include "model/recorded_cells.h"

#include "tables/stored_cells.h"

#include <algorithm>

namespace quobrix {
namespace {

/// Reads the cell of COLUMN in ROW from BYTES, which come from a file; all of it or nothing.
bool readCell(Column& column, RowIndex row, const Bytes& bytes) {
    const Bytes before = cellsOf(column, {{row, 1}});
    ByteReader in(bytes);
    column.readCells(in, row, 1);
    if (in.finished())
        return true;
    ByteReader back(before);
    column.readCells(back, row, 1);
    return false;
}

} // namespace

void Element<RecordedCells>::write(ByteWriter& out, const RecordedCells& v) {
    out.u32(static_cast<std::uint32_t>(v.cells.size()));
    for (const RecordedCells::Cell& cell : v.cells) {
        out.u32(cell.column);
        out.u32(static_cast<std::uint32_t>(cell.bytes.size()));
        out.bytes(cell.bytes);
    }
}

RecordedCells Element<RecordedCells>::read(ByteReader& in) {
    RecordedCells v;
    for (std::uint32_t left = in.count(8); left > 0 && in.complete(); --left) {
        const std::uint32_t column = in.u32();
        const ByteView bytes = in.bytes(in.u32());
        v.cells.push_back({column, {bytes.begin(), bytes.end()}});
    }
    return v;
}

void RecordedCellsColumn::edit(Column& column, RowIndex row, const Value& value) {
    const Bytes before = cellsOf(column, {{row, 1}});
    column.setValue(row, value);
    RecordedCells kept = at(row);
    const auto cell = std::ranges::find(kept.cells, column.type().id(), &RecordedCells::Cell::column);
    if (cell == kept.cells.end())
        kept.cells.push_back({column.type().id(), before});
    else if (cell->bytes == cellsOf(column, {{row, 1}}))
        kept.cells.erase(cell); // it is as it was recorded again
    if (kept != at(row))
        set(row, std::move(kept));
}

void RecordedCellsColumn::exchange(RowIndex row) {
    if (!has(row))
        return;
    RecordedCells kept = at(row);
    for (const PersistentType* type : table()->spec().columns) {
        const auto cell = std::ranges::find(kept.cells, type->id(), &RecordedCells::Cell::column);
        Column& column = table()->columnOf(*type);
        if (cell == kept.cells.end() || !column.correctable())
            continue;
        Bytes now = cellsOf(column, {{row, 1}});
        if (readCell(column, row, cell->bytes))
            cell->bytes = std::move(now);
    }
    set(row, std::move(kept));
}

const Bytes* RecordedCellsColumn::find(const PersistentType& column, RowIndex row) const {
    const std::vector<RecordedCells::Cell>& cells = at(row).cells;
    const auto cell = std::ranges::find(cells, column.id(), &RecordedCells::Cell::column);
    return cell == cells.end() ? nullptr : &cell->bytes;
}

Value RecordedCellsColumn::recorded(const Column& column, RowIndex row) const {
    if (const Bytes* bytes = column.correctable() ? find(column.type(), row) : nullptr) {
        const auto alone = column.type().create();
        auto& cell = static_cast<Column&>(*alone);
        cell.insertRows(0, 1);
        if (readCell(cell, 0, *bytes))
            return cell.value(0);
    }
    return column.value(row);
}

} // namespace quobrix
