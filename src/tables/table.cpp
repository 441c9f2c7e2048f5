#include "tables/table.h"

#include "document/object_store.h"

#include <fmt/format.h>

#include <cassert>

namespace quobrix {

RowIndex Table::rowCount() const {
    if (!rowsVerified_)
        verifyRows();
    return rows_;
}

void Table::verifyRows() const {
    rowsVerified_ = true; // load() below asks again
    if (rows_ == 0)
        return;
    for (std::size_t i = 0; i < columnCount(); ++i)
        if (const Column& candidate = load(i); candidate.stored() && candidate.storedRows() == rows_)
            return;
    if (store())
        store()->noteDamage(id(), type().id(), "no column has as many rows as the table says");
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
    if (entry.column)
        return *entry.column;
    const PersistentType& type = spec().column(index);
    PersistentObject* object = store() && entry.id != kNoObject ? store()->find(entry.id) : nullptr;
    if (!object && store() && entry.id != kNoObject && !store()->unreadable(entry.id))
        store()->noteBadReference(
            entry.id, type.id(),
            fmt::format("there is no such object, although {} names it as its {}", spec().type.name, type.name));
    if (object && (object->type().id() != type.id() || static_cast<Column*>(object)->table_)) {
        store()->noteBadReference(entry.id, type.id(),
                                  fmt::format("{} names a {} as its {}, which belongs elsewhere", spec().type.name,
                                              object->type().name, type.name));
        object = nullptr;
    }
    if (object) {
        Column* column = static_cast<Column*>(object);
        if (column->stored() && column->storedRows() != rows_) {
            store()->noteDamage(entry.id, type.id(),
                                fmt::format("{} has {} rows, its table {}", type.name, column->storedRows(), rows_));
        } else {
            entry.column = column;
            column->table_ = const_cast<Table*>(this);
            return *column;
        }
    }
    entry.unreadable = entry.id != kNoObject;
    standIn(index);
    return *entry.column;
}

void Table::standIn(std::size_t index) const {
    Entry& entry = entries_[index];
    entry.standIn.reset(static_cast<Column*>(spec().column(index).create().release()));
    entry.column = entry.standIn.get();
    entry.column->table_ = const_cast<Table*>(this);
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
        if (entries_[i].unreadable)
            result.push_back(i);
    }
    return result;
}

std::vector<Reference> Table::references() const {
    std::vector<Reference> result;
    for (std::size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i].id != kNoObject)
            result.push_back({entries_[i].id, spec().columns[i]->id()});
    result.insert(result.end(), foreign_.begin(), foreign_.end());
    return result;
}

void Table::makeWritable() {
    const RowIndex rows = rowCount();
    for (std::size_t i = 0; i < columnCount(); ++i) {
        load(i);
        Entry& entry = entries_[i];
        if (!entry.standIn || i >= spec().columns.size())
            continue;
        if (store()) {
            Column& fresh = static_cast<Column&>(store()->create(*spec().columns[i]));
            fresh.table_ = this;
            entry.id = fresh.id();
            entry.column = &fresh;
            entry.standIn.reset();
            setModified();
        }
        if (entry.column->stored() && entry.column->storedRows() < rows)
            entry.column->insertRows(0, rows - entry.column->storedRows());
    }
}

void Table::insertRows(std::span<const RowRun> runs) {
    makeWritable();
    for (const Entry& entry : entries_)
        entry.column->insertRows(runs);
    rows_ += countRows(runs);
    setModified();
    rowsChanged();
}

void Table::removeRows(std::span<const RowRun> runs) {
    makeWritable();
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
    for (std::size_t i = 0; i < spec().columns.size(); ++i) {
        Column& column = static_cast<Column&>(store()->create(*spec().columns[i]));
        column.table_ = this;
        entries_[i].id = column.id();
        entries_[i].column = &column;
    }
}

void Table::deleting() {
    for (std::size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i].id != kNoObject && (load(i), !entries_[i].standIn)) // not what belongs elsewhere
            store()->destroy(entries_[i].id);
}

void Table::write(ByteWriter& out) const { TableContent{static_cast<std::uint32_t>(rows_), references()}.write(out); }

bool Table::read(ByteReader& in, std::uint8_t) {
    TableContent content;
    if (!content.read(in))
        return false;
    rows_ = content.rows;
    entries_.clear();
    entries_.resize(columnCount());
    for (const Reference& column : content.columns) {
        std::size_t i = 0;
        while (i < spec().columns.size() && spec().columns[i]->id() != column.typeId)
            ++i;
        if (i == spec().columns.size())
            foreign_.push_back(column);
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

} // namespace quobrix
