#include "tables/columns.h"

#include "tables/table.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <stdexcept>

namespace quobrix {

RowIndex Column::rowCount() const { return table_ ? table_->rowCount() : storedRows(); }

ShownText Column::lockedBecause(RowIndex row) const {
    const SourceText lockedColumn = table_ ? table_->columnLock(*this) : SourceText();
    return lockedColumn.empty() ? lock(row) : quobrix::text(lockedColumn);
}

void Column::changedAlone() {
    if (table_)
        table_->takeIn(*this);
}

std::string Column::text(RowIndex row, const TextContext& context) const {
    TextBuffer buffer;
    return std::string(textView(row, context, buffer));
}

void Column::insertRows(RowIndex at, std::size_t count) {
    const RowRun run{at, count};
    insertRows(std::span(&run, 1));
}

ShownText plainHeading(const ColumnSpec& spec) {
    std::string result;
    for (const char c : text(spec.heading)) {
        if (c == '\n' || c == ' ') {
            if (!result.empty() && result.back() != ' ')
                result += ' ';
        } else if (c != '&') {
            result += c;
        }
    }
    while (!result.empty() && result.back() == ' ')
        result.pop_back();
    return ShownText::asItIs(std::move(result));
}

Value IntegerColumn::value(RowIndex row) const {
    return has(row) ? Value(static_cast<std::int64_t>(at(row))) : Value();
}

std::string_view IntegerColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return has(row) ? context.units.formatInteger(at(row), buffer.figure) : "";
}

Value RealColumn::value(RowIndex row) const { return has(row) ? Value(at(row)) : Value(); }

std::string_view RealColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return has(row) ? context.units.formatValueWithUnits(unitOf(row), at(row), buffer.figure) : "";
}

Value TextColumn::value(RowIndex row) const { return at(row); }

Value DateTimeColumn::value(RowIndex row) const {
    return has(row) ? Value(static_cast<std::int64_t>(at(row))) : Value();
}

std::string_view DateTimeColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return has(row) ? dateTimeText(context.units, context.zone.toLocal(at(row)), buffer.figure) : "";
}

Value SelectionColumn::value(RowIndex row) const {
    return has(row) ? Value(static_cast<std::int64_t>(at(row))) : Value();
}

std::string_view SelectionColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    if (!has(row))
        return {};
    buffer.words = selection(at(row));
    return buffer.words;
}

std::string_view ElapsedTimeColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    return has(row) ? durationText(at(row), buffer.figure) : "";
}

std::string_view DerivedElapsedTimeColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    const Value seconds = value(row);
    return std::holds_alternative<std::int64_t>(seconds) ? durationText(std::get<std::int64_t>(seconds), buffer.figure)
                                                         : "";
}

void ObjectColumn::deleteOwned(std::span<const RowRun> runs) {
    for (const RowRun& run : runs)
        for (RowIndex row = run.first; row < run.end(); ++row)
            destroyObject(row);
}

void ObjectColumn::clear(RowIndex row) {
    if (!has(row))
        return;
    if (!store() || !store()->find(at(row)))
        throw std::logic_error("what this cell holds could not be read");
    destroyObject(row);
    set(row, kNoObject);
}

void ObjectColumn::takeOver(RowIndex row, ObjectColumn& other) {
    clear(row);
    set(row, other.at(row));
    other.set(row, kNoObject);
}

void ObjectColumn::deleting() {
    for (RowIndex row = 0; row < storedRows(); ++row)
        destroyObject(row);
}

void ObjectColumn::destroyObject(RowIndex row) {
    if (!store() || !has(row))
        return;
    // A cell of a damaged file may name any object; what is not of the cell's class belongs to something else.
    const PersistentObject* object = store()->find(at(row));
    if (object && object->type().id() == objectType().id())
        store()->destroy(at(row));
}

PersistentObject& ObjectColumn::make(RowIndex row) {
    if (has(row))
        throw std::logic_error("what this cell holds could not be read");
    ObjectStore* const owner = store() ? store() : table()->store(); // the document may lack this column
    PersistentObject& made = owner->create(objectType());
    set(row, made.id());
    return made;
}

bool ObjectColumn::replaceable(RowIndex row) const {
    if (!has(row))
        return true;
    const PersistentObject* object = store() ? store()->find(at(row)) : nullptr;
    if (!object || object->type().id() != objectType().id())
        return false;
    const auto* table = dynamic_cast<const Table*>(object);
    return !table || (table->unreadableColumns().empty() && table->rowLock().empty());
}

std::vector<Reference> ObjectColumn::references() const {
    std::vector<Reference> result;
    for (const ObjectId id : values())
        if (id != kNoObject)
            result.push_back({id, objectType().id()});
    return result;
}

std::string_view RowNumberColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return context.units.formatInteger(static_cast<std::int64_t>(row) + 1, buffer.figure);
}

} // namespace quobrix
