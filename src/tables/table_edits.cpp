#include "tables/table_edits.h"

#include "document/document.h"
#include "tables/tabbed_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace quobrix {

const std::string_view kIncompatiblePaste =
    "The clipboard contains data which cannot be pasted.\nIt's in a format that's incompatible with this spreadsheet.";

namespace {

constexpr std::string_view kNotEditable = "This is not editable; see Help for more information.";
constexpr std::string_view kDamaged = "This is not editable because a part of this file is damaged.";
constexpr std::string_view kMostRows =
    "This now contains the maximum number of allowable rows.\nNo more can be added or inserted.";
constexpr std::string_view kFewestRows =
    "This now contains the minimum number of required rows.\nNo more can be deleted.";

EditOutcome refused(std::string_view why, std::size_t column = 0, RowIndex row = Finding::kNoRow) {
    return {.refusal = std::string(why), .column = column, .row = row};
}

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

/// The columns that have cells to be kept: those that the document lacks are empty.
std::vector<Column*> columnsWithCells(const Table& table) {
    std::vector<Column*> columns;
    for (std::size_t i = 0; i < table.columnCount(); ++i)
        if (Column& column = table.column(i); column.stored() && !table.lacks(i))
            columns.push_back(&column);
    return columns;
}

/// All their cells of some rows, one column after the other.
Bytes wholeRows(const Table& table, const RowRuns& rows) {
    ByteWriter out;
    for (const Column* column : columnsWithCells(table))
        for (const RowRun& run : rows)
            column->writeCells(out, run.first, run.count);
    return out.take();
}

std::string rowsText(std::string_view what, std::size_t rows) {
    return rows == 1 ? fmt::format("{} a row", what) : fmt::format("{} {} rows", what, rows);
}

/// The cells of one column that are to change, with their values; by row, each once.
using NewValues = std::vector<std::pair<RowIndex, const Value*>>;

/// Puts VALUES, given in any order, by row. Of a row that was given twice the last one counts.
void putInOrder(NewValues& values) {
    const auto row = &NewValues::value_type::first;
    if (!std::ranges::is_sorted(values, {}, row))
        std::ranges::stable_sort(values, {}, row);
    // From the end, so that the last one of a row stays.
    const auto kept =
        std::unique(values.rbegin(), values.rend(), [](const auto& a, const auto& b) { return a.first == b.first; });
    values.erase(values.begin(), kept.base());
}

/// The first of the new values' rows that another row will be equal to, if any.
std::optional<RowIndex> repeatedRow(const Column& column, const NewValues& edits, Uniqueness uniqueness) {
    std::unordered_map<std::string, RowIndex> firstRows;
    firstRows.reserve(edits.size());
    std::optional<RowIndex> first;
    const auto repeat = [&](RowIndex row) { first = std::min(first.value_or(row), row); };
    for (const auto& [row, value] : edits)
        if (std::string key = uniquenessKey(*value, uniqueness); !key.empty())
            if (const auto [entry, isNew] = firstRows.try_emplace(std::move(key), row); !isNew)
                repeat(entry->second);
    auto edit = edits.begin();
    for (RowIndex row = 0; row < column.rowCount(); ++row)
        if (edit != edits.end() && edit->first == row)
            ++edit;
        else if (const auto found = firstRows.find(uniquenessKey(column.value(row), uniqueness));
                 found != firstRows.end())
            repeat(found->second);
    return first;
}

} // namespace

TableEdits::TableEdits(FindTable find) : find_(std::move(find)) {}

TableEdits::TableEdits(Table& table) : find_([&table](ObjectId) { return &table; }) {}

TableEdits::FindTable tablesOf(TDocument& document) {
    return [&document](ObjectId id) { return dynamic_cast<Table*>(document.store().find(id)); };
}

Table* TableEdits::find(ObjectId table) const { return find_(table); }

/// Why nothing may be edited in TABLE. All its columns are loaded first: one of them may lock the whole document.
std::string TableEdits::lockOf(const Table& table) const {
    table.unreadableColumns();
    return lockedBecause();
}

EditOutcome TableEdits::apply(ObjectId id, std::size_t addedRows, std::vector<CellEdit> cells,
                              const TextContext& context, std::string description) {
    Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    if (std::string why = lockOf(*table); !why.empty())
        return refused(why);
    if (std::string why = addedRows ? cannotInsert(*table, addedRows) : std::string(); !why.empty())
        return refused(why);

    // All is looked at before anything is changed.
    EditOutcome outcome;
    const RowIndex rows = table->rowCount();
    std::map<std::size_t, NewValues> byColumn;
    for (const CellEdit& cell : cells) {
        if (cell.column >= table->columnCount() || cell.row >= rows + addedRows)
            return refused(kIncompatiblePaste, cell.column, cell.row);
        const Column& column = table->column(cell.column);
        if (!column.editable())
            return refused(kNotEditable, cell.column, cell.row);
        if (cell.row < rows && column.value(cell.row) == cell.value)
            continue;
        if (const std::string why =
                cell.row < rows ? column.lockedBecause(cell.row) : std::string(table->columnLock(column));
            !why.empty())
            return refused(why, cell.column, cell.row);
        for (Finding& finding : checkValue(column, cell.value, context)) {
            if (finding.severity == Severity::Required)
                return refused(finding.text, cell.column, cell.row);
            finding.table = id;
            finding.title = table->spec().title;
            finding.column = &column.spec();
            finding.row = cell.row;
            outcome.warnings.push_back(std::move(finding));
        }
        byColumn[cell.column].emplace_back(cell.row, &cell.value);
    }
    for (auto& [index, edits] : byColumn) {
        putInOrder(edits);
        const Column& column = table->column(index);
        const Requirements& r = column.requirements();
        if (r.mustBeUnique != Uniqueness::None)
            if (const auto row = repeatedRow(column, edits, r.mustBeUnique))
                return refused(uniquenessText(Severity::Required, r.mustBeUnique), index, *row);
        if (r.shouldBeUnique != Uniqueness::None)
            if (const auto row = repeatedRow(column, edits, r.shouldBeUnique))
                outcome.warnings.push_back({Severity::Recommended,
                                            std::string(uniquenessText(Severity::Recommended, r.shouldBeUnique)), id,
                                            table->spec().title, &column.spec(), *row});
    }
    if (byColumn.empty() && addedRows == 0)
        return outcome;

    if (addedRows > 0) {
        table->insertRows(rows, addedRows);
        record({TableChange::Kind::RowsInserted, id, 0, {{rows, addedRows}}, {}, {}, rows, rows + addedRows});
        if (table->rowCount() == table->spec().rows.required.most)
            outcome.notice = kMostRows;
    }
    for (const auto& [index, edits] : byColumn) {
        Column& column = table->column(index);
        std::vector<RowIndex> edited;
        edited.reserve(edits.size());
        for (const auto& [row, value] : edits)
            edited.push_back(row);
        RowRuns runs = runsOf(edited);
        const bool lacked = table->lacks(index);
        Bytes before = cellsOf(column, runs);
        for (const auto& [row, value] : edits)
            column.setValue(row, *value);
        Bytes after = cellsOf(column, runs);
        record({TableChange::Kind::Cells, id, index, std::move(runs), std::move(before), std::move(after),
                rows + addedRows, rows + addedRows, lacked});
        for (const RowIndex row : edited)
            table->cellEdited(index, row);
    }
    commit(std::move(description));
    return outcome;
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
    Parsed parsed = column.parse(text, context);
    if (!parsed.ok())
        return refused(parsed.refusal, index, row);
    return apply(id, 0, {{index, row, std::move(parsed.value)}}, context,
                 fmt::format("typing in {}", plainHeading(column.spec())));
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
            Parsed parsed = column.parse(text, context);
            if (!parsed.ok())
                return refused(parsed.refusal, columns[c], row);
            cells.push_back({columns[c], row, std::move(parsed.value)});
        }
    return apply(id, added, std::move(cells), context, "paste");
}

EditOutcome TableEdits::fill(ObjectId id, std::span<const std::size_t> columns, std::span<const RowIndex> rows,
                             std::string_view text, const TextContext& context, std::string_view description) {
    const Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    std::vector<CellEdit> cells;
    for (const std::size_t index : columns) {
        const Column& column = table->column(index);
        const Parsed parsed = column.parse(text, context);
        for (const RowIndex row : rows) {
            if (!column.editable())
                return refused(kNotEditable, index, row);
            if (row < table->rowCount() && text == column.editText(row, context))
                continue; // nothing changes, even where it could not be typed: a missing driver's name
            if (!parsed.ok())
                return refused(parsed.refusal, index, row);
            cells.push_back({index, row, parsed.value});
        }
    }
    return apply(id, 0, std::move(cells), context, std::string(description));
}

EditOutcome TableEdits::insertRows(ObjectId id, RowIndex at, std::size_t count) {
    Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    if (std::string why = lockOf(*table); !why.empty())
        return refused(why);
    if (std::string why = cannotInsert(*table, count); !why.empty())
        return refused(why);
    EditOutcome outcome;
    at = std::min(at, table->rowCount());
    table->insertRows(at, count);
    if (table->rowCount() == table->spec().rows.required.most)
        outcome.notice = kMostRows;
    record(
        {TableChange::Kind::RowsInserted, id, 0, {{at, count}}, {}, {}, table->rowCount() - count, table->rowCount()});
    commit(rowsText("adding", count));
    return outcome;
}

EditOutcome TableEdits::removeRows(ObjectId id, std::vector<RowIndex> rows) {
    Table* table = find(id);
    if (!table)
        return refused(kDamaged);
    if (std::string why = lockOf(*table); !why.empty())
        return refused(why);
    std::ranges::sort(rows);
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    if (!rows.empty() && rows.back() >= table->rowCount())
        return refused(kNotEditable);
    if (std::string why = cannotDelete(*table, {.wholeRows = rows}); !why.empty())
        return refused(why);
    RowRuns runs = runsOf(rows);
    Bytes removed = wholeRows(*table, runs);
    const RowIndex before = table->rowCount();
    table->removeRows(runs);
    record({TableChange::Kind::RowsRemoved, id, 0, std::move(runs), std::move(removed), {}, before, table->rowCount()});
    EditOutcome outcome;
    if (const std::uint32_t least = table->spec().rows.required.least; least > 0 && table->rowCount() == least)
        outcome.notice = kFewestRows;
    commit(rowsText("deleting", rows.size()));
    return outcome;
}

EditOutcome TableEdits::group(std::string_view description, const std::function<EditOutcome()>& work) {
    const std::size_t start = open_.size();
    ++depth_;
    EditOutcome outcome;
    try {
        outcome = work();
    } catch (...) {
        --depth_;
        rollBack(start);
        throw;
    }
    --depth_;
    if (!outcome.ok())
        rollBack(start);
    else
        commit(std::string(description));
    return outcome;
}

void TableEdits::record(Change change) { open_.push_back(std::move(change)); }

void TableEdits::commit(std::string description) {
    if (depth_ > 0 || open_.empty())
        return;
    for (; steps_.size() > done_; steps_.pop_back())
        size_ -= steps_.back().size();
    steps_.push_back({std::move(description), std::move(open_)});
    size_ += steps_.back().size();
    ++done_;
    open_.clear();
    forgetOldest();
    tellStep(steps_.back(), false);
}

void TableEdits::forgetOldest() {
    for (; steps_.size() > 1 && (steps_.size() > kMostSteps || size_ > kMostBytes); --done_) {
        size_ -= steps_.front().size();
        steps_.pop_front();
    }
}

std::size_t TableEdits::Step::size() const {
    std::size_t size = sizeof(Step) + description.capacity() + (changes.capacity() - changes.size()) * sizeof(Change);
    for (const Change& change : changes)
        size += sizeof(Change) + change.rows.capacity() * sizeof(RowRun) + change.before.capacity() +
                change.after.capacity();
    return size;
}

void TableEdits::rollBack(std::size_t size) {
    while (open_.size() > size) {
        swap(open_.back(), true);
        open_.pop_back();
    }
}

bool TableEdits::fits(const Step& step, bool undoing) const {
    // Within a step the changes follow from each other, so the first one of each table tells of its rows.
    std::unordered_set<ObjectId> known;
    for (std::size_t i = 0; i < step.changes.size(); ++i) {
        const Change& change = step.changes[undoing ? step.changes.size() - 1 - i : i];
        const Table* table = find(change.table);
        const bool ofCells = change.kind == TableChange::Kind::Cells;
        if (!table || !(ofCells ? table->columnLock(table->column(change.column)) : table->rowLock()).empty())
            return false;
        if (!known.insert(change.table).second)
            continue;
        if (table->rowCount() != (undoing ? change.rowsAfter : change.rowsBefore))
            return false;
    }
    return true;
}

void TableEdits::swap(const Change& change, bool undoing) {
    Table* table = find(change.table);
    if (change.kind == TableChange::Kind::Cells) {
        ByteReader in(undoing ? change.before : change.after);
        readCells(table->column(change.column), in, change.rows);
        if (undoing && change.madeColumn)
            table->dropColumn(change.column);
        if (!undoing) {
            for (const RowRun& run : change.rows)
                for (RowIndex row = run.first; row < run.end(); ++row)
                    table->cellEdited(change.column, row);
            return;
        }
        for (auto run = change.rows.rbegin(); run != change.rows.rend(); ++run)
            for (RowIndex row = run->end(); row-- > run->first;)
                table->cellEditUndone(change.column, row);
    } else if ((change.kind == TableChange::Kind::RowsInserted) == undoing) {
        table->removeRows(change.rows);
    } else {
        table->insertRows(change.rows);
        ByteReader in(change.before);
        if (!change.before.empty())
            for (Column* column : columnsWithCells(*table))
                readCells(*column, in, change.rows);
    }
}

std::string_view TableEdits::undoDescription() const {
    return canUndo() ? std::string_view(steps_[done_ - 1].description) : std::string_view();
}

std::string_view TableEdits::redoDescription() const {
    return canRedo() ? std::string_view(steps_[done_].description) : std::string_view();
}

void TableEdits::undo() {
    assert(depth_ == 0);
    if (!canUndo())
        return;
    if (!fits(steps_[done_ - 1], true))
        return clear(); // rows have moved by other means
    const Step& step = steps_[--done_];
    for (std::size_t i = step.changes.size(); i-- > 0;)
        swap(step.changes[i], true);
    tellStep(step, true);
}

void TableEdits::redo() {
    assert(depth_ == 0);
    if (!canRedo())
        return;
    if (!fits(steps_[done_], false))
        return clear();
    const Step& step = steps_[done_++];
    for (const Change& change : step.changes)
        swap(change, false);
    tellStep(step, false);
}

void TableEdits::clear() {
    assert(depth_ == 0);
    steps_.clear();
    done_ = size_ = 0;
    tell({});
}

void TableEdits::addListener(TableEditsListener& listener) { listeners_.push_back(&listener); }

void TableEdits::removeListener(TableEditsListener& listener) {
    if (telling_ == 0)
        std::erase(listeners_, &listener);
    else // the places of the others must not move under the loop in tell()
        std::ranges::replace(listeners_, &listener, nullptr);
}

void TableEdits::tellStep(const Step& step, bool undone) {
    using Kind = TableChange::Kind;
    std::vector<TableChange> changes;
    for (std::size_t i = 0; i < step.changes.size(); ++i) {
        const Change& change = step.changes[undone ? step.changes.size() - 1 - i : i];
        if (change.kind != Kind::Cells) {
            const bool inserted = (change.kind == Kind::RowsInserted) != undone;
            changes.push_back({inserted ? Kind::RowsInserted : Kind::RowsRemoved, change.table, change.rows});
            continue;
        }
        // Cells that change one after another are told as the one block that holds them all.
        if (changes.empty() || changes.back().kind != Kind::Cells || changes.back().table != change.table)
            changes.push_back({Kind::Cells, change.table, {change.rows.front()}, change.column, change.column});
        TableChange& block = changes.back();
        RowRun& rows = block.rows.front();
        const RowIndex end = std::max(rows.end(), change.rows.back().end());
        rows.first = std::min(rows.first, change.rows.front().first);
        rows.count = end - rows.first;
        block.firstColumn = std::min(block.firstColumn, change.column);
        block.lastColumn = std::max(block.lastColumn, change.column);
    }
    tell(changes);
}

void TableEdits::tell(std::span<const TableChange> changes) {
    ++telling_;
    for (std::size_t i = 0; i < listeners_.size(); ++i) {
        for (const TableChange& change : changes)
            if (listeners_[i])
                listeners_[i]->tableChanged(change);
        if (listeners_[i])
            listeners_[i]->historyChanged();
    }
    if (--telling_ == 0)
        std::erase(listeners_, nullptr);
}

std::string cannotDelete(const Table& table, const DeleteSelection& selection) {
    if (table.rowCount() == 0)
        return "Unable to delete. This spreadsheet is empty.";
    if (selection.wholeRows.empty() && !selection.otherCells)
        return "Unable to delete. No rows or cells have been selected.";
    if (selection.onReadOnlyCell || !table.spec().rows.editable)
        return "Unable to delete. This cell is read-only and cannot be edited or deleted.";
    if (selection.otherCells)
        return "Unable to delete. Only entire rows can be deleted.";
    if (table.rowCount() - selection.wholeRows.size() < table.spec().rows.required.least)
        return "Unable to delete. This spreadsheet already contains\nthe minimum number of allowable rows.";
    return std::string(table.rowLock());
}

std::string cannotInsert(const Table& table, std::size_t count) {
    if (!table.spec().rows.editable)
        return std::string(kNotEditable);
    const CountRange& allowed = table.spec().rows.required;
    if (allowed.most != CountRange::kUnlimited &&
        count > allowed.most - std::min<std::size_t>(allowed.most, table.rowCount()))
        return std::string(kMostRows);
    return std::string(table.rowLock());
}

} // namespace quobrix
