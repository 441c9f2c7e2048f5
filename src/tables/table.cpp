#include "tables/table.h"

#include "document/object_store.h"
#include "texts/text.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <numeric>
#include <stdexcept>

namespace quobrix {
namespace {

constexpr SourceText kColumnUnreadable("This cannot be edited because its column could not be read from the file.\n"
                                       "The file keeps it; \"quobrix-cli check\" says what is wrong with it.");
constexpr SourceText kColumnOfLaterVersion(
    "This cannot be edited because a later version of this software has changed the columns of this table.\n"
    "Use that version to edit it.");
constexpr SourceText kRowsBesideUnreadable(
    "Rows can be neither added nor deleted here because a column of this table could not be read from the file.\n"
    "\"quobrix-cli check --repair\" makes a sound file of what can be read.");
constexpr SourceText kRowsOfLaterVersion(
    "Rows can be neither added nor deleted here because a later version of this software has added a column.\n"
    "Use that version to do so.");

} // namespace

/// While rows move, a column that is only there for what the file lacks stays so.
struct Table::MovingRows {
    explicit MovingRows(const Table& of) : table(of) { table.movingRows_ = true; }
    MovingRows(const MovingRows&) = delete;
    MovingRows& operator=(const MovingRows&) = delete;
    ~MovingRows() { table.movingRows_ = false; }
    const Table& table;
};

RowIndex Table::rowCount() const {
    if (!rowsVerified_)
        verifyRows();
    return rowsVerified_ ? rows_ : 0;
}

void Table::verifyRows() const {
    bool failing = false;
    for (std::size_t i = 0; i < spec().columns.size() && rows_ > 0; ++i) {
        if (entries_[i].id == kNoObject)
            continue;
        if (const Column& candidate = load(i); candidate.stored() && candidate.storedRows() == rows_) {
            rowsVerified_ = true;
            for (const Entry& entry : entries_)
                if (entry.standIn)
                    followRows(*entry.column);
            return;
        }
        failing = failing || entries_[i].failing;
    }
    if (failing) // who knows
        return;
    rowsVerified_ = true;
    if (rows_ > 0 && store())
        store()->noteDamage(id(), type().id(), text(TextId::NoColumnMatchesRowCount));
    rows_ = 0;
}

Column& Table::column(std::size_t index) const {
    if (!rowsVerified_)
        verifyRows();
    return load(index);
}

Column& Table::load(std::size_t index) const {
    if (entries_.size() < columnCount())
        entries_.resize(columnCount());
    Entry& entry = entries_[index];
    // Each cell that is painted may ask for its column, and a failing disk takes seconds to say no: so it is asked
    // again the next time, and then less and less often. unreadableColumns() always asks.
    if (!entry.column || (entry.failing && std::has_single_bit(++entry.asked)))
        fetch(index);
    return *entry.column;
}

void Table::fetch(std::size_t index) const {
    Entry& entry = entries_[index];
    const PersistentType& type = spec().column(index);
    PersistentObject* object = store() && entry.id != kNoObject ? store()->find(entry.id) : nullptr;
    entry.failing = store() && store()->failing(entry.id);
    if (!object && store() && entry.id != kNoObject && !store()->unreadable(entry.id))
        store()->noteBadReference(entry.id, type.id(), text(TextId::NamedObjectMissing, spec().type.name, type.name));
    if (object && (object->type().id() != type.id() || static_cast<Column*>(object)->table_)) {
        store()->noteBadReference(
            entry.id, type.id(),
            text(TextId::NamedObjectBelongsElsewhere, spec().type.name, object->type().name, type.name));
        object = nullptr;
    }
    if (object) {
        Column* column = static_cast<Column*>(object);
        if (column->stored() && column->storedRows() != rows_) {
            store()->noteDamage(entry.id, type.id(),
                                text(TextId::ColumnContradictsTable, type.name, column->storedRows(), rows_));
        } else if (entry.standIn) { // which spreadsheets show
            store()->substitute(entry.id, std::move(entry.standIn));
            return;
        } else {
            entry.column = column;
            column->table_ = const_cast<Table*>(this);
            return;
        }
    }
    if (!entry.column)
        standIn(index);
}

void Table::standIn(std::size_t index) const {
    Entry& entry = entries_[index];
    entry.standIn.reset(static_cast<Column*>(spec().column(index).create().release()));
    entry.column = entry.standIn.get();
    entry.column->table_ = const_cast<Table*>(this);
    if (rowsVerified_)
        followRows(*entry.column);
}

/// A column that the file lacks gets as many rows as the others have.
void Table::followRows(Column& column) const {
    const auto entry = std::ranges::find(entries_, &column, &Entry::column);
    if (entry->id != kNoObject || !column.stored())
        return;
    const MovingRows moving(*this);
    column.insertRows(0, rows_ - column.storedRows());
}

Column& Table::columnOf(const PersistentType& type) const {
    for (std::size_t i = 0; i < columnCount(); ++i)
        if (&spec().column(i) == &type)
            return column(i);
    assert(false && "the table has no such column");
    std::abort();
}

std::size_t Table::indexOf(std::string_view key) const {
    for (std::size_t i = 0; i < columnCount(); ++i)
        if (column(i).spec().key == key)
            return i;
    return columnCount();
}

std::vector<std::size_t> Table::unreadableColumns() const {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < columnCount(); ++i) {
        column(i);
        if (entries_[i].failing)
            fetch(i);
        if (entries_[i].unreadable())
            result.push_back(i);
    }
    return result;
}

bool Table::lacks(std::size_t index) const {
    column(index);
    return store() && index < spec().columns.size() && entries_[index].id == kNoObject;
}

SourceText Table::columnLock(const Column& column) const {
    if (!store() || column.store())
        return {};
    const auto entry = std::ranges::find(entries_, &column, &Entry::column);
    if (entry == entries_.end() || entry->unreadable())
        return kColumnUnreadable;
    // What it lacks may be the column whose class is not known.
    return hasForeign_ ? kColumnOfLaterVersion : SourceText();
}

SourceText Table::rowLock() const {
    for (const std::size_t index : unreadableColumns())
        if (entries_[index].column->stored())
            return kRowsBesideUnreadable;
    return hasForeign_ ? kRowsOfLaterVersion : SourceText();
}

bool Table::replaceable(RowIndex row) const {
    for (std::size_t i = 0; i < columnCount(); ++i)
        if (!column(i).replaceable(row))
            return false;
    return true;
}

/// STAND_IN has been changed, or comes back under the id that it had (AGAIN).
void Table::takeIn(const Column& standIn, ObjectId again) {
    if (!store() || movingRows_)
        return;
    const auto entry = std::ranges::find(entries_, &standIn, &Entry::column);
    const auto index = static_cast<std::size_t>(entry - entries_.begin());
    if (index >= spec().columns.size())
        return; // one that is computed
    if (const SourceText lock = columnLock(standIn); !lock.empty())
        throw std::logic_error(std::string(lock.english()));
    columns_.reserve(spec().columns.size());
    std::unique_ptr<PersistentObject> object = std::move(entry->standIn);
    try {
        if (again == kNoObject)
            store()->adopt(std::move(object));
        else
            store()->adoptAgain(again, std::move(object));
    } catch (...) {
        entry->standIn.reset(static_cast<Column*>(object.release()));
        throw;
    }
    entry->id = entry->column->id();
    columns_.push_back({entry->id, spec().columns[index]->id()});
    setModified();
}

void Table::dropColumn(std::size_t index) {
    Entry& entry = entries_[index];
    ByteWriter cells, none;
    entry.column->write(cells);
    const auto empty = spec().columns[index]->create();
    static_cast<Column&>(*empty).insertRows(0, rows_);
    empty->write(none);
    if (entry.id == kNoObject || cells.view() != none.view())
        return;
    entry.standIn.reset(static_cast<Column*>(store()->disown(entry.id).release()));
    std::erase_if(columns_, [&](const Reference& each) { return each.id == entry.id; });
    entry.id = kNoObject;
    setModified();
}

void Table::restoreColumn(std::size_t index, ObjectId id) {
    if (lacks(index))
        takeIn(column(index), id);
}

/// Loads all columns as well.
void Table::checkRowLock() const {
    if (const SourceText lock = rowLock(); !lock.empty())
        throw std::logic_error(std::string(lock.english()));
}

void Table::insertRows(std::span<const RowRun> runs) {
    checkRowLock();
    const MovingRows moving(*this);
    std::size_t done = 0;
    try {
        for (; done < entries_.size(); ++done)
            entries_[done].column->insertRows(runs);
    } catch (...) {
        while (done-- > 0)
            entries_[done].column->removeRows(runs);
        throw;
    }
    rows_ += countRows(runs);
    setModified();
    rowsChanged();
}

void Table::removeRows(std::span<const RowRun> runs) {
    checkRowLock();
    deleteOwned(runs);
    removeBareRows(runs);
}

void Table::deleteOwned(std::span<const RowRun> runs) {
    for (std::size_t i = 0; i < columnCount(); ++i)
        column(i).deleteOwned(runs);
}

void Table::removeBareRows(std::span<const RowRun> runs) {
    checkRowLock();
    const MovingRows moving(*this);
    for (const Entry& entry : entries_)
        entry.column->removeRows(runs);
    rows_ -= countRows(runs);
    setModified();
    rowsChanged();
}

void Table::insertRows(RowIndex at, std::size_t count) {
    const RowRun run{at, count};
    insertRows(std::span(&run, 1));
}

void Table::removeRows(RowIndex at, std::size_t count) {
    const RowRun run{at, count};
    removeRows(std::span(&run, 1));
}

void Table::created() {
    entries_.clear();
    entries_.resize(columnCount());
    columns_.clear();
    for (std::size_t i = 0; i < spec().columns.size(); ++i) {
        Column& column = static_cast<Column&>(store()->create(*spec().columns[i]));
        column.table_ = this;
        entries_[i].id = column.id();
        entries_[i].column = &column;
        columns_.push_back({column.id(), column.type().id()});
    }
}

void Table::deleting() {
    for (std::size_t i = 0; i < spec().columns.size(); ++i)
        if (entries_[i].id != kNoObject && (load(i), !entries_[i].standIn)) // not what belongs elsewhere
            store()->destroy(entries_[i].id);
    for (const Reference& column : columns_)
        store()->destroyForeign(column);
}

void Table::write(ByteWriter& out) const { TableContent{static_cast<std::uint32_t>(rows_), columns_}.write(out); }

bool Table::read(ByteReader& in, std::uint8_t) {
    TableContent content;
    if (!content.read(in))
        return false;
    rows_ = content.rows;
    columns_ = std::move(content.columns);
    entries_.clear();
    entries_.resize(columnCount());
    for (const Reference& column : columns_) {
        std::size_t i = 0;
        while (i < spec().columns.size() && spec().columns[i]->id() != column.typeId)
            ++i;
        if (i == spec().columns.size())
            hasForeign_ = true;
        else if (entries_[i].id == kNoObject)
            entries_[i].id = column.id;
        else
            return false; // one column twice
    }
    rowsVerified_ = false;
    return true;
}

void TableContent::write(ByteWriter& out) const {
    out.u32(rows);
    out.u32(static_cast<std::uint32_t>(columns.size()));
    for (const Reference& column : columns) {
        out.u32(column.typeId);
        out.u32(column.id);
    }
}

bool TableContent::read(ByteReader& in) {
    rows = in.u32();
    columns.resize(in.count(8));
    for (Reference& column : columns) {
        column.typeId = in.u32();
        column.id = in.u32();
    }
    return in.complete();
}

std::vector<RowIndex> allRows(const Table& table) {
    std::vector<RowIndex> rows(table.rowCount());
    std::iota(rows.begin(), rows.end(), RowIndex{0});
    return rows;
}

} // namespace quobrix
