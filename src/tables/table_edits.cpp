#include "tables/table_edits.h"

#include "document/document.h"
#include "tables/tabbed_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <iterator>
#include <ranges>
#include <unordered_map>
#include <unordered_set>

namespace quobrix {

const std::string_view kIncompatiblePaste =
    "The clipboard contains data which cannot be pasted.\nIt's in a format that's incompatible with this spreadsheet.";

namespace {

constexpr std::string_view kNotEditable = "This is not editable; see Help for more information.";
constexpr std::string_view kDamaged = "This is not editable because a part of this file is damaged.";
constexpr std::string_view kPartsUnreadable =
    "Unable to delete. A part of these rows could not be read from the file, which keeps it.\n"
    "\"quobrix-cli check --repair\" makes a sound file of what can be read.";
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

/// While it is there the history records what comes and goes.
class TableEdits::Recording {
public:
    explicit Recording(TableEdits& edits) : edits_(edits), outer_(edits.groupStart_) {
        edits_.groupStart_ = edits_.open_.size();
        if (++edits_.depth_ == 1 && edits_.store())
            edits_.store()->setJournal(&edits_);
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    ~Recording() {
        edits_.groupStart_ = outer_;
        if (--edits_.depth_ == 0 && edits_.store())
            edits_.store()->setJournal(nullptr);
    }

private:
    TableEdits& edits_;
    std::size_t outer_;
};

ObjectStore* TableEdits::store() const { return document_ ? &document_->store() : nullptr; }

Table* TableEdits::find(ObjectId table) const {
    return document_ ? dynamic_cast<Table*>(document_->store().find(table)) : alone_;
}

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
            finding.title = text(table->spec().title);
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
                                            text(table->spec().title), &column.spec(), *row});
    }
    if (byColumn.empty() && addedRows == 0)
        return outcome;

    const EditOutcome done = step(std::move(description), [&] { return setCells(*table, addedRows, byColumn); });
    outcome.notice = done.notice;
    return outcome;
}

EditOutcome TableEdits::setCells(Table& table, std::size_t addedRows, const std::map<std::size_t, NewValues>& values) {
    EditOutcome outcome;
    const RowIndex rows = table.rowCount();
    if (addedRows > 0) {
        addRows(table, {{rows, addedRows}}, [] {});
        if (table.rowCount() == table.spec().rows.required.most)
            outcome.notice = kMostRows;
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
    at = std::min(at, table->rowCount());
    return step(rowsText("adding", count), [&] {
        addRows(*table, {{at, count}}, [] {});
        EditOutcome outcome;
        if (table->rowCount() == table->spec().rows.required.most)
            outcome.notice = kMostRows;
        return outcome;
    });
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
    if (!std::ranges::all_of(rows, [&](RowIndex row) { return table->replaceable(row); }))
        return refused(kPartsUnreadable);
    return step(rowsText("deleting", rows.size()), [&] {
        Change change{.kind = Kind::RowsRemoved, .table = id, .rows = runsOf(rows), .rowsBefore = table->rowCount()};
        change.rowsAfter = change.rowsBefore - rows.size();
        change.before = wholeRows(*table, change.rows);
        table->deleteOwned(change.rows);
        makeRoom();
        table->removeBareRows(change.rows);
        open_.push_back(std::move(change));
        EditOutcome outcome;
        if (const std::uint32_t least = table->spec().rows.required.least; least > 0 && table->rowCount() == least)
            outcome.notice = kFewestRows;
        return outcome;
    });
}

EditOutcome TableEdits::group(std::string_view description, const std::function<EditOutcome()>& work) {
    return step(std::string(description), work);
}

EditOutcome TableEdits::step(std::string description, const std::function<EditOutcome()>& work) {
    const std::size_t start = open_.size(), steps = steps_.size();
    EditOutcome outcome;
    std::vector<TableChange> changes;
    {
        const Recording recording(*this);
        try {
            outcome = work();
            if (!outcome.ok())
                rollBack(start);
            else if (depth_ == 1)
                changes = commit(std::move(description));
        } catch (...) {
            rollBack(start);
            throw;
        }
    }
    if (!changes.empty() || (depth_ == 0 && steps_.size() < steps))
        tell(changes);
    return outcome;
}

void TableEdits::objectAdopted(ObjectId id, const PersistentObject& object) {
    const auto& column = static_cast<const Column&>(object);
    const Table& table = *column.table();
    makeRoom();
    open_.push_back({.kind = Kind::ColumnMade,
                     .table = table.id(),
                     .column = table.indexOf(column.spec().key),
                     .rowsBefore = table.rowCount(),
                     .rowsAfter = table.rowCount(),
                     .objects = {id}});
}

void TableEdits::recordObject(Kind kind, ObjectId id) {
    if (open_.size() == groupStart_ || open_.back().kind != kind)
        open_.push_back({.kind = kind});
    open_.back().objects.push_back(id);
}

/// Takes the memory for one more change.
void TableEdits::makeRoom() {
    if (open_.size() == open_.capacity())
        open_.reserve(std::max<std::size_t>(4, open_.size() * 2));
}

/// Makes what is recorded a step. What listeners are to be told of it.
std::vector<TableChange> TableEdits::commit(std::string description) {
    if (open_.empty())
        return {};
    std::vector<TableChange> changes = changesOf(open_, false);
    forgetUndone();
    steps_.emplace_back();
    Step& step = steps_.back();
    step.description = std::move(description);
    step.changes = std::exchange(open_, {});
    groupStart_ = 0;
    ++done_;
    measure(step);
    forgetOldest();
    return changes;
}

void TableEdits::forgetUndone() {
    for (; steps_.size() > done_; steps_.pop_back()) {
        forget(steps_.back(), false);
        size_ -= steps_.back().size;
    }
}

void TableEdits::forgetOldest() {
    for (; steps_.size() > 1 && done_ > 0 && (steps_.size() > kMostSteps || size_ > kMostBytes); --done_) {
        forget(steps_.front(), true);
        size_ -= steps_.front().size;
        steps_.pop_front();
    }
}

/// Lets go of what STEP keeps aside: of a step that is DONE what it has deleted, of one that is undone what it had
/// made. What it deals with besides may be kept by another step.
void TableEdits::forget(const Step& step, bool done) {
    if (!store())
        return;
    std::vector<const Change*> changes;
    for (const Change& change : step.changes)
        if (!change.objects.empty() && (change.kind == Kind::ObjectsSetAside) == done)
            changes.push_back(&change);
    if (done)
        for (const Change* change : changes)
            std::ranges::for_each(change->objects, [&](ObjectId id) { store()->forget(id); });
    else // in the order in which they were set aside
        for (auto change = changes.rbegin(); change != changes.rend(); ++change)
            std::for_each((*change)->objects.rbegin(), (*change)->objects.rend(),
                          [&](ObjectId id) { store()->forget(id); });
}

/// Counts the memory that STEP takes now.
void TableEdits::measure(Step& step) {
    size_ -= step.size;
    step.size = sizeOf(step);
    size_ += step.size;
}

std::size_t TableEdits::sizeOf(const Step& step) const {
    std::size_t size = sizeof(Step) + step.description.capacity() + step.changes.capacity() * sizeof(Change);
    for (const Change& change : step.changes) {
        size += change.rows.capacity() * sizeof(RowRun) + change.before.capacity() + change.after.capacity() +
                change.objects.capacity() * sizeof(ObjectId);
        for (const ObjectId id : change.objects)
            size += store() ? store()->asideSize(id) : 0;
    }
    return size;
}

void TableEdits::rollBack(std::size_t size) {
    while (open_.size() > size) {
        Step last;
        last.changes.push_back(std::move(open_.back()));
        open_.pop_back();
        swap(last.changes.front(), true);
        forget(last, false);
    }
}

bool TableEdits::fits(const Step& step, bool undoing) const {
    // Within a step the changes follow from each other, so the first one of each table tells of its rows. Tables that
    // come with the step are not there yet.
    std::unordered_set<ObjectId> known, coming;
    for (std::size_t i = 0; i < step.changes.size(); ++i) {
        const Change& change = step.changes[undoing ? step.changes.size() - 1 - i : i];
        if (change.kind == Kind::ObjectsMade || change.kind == Kind::ObjectsSetAside) {
            const bool come = (change.kind == Kind::ObjectsMade) != undoing;
            for (const ObjectId id : change.objects)
                if (come)
                    coming.insert(id);
                else if (!coming.contains(id) && !store()->find(id))
                    return false;
            continue;
        }
        if (coming.contains(change.table))
            continue;
        const Table* table = find(change.table);
        const bool ofCells = change.kind == Kind::Cells;
        if (!table || (change.kind != Kind::ColumnMade &&
                       !(ofCells ? table->columnLock(table->column(change.column)) : table->rowLock()).empty()))
            return false;
        if (change.kind != Kind::ColumnMade && known.insert(change.table).second &&
            table->rowCount() != (undoing ? change.rowsAfter : change.rowsBefore))
            return false;
    }
    return true;
}

/// All changes of STEP, or none if that throws.
void TableEdits::swap(Step& step, bool undoing) {
    std::vector<Change>& changes = step.changes;
    const auto at = [&](std::size_t i) -> Change& { return changes[undoing ? changes.size() - 1 - i : i]; };
    std::size_t i = 0;
    try {
        for (; i < changes.size(); ++i)
            swap(at(i), undoing);
    } catch (...) {
        while (i-- > 0)
            swap(at(i), !undoing);
        throw;
    }
}

void TableEdits::swapObjects(const Change& change, bool undoing) {
    const bool made = change.kind == Kind::ObjectsMade;
    const bool come = made != undoing;
    const auto move = [&](ObjectId id, bool puts) {
        if (puts)
            store()->putBack(id);
        else
            store()->setAside(id, made ? ObjectStore::Aside::Unmade : ObjectStore::Aside::Deleted);
    };
    const std::vector<ObjectId>& ids = change.objects;
    const auto at = [&](std::size_t i) { return ids[undoing ? ids.size() - 1 - i : i]; };
    std::size_t i = 0;
    try {
        for (; i < ids.size(); ++i)
            move(at(i), come);
    } catch (...) {
        while (i-- > 0)
            move(at(i), !come);
        throw;
    }
}

void TableEdits::swap(Change& change, bool undoing) {
    if (change.kind == Kind::ObjectsMade || change.kind == Kind::ObjectsSetAside)
        return swapObjects(change, undoing);
    Table* table = find(change.table);
    if (change.kind == Kind::ColumnMade) {
        if (undoing)
            table->dropColumn(change.column);
        else
            table->restoreColumn(change.column, change.objects.front());
    } else if (change.kind == Kind::Cells) {
        Column& column = table->column(change.column);
        try {
            ByteReader in(undoing ? change.before : change.after);
            readCells(column, in, change.rows);
        } catch (...) {
            ByteReader in(undoing ? change.after : change.before);
            readCells(column, in, change.rows);
            throw;
        }
        if (!undoing)
            for (const RowRun& run : change.rows)
                for (RowIndex row = run.first; row < run.end(); ++row)
                    table->cellEdited(change.column, row);
        else
            for (auto run = change.rows.rbegin(); run != change.rows.rend(); ++run)
                for (RowIndex row = run->end(); row-- > run->first;)
                    table->cellEditUndone(change.column, row);
    } else if ((change.kind == Kind::RowsInserted) == undoing) {
        change.before = wholeRows(*table, change.rows);
        table->removeBareRows(change.rows);
    } else {
        table->insertRows(change.rows);
        try {
            ByteReader in(change.before);
            for (Column* column : columnsWithCells(*table))
                readCells(*column, in, change.rows);
        } catch (...) {
            table->removeBareRows(change.rows);
            throw;
        }
        change.before = {};
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
    Step& step = steps_[done_ - 1];
    if (!fits(step, true))
        return clear(); // rows have moved by other means
    const std::vector<TableChange> changes = changesOf(step.changes, true);
    swap(step, true);
    --done_;
    measure(step);
    forgetOldest();
    tell(changes);
}

void TableEdits::redo() {
    assert(depth_ == 0);
    if (!canRedo())
        return;
    Step& step = steps_[done_];
    if (!fits(step, false))
        return clear();
    const std::vector<TableChange> changes = changesOf(step.changes, false);
    swap(step, false);
    ++done_;
    measure(step);
    forgetOldest();
    tell(changes);
}

void TableEdits::clear() {
    assert(depth_ == 0);
    forgetUndone();
    for (; !steps_.empty(); steps_.pop_front())
        forget(steps_.front(), true);
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

std::vector<TableChange> TableEdits::changesOf(std::span<const Change> done, bool undone) {
    using Told = TableChange::Kind;
    std::vector<TableChange> changes;
    bool objects = false;
    for (std::size_t i = 0; i < done.size(); ++i) {
        const Change& change = done[undone ? done.size() - 1 - i : i];
        if (change.kind == Kind::RowsInserted || change.kind == Kind::RowsRemoved) {
            const bool inserted = (change.kind == Kind::RowsInserted) != undone;
            changes.push_back({inserted ? Told::RowsInserted : Told::RowsRemoved, change.table, change.rows});
            continue;
        }
        objects = objects || change.kind == Kind::ObjectsMade || change.kind == Kind::ObjectsSetAside;
        if (change.kind != Kind::Cells)
            continue;
        // Cells that change one after another are told as the one block that holds them all.
        if (changes.empty() || changes.back().kind != Told::Cells || changes.back().table != change.table)
            changes.push_back({Told::Cells, change.table, {change.rows.front()}, change.column, change.column});
        TableChange& block = changes.back();
        RowRun& rows = block.rows.front();
        const RowIndex end = std::max(rows.end(), change.rows.back().end());
        rows.first = std::min(rows.first, change.rows.front().first);
        rows.count = end - rows.first;
        block.firstColumn = std::min(block.firstColumn, change.column);
        block.lastColumn = std::max(block.lastColumn, change.column);
    }
    if (objects)
        changes.push_back({.kind = Told::Objects});
    return changes;
}

void TableEdits::tell(std::span<const TableChange> changes) {
    ++telling_;
    for (const TableChange& change : changes)
        for (std::size_t i = 0; i < listeners_.size(); ++i)
            if (listeners_[i])
                listeners_[i]->tableChanged(change);
    for (std::size_t i = 0; i < listeners_.size(); ++i)
        if (listeners_[i])
            listeners_[i]->historyChanged();
    if (--telling_ == 0)
        std::erase(listeners_, nullptr);
}

std::string cannotDelete(const Table& table, const DeleteSelection& selection) {
    if (table.rowCount() == 0)
        return "Unable to delete. This spreadsheet is empty.";
    if (selection.wholeRows.empty() && !selection.otherCells)
        return "Unable to delete. No rows or cells have been selected.";
    if (selection.onReadOnlyCell || !(table.spec().rows.editable || table.spec().rows.removable))
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
