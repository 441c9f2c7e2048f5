#include "tables/table_edits.h"

#include "document/document.h"
#include "tables/stored_cells.h"
#include "tables/tabbed_text.h"
#include "texts/text.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace quobrix {

namespace {

constexpr SourceText kDamaged("This is not editable because a part of this file is damaged.");
constexpr SourceText
    kPartsUnreadable("Unable to delete. A part of these rows could not be read from the file, which keeps it.\n"
                     "\"quobrix-cli check --repair\" makes a sound file of what can be read.");
constexpr SourceText kFewestRows("This now contains the minimum number of required rows.\nNo more can be deleted.");

} // namespace

ObjectStore* TableEdits::store() const { return document_ ? &document_->store() : nullptr; }

Table* TableEdits::find(ObjectId table) const {
    return document_ ? dynamic_cast<Table*>(document_->store().find(table)) : alone_;
}

/// Why nothing may be edited in TABLE. All its columns are loaded first: one of them may lock the whole document.
ShownText TableEdits::lockOf(const Table& table) const {
    table.unreadableColumns();
    return lockedBecause();
}

EditOutcome TableEdits::apply(ObjectId id, std::size_t addedRows, const std::vector<CellEdit>& cells,
                              const TextContext& context, std::string description) {
    Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    if (ShownText why = lockOf(*table); !why.empty())
        return refused(why);
    if (ShownText why = addedRows ? cannotInsert(*table, addedRows) : ShownText(); !why.empty())
        return refused(why);

    const CheckedEdit edit = checkEdit(*table, addedRows, cells, context);
    EditOutcome outcome = edit.outcome;
    if (!outcome.ok() || (edit.changes.empty() && addedRows == 0))
        return outcome;
    const EditOutcome done = step(std::move(description), [&] { return setCells(*table, addedRows, edit.changes); });
    outcome.notice = done.notice;
    return outcome;
}

EditOutcome TableEdits::setCells(Table& table, std::size_t addedRows, const std::map<std::size_t, NewValues>& values) {
    EditOutcome outcome;
    const RowIndex rows = table.rowCount();
    if (addedRows > 0) {
        addRows(table, {{rows, addedRows}}, [] {});
        if (table.rowCount() == table.spec().rows.required.most)
            outcome.notice = text(kMostRows);
    }
    for (const auto& [index, edits] : values) {
        Column& column = table.column(index);
        std::vector<RowIndex> edited;
        edited.reserve(edits.size());
        for (const auto& [row, value] : edits)
            edited.push_back(row);
        Change change{.kind = Kind::Cells,
                      .table = table.id(),
                      .column = index,
                      .rows = runsOf(edited),
                      .rowsBefore = rows + addedRows,
                      .rowsAfter = rows + addedRows};
        change.before = cellsOf(column, change.rows);
        try {
            for (const auto& [row, value] : edits)
                column.setValue(row, *value);
            change.after = cellsOf(column, change.rows);
            makeRoom();
        } catch (...) {
            if (!table.lacks(index)) {
                ByteReader in(change.before);
                readCells(column, in, change.rows);
            }
            throw;
        }
        open_.push_back(std::move(change));
        for (const RowIndex row : edited)
            table.cellEdited(index, row);
    }
    return outcome;
}

void TableEdits::addRows(Table& table, const RowRuns& rows, const std::function<void()>& fill) {
    assert(depth_ > 0);
    const RowIndex before = table.rowCount();
    Change change{.kind = Kind::RowsInserted,
                  .table = table.id(),
                  .rows = rows,
                  .rowsBefore = before,
                  .rowsAfter = before + countRows(rows)};
    table.insertRows(rows);
    try {
        fill();
        makeRoom();
    } catch (...) {
        table.removeBareRows(rows);
        throw;
    }
    open_.push_back(std::move(change)); // behind the objects of the rows: it goes before them, and comes after them
}

void TableEdits::changeRows(Table& table, const RowRuns& rows, const std::function<void()>& change) {
    assert(depth_ > 0);
    const RowIndex before = table.rowCount();
    std::vector<Change> cells;
    for (std::size_t i = 0; i < table.columnCount(); ++i)
        if (const Column& column = table.column(i); column.storedRows() == before && column.stored())
            cells.push_back(
                {.kind = Kind::Cells, .table = table.id(), .column = i, .rows = rows, .before = cellsOf(column, rows)});
    const auto added = [&] { return RowRuns{{before, table.rowCount() - before}}; };
    try {
        change();
        for (Change& each : cells) {
            each.after = cellsOf(table.column(each.column), rows);
            each.rowsBefore = each.rowsAfter = before;
        }
        std::erase_if(cells, [](const Change& each) { return each.before == each.after; });
        if (table.rowCount() > before)
            cells.push_back({.kind = Kind::RowsInserted,
                             .table = table.id(),
                             .rows = added(),
                             .rowsBefore = before,
                             .rowsAfter = table.rowCount()});
        open_.reserve(open_.size() + cells.size());
    } catch (...) {
        if (table.rowCount() > before)
            table.removeBareRows(added());
        for (const Change& each : cells)
            if (!each.before.empty() && !table.lacks(each.column)) {
                ByteReader in(each.before);
                readCells(table.column(each.column), in, rows);
            }
        throw;
    }
    std::ranges::move(cells, std::back_inserter(open_));
}

EditOutcome TableEdits::type(ObjectId id, std::size_t index, RowIndex row, std::string_view text,
                             const TextContext& context) {
    const Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    const Column& column = table->column(index);
    if (!column.editable())
        return refused(kNotEditable, index, row);
    if (row < table->rowCount() && text == column.editText(row, context))
        return {};
    Parsed parsed = column.parseIn(row, text, context);
    if (!parsed.ok())
        return refused(parsed, index, row);
    return apply(id, 0, {{index, row, std::move(parsed.value)}}, context,
                 quobrix::text(TextId::TypingIn, plainHeading(column.spec())));
}

EditOutcome TableEdits::set(ObjectId id, std::vector<CellEdit> cells, const TextContext& context,
                            std::string_view description) {
    return apply(id, 0, std::move(cells), context, std::string(description));
}

EditOutcome TableEdits::paste(ObjectId id, std::span<const std::size_t> columns, std::span<const RowIndex> rows,
                              const TabbedText& block, const TextContext& context) {
    const Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    const std::size_t added = block.rows() - std::min(block.rows(), rows.size());
    const auto isThere = [&](RowIndex row) { return row < table->rowCount(); };
    if (block.rows() == 0 || block.columns() > columns.size() || !std::ranges::all_of(rows, isThere) ||
        (added > 0 && !table->spec().rows.editable))
        return refused(kIncompatiblePaste);
    std::vector<CellEdit> cells;
    cells.reserve(block.rows() * block.columns());
    TextBuffer buffer;
    for (std::size_t r = 0; r < block.rows(); ++r)
        for (std::size_t c = 0; c < block.columns(); ++c) {
            const RowIndex row = r < rows.size() ? rows[r] : table->rowCount() + r - rows.size();
            const Column& column = table->column(columns[c]);
            if (!column.stored() && block.columns() > 1)
                continue; // what follows from the other cells of its row comes of itself
            if (!column.editable())
                return refused(kNotEditable, columns[c], row);
            // What comes back as it was copied is no edit, even where it could not be typed: a missing driver's name.
            const std::string& text = block.cell(r, c);
            if (isThere(row) &&
                (text == column.editText(row, context) || text == column.textView(row, context, buffer)))
                continue;
            Parsed parsed = column.parseIn(row, text, context);
            if (!parsed.ok())
                return refused(parsed, columns[c], row);
            cells.push_back({columns[c], row, std::move(parsed.value)});
        }
    return apply(id, added, std::move(cells), context, quobrix::text(TextId::Pasting));
}

EditOutcome TableEdits::fill(ObjectId id, std::span<const std::size_t> columns, std::span<const RowIndex> rows,
                             std::string_view text, const TextContext& context, std::string_view description) {
    const Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    std::vector<CellEdit> cells;
    for (const std::size_t index : columns) {
        const Column& column = table->column(index);
        for (const RowIndex row : rows) {
            if (!column.editable())
                return refused(kNotEditable, index, row);
            if (row < table->rowCount() && text == column.editText(row, context))
                continue; // nothing changes, even where it could not be typed: a missing driver's name
            Parsed parsed = column.parseIn(row, text, context);
            if (!parsed.ok())
                return refused(parsed, index, row);
            cells.push_back({index, row, std::move(parsed.value)});
        }
    }
    return apply(id, 0, std::move(cells), context, std::string(description));
}

EditOutcome TableEdits::insertRows(ObjectId id, RowIndex at, std::size_t count) {
    Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    if (ShownText why = lockOf(*table); !why.empty())
        return refused(why);
    if (ShownText why = cannotInsert(*table, count); !why.empty())
        return refused(why);
    at = std::min(at, table->rowCount());
    return step(counted(TextId::AddingRows, count, count), [&] {
        addRows(*table, {{at, count}}, [] {});
        EditOutcome outcome;
        if (table->rowCount() == table->spec().rows.required.most)
            outcome.notice = text(kMostRows);
        return outcome;
    });
}

EditOutcome TableEdits::removeRows(ObjectId id, std::vector<RowIndex> rows) {
    Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    if (ShownText why = lockOf(*table); !why.empty())
        return refused(why);
    std::ranges::sort(rows);
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    if (!rows.empty() && rows.back() >= table->rowCount())
        return refused(kNotEditable);
    if (ShownText why = cannotDelete(*table, {.wholeRows = rows}); !why.empty())
        return refused(why);
    if (!std::ranges::all_of(rows, [&](RowIndex row) { return table->replaceable(row); }))
        return refused(kPartsUnreadable);
    return step(counted(TextId::DeletingRows, rows.size(), rows.size()), [&] {
        Change change{.kind = Kind::RowsRemoved, .table = id, .rows = runsOf(rows), .rowsBefore = table->rowCount()};
        change.rowsAfter = change.rowsBefore - rows.size();
        change.before = wholeRows(*table, change.rows);
        table->deleteOwned(change.rows);
        makeRoom();
        table->removeBareRows(change.rows);
        open_.push_back(std::move(change));
        EditOutcome outcome;
        if (const std::uint32_t least = table->spec().rows.required.least; least > 0 && table->rowCount() == least)
            outcome.notice = text(kFewestRows);
        return outcome;
    });
}

EditOutcome TableEdits::group(std::string_view description, const std::function<EditOutcome()>& work) {
    return step(std::string(description), work);
}

} // namespace quobrix
