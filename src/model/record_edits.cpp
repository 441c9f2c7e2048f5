#include "model/record_edits.h"

#include "model/names.h"
#include "texts/text.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <span>

namespace quobrix {
namespace {

constexpr std::size_t kTroubleCodeLength = 5; // SAE J2012

/// Why nothing can be set in COLUMNS of TABLE; empty: it can. All columns are loaded first, since one of them may be of
/// a later version, which locks the document.
ShownText lockOf(TQuobrixDocument& document, const Table& table, std::initializer_list<const Column*> columns) {
    table.unreadableColumns();
    if (ShownText why = document.edits().lockedBecause(); !why.empty())
        return why;
    for (const Column* column : columns)
        if (const SourceText why = table.columnLock(*column); !why.empty())
            return text(why);
    return {};
}

template <class T>
const T* as(const Value& value) {
    return std::get_if<T>(&value);
}

/// What speaks against VALUE as that of COLUMN, whatever else the record holds; empty: nothing.
ShownText refusalOf(const LogSpec& log, const Column& column, const Value& value) {
    const std::uint32_t type = column.type().id();
    if (type == log.vehicle->id())
        return as<std::string>(value) && (as<std::string>(value)->empty() || isVin(*as<std::string>(value)))
                   ? ShownText()
                   : text(TextId::VinWanted);
    if (type == TTroubleLogTroubleCodeColumn::kType.id())
        return as<std::string>(value) && as<std::string>(value)->size() == kTroubleCodeLength
                   ? ShownText()
                   : text(TextId::TroubleCodeWanted);
    if (type == TSecurityLogEventTypeColumn::kType.id())
        return as<std::int64_t>(value) && isEditableEvent(static_cast<std::int32_t>(*as<std::int64_t>(value)))
                   ? ShownText()
                   : text(TextId::EventTypeWanted);
    if (column.kind() == ColumnKind::DateTime)
        return as<std::int64_t>(value) ? ShownText() : text(TextId::TimeWanted);
    const UnitTypeId unit = column.spec().unit;
    const bool mayBeNegative = unit == UnitTypeId::Temperature || unit == UnitTypeId::P2;
    if (const auto* real = as<double>(value); real && *real < 0 && !mayBeNegative)
        return text(TextId::NoNegativeFigure);
    if (const auto* whole = as<std::int64_t>(value); whole && *whole < 0)
        return text(TextId::NoNegativeFigure);
    return {};
}

/// Of a trip as it will be: that it does not end before it starts.
ShownText refusalOfTimes(const TTripLogTable& trips, RowIndex row, const std::vector<CellEdit>& cells) {
    const auto timeOf = [&](const Column& column) {
        for (const CellEdit& cell : cells)
            if (&trips.column(cell.column) == &column)
                return cell.value;
        return column.value(row);
    };
    const Value start = timeOf(trips.column<TTripLogStartTimeColumn>());
    const Value end = timeOf(trips.column<TTripLogEndTimeColumn>());
    return as<std::int64_t>(start) && as<std::int64_t>(end) && *as<std::int64_t>(end) < *as<std::int64_t>(start)
               ? text(TextId::EndBeforeStart)
               : ShownText();
}

/// Runs CHANGE, which sets cells of ROWS and what they own, as one step called STEP.
EditOutcome change(TQuobrixDocument& document, Table& table, const RowRuns& rows, std::string_view step,
                   const std::function<void()>& change) {
    return document.edits().group(step, [&] {
        document.edits().changeRows(table, rows, change);
        return EditOutcome{};
    });
}

/// Puts another table in place of the one that a trip owns in SHOWN, and keeps the first one in KEPT. FILL(fresh,
/// recorded) makes it, unless something speaks against it, REFUSAL; where SAME(recorded) says that it would hold what
/// was recorded, that is shown again, whatever it is.
template <class Shown, class Kept, class Same, class Fill>
EditOutcome replacePart(TQuobrixDocument& document, RowIndex row, std::string_view step, const ShownText& refusal,
                        const Same& same, const Fill& fill) {
    TTripLogTable& trips = document.trips();
    auto& shown = trips.column<Shown>();
    auto& kept = trips.column<Kept>();
    if (ShownText why = lockOf(document, trips, {&shown, &kept}); !why.empty())
        return refused(why);
    if (!shown.object(row) || !shown.replaceable(row) || !kept.replaceable(row))
        return refused(text(TextId::PartUnreadable));
    const bool asRecorded = same(kept.has(row) ? *kept.object(row) : *shown.object(row));
    if (asRecorded && !kept.has(row))
        return {};
    if (!asRecorded && !refusal.empty())
        return refused(refusal);
    return change(document, trips, {{row, 1}}, step, [&] {
        if (asRecorded)
            return shown.takeOver(row, kept);
        if (!kept.has(row)) {
            kept.set(row, shown.at(row));
            shown.set(row, kNoObject);
        }
        fill(shown.replaceObject(row), *kept.object(row));
    });
}

/// What was typed in another unit comes back as nearly the same.
bool isSameLimit(double a, double b) {
    return hasValue(a) == hasValue(b) && (!hasValue(a) || std::abs(a - b) <= 1e-6 * std::max(a, b));
}

/// Whether each of the speed bands ends above its beginning, and none begins below the end of the one before it. Only
/// the last one may be open; one of standstill goes from zero to zero.
bool ascend(const std::vector<double>& from, const std::vector<double>& to) {
    double before = 0;
    for (std::size_t band = 0; band < std::min(from.size(), to.size()); ++band) {
        const bool standstill = from[band] == 0 && to[band] == 0;
        const bool open = !hasValue(to[band]);
        if (!hasValue(from[band]) || (from[band] < before && !isSameLimit(from[band], before)) ||
            (!standstill && !open && to[band] <= from[band]) || (open && band + 1 < to.size()))
            return false;
        before = to[band];
    }
    return true;
}

} // namespace

bool isCorrectable(const LogSpec& log, const Table& table, RowIndex row) {
    if (log.id == LogId::Activity)
        return isEditableEvent(table.column<TSecurityLogEventTypeColumn>().at(row));
    return log.recorded != nullptr;
}

EditOutcome correctRecord(TQuobrixDocument& document, const LogSpec& log, RowIndex row, std::vector<CellEdit> cells,
                          const TextContext& context) {
    Table* table = document.log(log);
    if (!table || row >= table->rowCount() || !isCorrectable(log, *table, row))
        return refused(kNotEditable);
    RecordedCellsColumn& kept = *log.recordedCellsOf(*table);
    if (ShownText why = lockOf(document, *table, {&kept}); !why.empty())
        return refused(why);
    const CheckedEdit edit = checkEdit(*table, 0, cells, context, EditedCells::Recorded);
    if (!edit.outcome.ok() || edit.changes.empty())
        return edit.outcome;
    for (const auto& [index, values] : edit.changes)
        if (ShownText why = refusalOf(log, table->column(index), *values.back().second); !why.empty())
            return refused(why, index, row);
    TTripLogTable* trips = log.id == LogId::Trips ? &document.trips() : nullptr;
    if (ShownText why = trips ? refusalOfTimes(*trips, row, cells) : ShownText(); !why.empty())
        return refused(why);
    const EditOutcome done =
        change(document, *table, {{row, 1}}, text(TextId::CorrectionStep, recordTitle(log, *table, row, context)), [&] {
            for (const auto& [index, values] : edit.changes) {
                Column& column = table->column(index);
                const Value& value = *values.back().second;
                const std::uint32_t type = column.type().id();
                if (trips && (type == log.vehicle->id() || type == log.driver->id())) {
                    trips->keepRecorded(row);
                    column.setValue(row, value);
                } else {
                    kept.edit(column, row, value);
                }
                if (const auto* vin = type == log.vehicle->id() ? as<std::string>(value) : nullptr)
                    document.edits().changeRows(document.vehicles(), {}, [&] { // as a download does
                        document.vehicles().addMissing(std::span(vin, 1));
                    });
            }
        });
    return done.ok() ? edit.outcome : done;
}

EditOutcome giveDriver(TQuobrixDocument& document, const std::vector<RowIndex>& trips, std::int32_t driver) {
    TTripLogTable& table = document.trips();
    auto& drivers = table.column<TTripLogDriverIDColumn>();
    if (ShownText why = lockOf(document, table, {&drivers, &table.column<TTripLogRecordedOriginColumn>()});
        !why.empty())
        return refused(why);
    std::vector<RowIndex> rows;
    for (const RowIndex row : trips)
        if (drivers.at(row) != driver)
            rows.push_back(row);
    if (rows.empty())
        return {};
    const LogSpec& log = logSpec(LogId::Trips);
    const ShownText step = text(TextId::DriverStep, counted(log.record, log.records, rows.size()));
    return change(document, table, runsOf(rows), step, [&] {
        for (const RowIndex row : rows) {
            table.keepRecorded(row);
            drivers.set(row, driver);
        }
    });
}

EditOutcome giveTripType(TQuobrixDocument& document, const std::vector<RowIndex>& trips, const std::string& type) {
    TTripLogTable& table = document.trips();
    auto& types = table.column<TTripLogTripTypeColumn>();
    if (ShownText why = lockOf(document, table, {&types}); !why.empty())
        return refused(why);
    std::vector<RowIndex> rows;
    for (const RowIndex row : trips)
        if (types.at(row) != type)
            rows.push_back(row);
    if (rows.empty())
        return {};
    const LogSpec& log = logSpec(LogId::Trips);
    const ShownText step = text(TextId::TripTypeStep, counted(log.record, log.records, rows.size()));
    return change(document, table, runsOf(rows), step, [&] {
        for (const RowIndex row : rows)
            types.set(row, type);
    });
}

EditOutcome correctSamples(TQuobrixDocument& document, RowIndex row, const std::vector<std::uint8_t>& speeds) {
    return replacePart<TTripLogSampleTableColumn, TTripLogRecordedSampleTableColumn>(
        document, row, text(TextId::SpeedProfileStep), {},
        [&](const TTripLogSampleTable& recorded) { return recorded.speed().values() == speeds; },
        [&](TTripLogSampleTable& fresh, const TTripLogSampleTable& recorded) {
            fresh.insertRows(0, recorded.rowCount());
            fresh.speed().setInterval(recorded.speed().interval());
            std::vector<std::uint8_t> all = speeds;
            all.resize(recorded.rowCount());
            fresh.speed().setAll(std::move(all));
            for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
                fresh.series(i).setSeries(recorded.series(i).series());
        });
}

EditOutcome correctSpeedBands(TQuobrixDocument& document, RowIndex row, const std::vector<double>& from,
                              const std::vector<double>& to) {
    return replacePart<TTripLogSpeedBandsTableColumn, TTripLogRecordedSpeedBandsTableColumn>(
        document, row, text(TextId::SpeedBandsStep), ascend(from, to) ? ShownText() : text(TextId::LimitsMustAscend),
        [&](const TTripLogSpeedBandsTable& recorded) {
            return std::ranges::equal(recorded.column<TTripLogSpeedBandFromColumn>().values(), from, isSameLimit) &&
                   std::ranges::equal(recorded.column<TTripLogSpeedBandToColumn>().values(), to, isSameLimit);
        },
        [&](TTripLogSpeedBandsTable& fresh, const TTripLogSpeedBandsTable& recorded) {
            fresh.insertRows(0, recorded.rowCount());
            for (RowIndex band = 0; band < std::min({recorded.rowCount(), from.size(), to.size()}); ++band) {
                fresh.column<TTripLogSpeedBandFromColumn>().set(band, from[band]);
                fresh.column<TTripLogSpeedBandToColumn>().set(band, to[band]);
            }
        });
}

} // namespace quobrix
