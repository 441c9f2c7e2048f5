#include "model/record_comparison.h"

#include "model/names.h"
#include "model/parameters.h"
#include "model/trip_log.h"

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <tuple>

namespace quobrix {

void Comparison::vin(std::string_view row, std::string_view record) {
    require(!isVin(row) || !isVin(record) || row == record);
}

void Comparison::growing(std::uint64_t row, std::uint64_t record) {
    recordHasMore = recordHasMore || record > row;
    rowHasMore = rowHasMore || row > record;
    common += std::min(row, record);
}

void Comparison::figure(double row, double record) {
    if (hasValue(row) && hasValue(record))
        require(std::abs(row - record) <= 1e-12 * std::max(std::abs(row), std::abs(record)));
    growing(hasValue(row), hasValue(record));
}

void Comparison::code(std::int32_t row, std::int32_t record) {
    const bool rowHas = !Element<std::int32_t>::isNone(row), recordHas = !Element<std::int32_t>::isNone(record);
    require(!rowHas || !recordHas || row == record);
    growing(rowHas, recordHas);
}

namespace {

constexpr RowIndex kDropped = std::numeric_limits<RowIndex>::max();

/// A record of one of the tables.
struct Place {
    const Table& table;
    RowIndex row;
};

/// The cell of a column as it was recorded.
Value recordedValue(const LogSpec& log, const Place& place, const PersistentType& type) {
    const Column& column = place.table.columnOf(type);
    const RecordedCellsColumn* kept = log.recordedCellsOf(place.table);
    return kept ? kept->recorded(column, place.row) : column.value(place.row);
}

/// Whatever a person has made of it.
std::string recordedVin(const LogSpec& log, const Place& place) {
    if (log.id == LogId::Trips)
        return static_cast<const TTripLogTable&>(place.table).recorded(place.row).vin;
    const Value vin = recordedValue(log, place, *log.vehicle);
    return std::get<std::string>(vin);
}

using Key = std::tuple<std::string, std::int32_t, std::string>;

/// What a record has in common with those that may be the same.
Key keyOf(const LogSpec& log, const Place& place) {
    const RowIndex row = place.row;
    const std::int32_t recorded = log.recordsOf(place.table).at(row).loggerTime;
    std::string code;
    if (log.keys.size() > 3) {
        const Value value = recordedValue(log, place, *log.keys[3]);
        if (const auto* text = std::get_if<std::string>(&value))
            code = *text;
        else if (const auto* number = std::get_if<std::int64_t>(&value))
            code = std::to_string(*number);
    }
    // Old documents do not know the time as recorded: it is the one that they show.
    return {log.loggersOf(place.table).at(row), recorded != 0 ? recorded : log.timesOf(place.table).at(row),
            std::move(code)};
}

Bytes firstCells(const Column& column, std::size_t count) {
    ByteWriter out;
    column.writeCells(out, 0, count);
    return out.take();
}

void compareLists(const Column& row, const Column& record, Comparison& c) {
    if (const auto* series = dynamic_cast<const ParameterSeriesColumn*>(&row)) {
        const SampledSeries& other = static_cast<const ParameterSeriesColumn&>(record).series();
        c.require(series->series().agreesWith(other));
        c.growing(series->series().size(), other.size());
        return;
    }
    const std::size_t common = std::min(row.storedRows(), record.storedRows());
    c.require(firstCells(row, common) == firstCells(record, common));
    c.growing(row.storedRows(), record.storedRows());
}

/// The column that keeps what was recorded of TYPE where a person has made something else of it.
const PersistentType& recordedOf(const PersistentType& type) {
    return &type == &TTripLogSampleTableColumn::kType ? TTripLogRecordedSampleTableColumn::kType : type;
}

/// What the cell of a column owns as it was recorded, if it can be read.
const PersistentObject* owned(const PersistentType& type, const Place& place) {
    const auto& recorded = static_cast<const ObjectColumn&>(place.table.columnOf(recordedOf(type)));
    const auto& cells =
        recorded.has(place.row) ? recorded : static_cast<const ObjectColumn&>(place.table.columnOf(type));
    const PersistentObject* object =
        cells.store() && cells.has(place.row) ? cells.store()->find(cells.at(place.row)) : nullptr;
    return object && object->type().id() == cells.objectType().id() ? object : nullptr;
}

void compareOwned(const PersistentType& type, const Place& row, const Place& record, Comparison& c) {
    const PersistentObject* a = owned(type, row);
    const PersistentObject* b = owned(type, record);
    if (!a || !b) { // what cannot be read is not compared, and is less
        c.growing(a != nullptr, b != nullptr);
        return;
    }
    const auto* table = dynamic_cast<const Table*>(a);
    if (!table)
        return compareLists(static_cast<const Column&>(*a), static_cast<const Column&>(*b), c);
    for (std::size_t i = 0; i < table->spec().columns.size(); ++i)
        compareLists(table->column(i), static_cast<const Table*>(b)->column(i), c);
}

double figureOf(const Value& value) {
    const auto* real = std::get_if<double>(&value);
    return real ? *real : kNoValue;
}

std::int32_t codeOf(const Value& value) {
    const auto* code = std::get_if<std::int64_t>(&value);
    return code ? static_cast<std::int32_t>(*code) : Element<std::int32_t>::kNone;
}

/// The figures of records that own no lists to be known by. Times are not compared: they may have been shifted.
void compareFigures(const LogSpec& log, const Place& row, const Place& record, Comparison& c) {
    const auto isOther = [&](const PersistentType* type) {
        return type == log.vehicle || type == log.driver || type == log.comments ||
               std::ranges::find(log.keys, type) != log.keys.end();
    };
    for (const PersistentType* type : row.table.spec().columns) {
        const Column& column = row.table.columnOf(*type);
        if (!column.stored() || isOther(type))
            continue;
        const Value a = recordedValue(log, row, *type), b = recordedValue(log, record, *type);
        if (column.kind() == ColumnKind::Real)
            c.figure(figureOf(a), figureOf(b));
        else if (column.kind() == ColumnKind::Integer || column.kind() == ColumnKind::Selection)
            c.code(codeOf(a), codeOf(b));
    }
}

Comparison compareRows(const LogSpec& log, const Place& row, const Place& record) {
    Comparison c;
    c.vin(recordedVin(log, row), recordedVin(log, record));
    for (const PersistentType* type : log.growing)
        if (c.same())
            compareOwned(*type, row, record, c);
    // Where there are lists the figures follow from them, or a person has edited these.
    if (c.same() && c.common == 0)
        compareFigures(log, row, record, c);
    return c;
}

} // namespace

void dropRepeated(const LogSpec& log, std::span<TableRows> parts) {
    struct Kept {
        std::size_t part, at;   ///< of the row that stands for the record
        std::size_t latestPart; ///< that has it
    };
    std::map<Key, std::vector<Kept>> known;
    const auto place = [&](std::size_t part, std::size_t at) {
        return Place{*parts[part].table, parts[part].rows[at]};
    };
    for (std::size_t part = 0; part < parts.size(); ++part)
        for (std::size_t at = 0; at < parts[part].rows.size(); ++at) {
            std::vector<Kept>& alike = known[keyOf(log, place(part, at))];
            Kept* best = nullptr;
            Comparison closest;
            for (Kept& kept : alike) {
                if (kept.latestPart == part)
                    continue;
                const Comparison c = compareRows(log, place(kept.part, kept.at), place(part, at));
                if (c.same() && (!best || c.equal() > closest.equal() ||
                                 (c.equal() == closest.equal() && c.common > closest.common))) {
                    best = &kept;
                    closest = c;
                }
            }
            if (!best) {
                alike.push_back({part, at, part});
                continue;
            }
            best->latestPart = part;
            if (closest.fuller()) {
                parts[best->part].rows[best->at] = kDropped;
                best->part = part;
                best->at = at;
            } else {
                parts[part].rows[at] = kDropped;
            }
        }
    for (TableRows& part : parts)
        std::erase(part.rows, kDropped);
}

} // namespace quobrix
