#include "device/merge.h"

#include "device/log_rows.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <unordered_map>

namespace quobrix {

/// What is to be done with the records of one log. Made before anything is changed.
template <class Log>
struct MergePlan {
    static constexpr LogId kLog = Log::kLog;
    using Record = typename Log::Record;
    struct Change {
        RowIndex row;
        const Record* record;
        bool whole; ///< else only the vehicle or driver that the row lacks
    };
    struct Fresh {
        const Record* record;
        RecordIdentity identity;
        std::string vehicle{}; ///< that a person gave it; else the recorded one
    };
    std::vector<Change> changes;
    std::vector<Fresh> fresh;
    std::size_t present = 0;

    MergeCounts counts() const { return {fresh.size(), changes.size(), present}; }
};

namespace {

Error unreadable(const PersistentType& type) { return {ErrorKind::Corrupt, text(logOfClass(type.name))}; }

/// What records have in common that may be the same, as one text.
std::string likenessKey(std::string_view serialNumber, std::int32_t loggerTime, std::string_view code) {
    return fmt::format("{}/{}/{}", serialNumber, code, loggerTime);
}

/// Finds for each record the row that it is the same as. Each row is taken once.
template <class Log>
class Planner {
public:
    using Record = typename Log::Record;

    explicit Planner(const typename Log::TableType& table)
        : table_(table), numbers_(logSpec(Log::kLog).recordsOf(table)), times_(logSpec(Log::kLog).timesOf(table)),
          kept_(logSpec(Log::kLog).recordedCellsOf(table)) {
        const LoggerColumn& serials = logSpec(Log::kLog).loggersOf(table);
        alike_.reserve(table.rowCount());
        for (RowIndex row = 0; row < table.rowCount(); ++row) {
            const RecordIdentity& identity = numbers_.at(row);
            Alike& alike = alike_[likenessKey(serials.at(row), identity.loggerTime, Log::codeAt(table, row))];
            alike.rows.push_back({row, false});
            alike.nextOccurrence = std::max(alike.nextOccurrence, identity.occurrence + 1);
        }
    }

    Result<MergePlan<Log>> plan(const std::vector<Record>& records) {
        // Equal rows first, then those that a record continues: what is the beginning of many must not take the row of
        // another one's.
        std::vector<const Record*> rest;
        for (const Record& record : records)
            if (Row* row = closestRow(record, &Comparison::equal))
                seenAgain(*row, record);
            else
                rest.push_back(&record);
        std::vector<const Record*> others;
        for (const Record* record : rest)
            if (Row* row = closestRow(*record, &Comparison::fuller))
                QUOBRIX_TRY(replace(*row, *record));
            else
                others.push_back(record);
        for (const Record* record : others)
            if (Row* row = closestRow(*record, &Comparison::same))
                seenAgain(*row, *record);
            else
                plan_.fresh.push_back({record, {Log::time(*record), alike(*record).nextOccurrence++}, {}});
        return std::move(plan_);
    }

private:
    struct Row {
        RowIndex index;
        bool taken;
    };
    struct Alike {
        std::vector<Row> rows;
        std::uint32_t nextOccurrence = 0;
    };

    Alike& alike(const Record& record) {
        return alike_[likenessKey(record.origin.serialNumber, Log::time(record), Log::code(record))];
    }

    Comparison compare(const Row& row, const Record& record) const {
        return Log::compare(table_, row.index, record,
                            std::int64_t{recordedAt(times_, kept_, row.index)} - Log::time(record));
    }

    /// Of the rows that compare with RECORD as WANTED the one that has most in common with it.
    Row* closestRow(const Record& record, bool (Comparison::*wanted)() const) {
        Row* closest = nullptr;
        std::uint64_t common = 0;
        for (Row& row : alike(record).rows) {
            if (row.taken)
                continue;
            const Comparison comparison = compare(row, record);
            if (!(comparison.*wanted)() || (closest && comparison.common <= common))
                continue;
            closest = &row;
            common = comparison.common;
            if (comparison.equal())
                break; // none is closer
        }
        return closest;
    }

    Result<void> replace(Row& row, const Record& record) {
        if (Log::isFixed(table_, row.index)) {
            seenAgain(row, record);
            return {};
        }
        if (!table_.replaceable(row.index))
            return unreadable(table_.type());
        row.taken = true;
        plan_.changes.push_back({row.index, &record, true});
        return {};
    }

    /// RECORD has no more content than ROW.
    void seenAgain(Row& row, const Record& record) {
        row.taken = true;
        if (Log::completes(table_, row.index, record))
            plan_.changes.push_back({row.index, &record, false});
        else
            ++plan_.present;
    }

    const typename Log::TableType& table_;
    const RecordColumn& numbers_;
    const DateTimeColumn& times_;
    const RecordedCellsColumn* kept_;
    std::unordered_map<std::string, Alike> alike_;
    MergePlan<Log> plan_;
};

/// Gives the rows of the records that were added.
template <class Log>
std::vector<RowIndex> carryOut(MergePlan<Log>& plan, typename Log::TableType& table, std::int32_t shift,
                               TableEdits& edits) {
    RecordColumn& numbers = logSpec(Log::kLog).recordsOf(table);
    LoggerColumn& serials = logSpec(Log::kLog).loggersOf(table);
    const DateTimeColumn& times = logSpec(Log::kLog).timesOf(table);
    RecordedCellsColumn* kept = logSpec(Log::kLog).recordedCellsOf(table);
    std::vector<RowIndex> rows;
    for (const auto& change : plan.changes)
        rows.push_back(change.row);
    std::ranges::sort(rows);
    if (!rows.empty())
        edits.changeRows(table, runsOf(rows), [&] {
            for (const auto& change : plan.changes) {
                if (kept)
                    kept->exchange(change.row);
                if (change.whole) // the shift that the old record got stays: its place among the others depends on it
                    Log::fill(table, change.row, *change.record,
                              std::int64_t{times.at(change.row)} - Log::time(*change.record));
                else
                    Log::complete(table, change.row, *change.record);
                if (kept)
                    kept->exchange(change.row);
            }
        });

    auto& fresh = plan.fresh;
    rows.clear();
    if (fresh.empty())
        return rows;
    std::stable_sort(fresh.begin(), fresh.end(),
                     [](const auto& a, const auto& b) { return Log::time(*a.record) < Log::time(*b.record); });
    for (const auto& entry : fresh) {
        const auto place =
            std::upper_bound(times.values().begin(), times.values().end(), shifted(Log::time(*entry.record), shift));
        rows.push_back(static_cast<RowIndex>(place - times.values().begin()) + rows.size());
    }
    edits.addRows(table, runsOf(rows), [&] {
        for (std::size_t i = 0; i < fresh.size(); ++i) {
            numbers.set(rows[i], fresh[i].identity);
            serials.set(rows[i], fresh[i].record->origin.serialNumber);
            Log::fill(table, rows[i], *fresh[i].record, shift);
            if (!fresh[i].vehicle.empty())
                table.template column<typename Log::Vin>().set(rows[i], fresh[i].vehicle);
        }
    });
    return rows;
}

/// The keys that records refer to, in the order of the records.
template <class Record>
void collectKeys(const std::vector<Record>& records, NewKeys& keys) {
    for (const Record& record : records) {
        keys.loggers.push_back(record.origin.serialNumber);
        keys.vehicles.push_back(record.origin.vin);
    }
}

/// Of trips, what stands for a vehicle that told no VIN is of no use once a person has said which it was.
void collectKeys(const std::vector<TripRecord>& records, const MergePlan<TripRows>& plan, NewKeys& keys) {
    for (const TripRecord& record : records) {
        keys.loggers.push_back(record.origin.serialNumber);
        if (isVin(record.origin.vin))
            keys.vehicles.push_back(record.origin.vin);
        if (record.driverId != 0)
            keys.drivers.push_back(std::to_string(record.driverId));
    }
    for (const auto& trip : plan.fresh)
        keys.vehicles.push_back(trip.vehicle.empty() ? trip.record->origin.vin : trip.vehicle);
}

/// Adds the vehicles, loggers and drivers of the records that the name tables lack.
NewKeys addNames(const LogRecords& records, const MergePlan<TripRows>& trips, TQuobrixDocument& document) {
    NewKeys keys;
    collectKeys(records.trips, trips, keys);
    collectKeys(records.troubles, keys);
    collectKeys(records.activities, keys);
    collectKeys(records.stops, keys);
    const auto add = [&](NamesTable& names, std::vector<std::string>& wanted) {
        document.edits().changeRows(names, {}, [&] { wanted = names.addMissing(wanted); });
    };
    add(document.loggers(), keys.loggers);
    add(document.vehicles(), keys.vehicles);
    add(document.drivers(), keys.drivers);
    return keys;
}

Result<void> checkTable(const Table& table) {
    return table.unreadableColumns().empty() && table.rowLock().empty() ? Result<void>() : unreadable(table.type());
}

/// In addition, the columns by which its records are known again must be there, unless there are none: a repair leaves
/// logs that have lost everything without columns, which come back with the first record.
template <class Log>
Result<void> checkLog(const typename Log::TableType& table) {
    for (const PersistentType* key : logSpec(Log::kLog).keys)
        if (table.rowCount() > 0 && !table.columnOf(*key).store())
            return unreadable(table.type());
    return checkTable(table);
}

Result<void> tablesReadable(TQuobrixDocument& document) {
    if (const auto reason = document.readOnlyReason();
        reason && (reason->kind == ErrorKind::Corrupt || reason->kind == ErrorKind::Unsupported))
        return *reason;
    QUOBRIX_TRY(checkLog<TripRows>(document.trips()));
    QUOBRIX_TRY(checkLog<TroubleRows>(document.troubles()));
    QUOBRIX_TRY(checkLog<ActivityRows>(document.activity()));
    QUOBRIX_TRY(checkTable(document.vehicles()));
    QUOBRIX_TRY(checkTable(document.loggers()));
    QUOBRIX_TRY(checkTable(document.drivers()));
    if (TAccidentLogTable* accidents = document.accidents()) // its row count may turn out to be damaged
        QUOBRIX_TRY(checkLog<AccidentRows>(*accidents));
    if (document.accidents())
        return {};
    // There must be none: one that cannot be read, or that the index does not name, must not get another beside it.
    ObjectStore& store = document.store();
    if (store.singletonIds().contains(TAccidentLogTable::kType.id()) || store.findLostSingletons())
        return unreadable(TAccidentLogTable::kType);
    return {};
}

/// RESULT, or what weighs more: another program has changed the file until now, and what was not read by then reads as
/// nothing; or what cannot be read is no damage but of a later version, beside whose parts a document is only read.
Result<void> unlessForeign(const TQuobrixDocument& document, Result<void> result) {
    if (document.outdated())
        return *document.readOnlyReason();
    if (document.store().laterLayoutMet())
        return Error{ErrorKind::Unsupported, text(TextId::ALaterVersionHasWrittenIt)};
    return result;
}

/// OUTCOME with "2 trips, 1 severe stop" of what there is any of, which NAME_COUNT(i, numbers[i]) names; else nothing.
template <class NameCount>
std::string outcomeText(TextOf<1> outcome, std::span<const std::uint64_t> numbers, const NameCount& nameCount) {
    std::string counts;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        if (numbers[i] > 0)
            counts += (counts.empty() ? "" : ", ") + nameCount(i, numbers[i]);
    return counts.empty() ? counts : text(outcome, counts);
}

} // namespace

std::size_t MergeResult::added() const {
    std::size_t sum = 0;
    for (const MergeCounts& log : logs)
        sum += log.added;
    return sum;
}

bool MergeResult::changed() const {
    return !newKeys.loggers.empty() || !newKeys.vehicles.empty() || !newKeys.drivers.empty() ||
           std::ranges::any_of(logs, [](const MergeCounts& log) { return log.added + log.replaced > 0; });
}

bool MergeResult::nothing() const {
    return complete() && std::ranges::all_of(
                             logs, [](const MergeCounts& log) { return log.added + log.replaced + log.present == 0; });
}

std::string MergeResult::summary() const {
    const auto counts = [this](TextOf<1> outcome, std::size_t MergeCounts::*count) {
        std::array<std::uint64_t, std::tuple_size_v<decltype(MergeResult::logs)>> numbers{};
        std::ranges::transform(logs, numbers.begin(), [&](const MergeCounts& log) { return log.*count; });
        return outcomeText(outcome, numbers, [](std::size_t log, std::uint64_t number) {
            return counted(quobrix::logs()[log].record, quobrix::logs()[log].records, number);
        });
    };
    std::array<std::uint64_t, kRecordKinds> refusals{};
    for (const RefusedRecords& group : refused)
        refusals[static_cast<std::size_t>(group.kind)] += group.count;
    std::string all;
    const auto add = [&](const std::string& outcome) { all += (all.empty() || outcome.empty() ? "" : " ") + outcome; };
    add(counts(TextId::OutcomeNew, &MergeCounts::added));
    add(counts(TextId::OutcomeReplaced, &MergeCounts::replaced));
    if (all.empty())
        all = text(TextId::NothingNew);
    add(counts(TextId::OutcomePresent, &MergeCounts::present));
    add(outcomeText(TextId::OutcomeRefused, refusals, [](std::size_t kind, std::uint64_t number) {
        return recordCountText(static_cast<RecordKind>(kind), number);
    }));
    return all;
}

std::vector<ShownText> MergeResult::refusedLines() const {
    std::vector<ShownText> lines;
    for (const RefusedRecords& group : refused)
        lines.push_back(group.count == 1
                            ? text(TextId::WithNameAndDetail, recordKindName(group.kind), group.ordinal, group.reason)
                            : text(TextId::SeveralRefused, recordKindName(group.kind), group.ordinal, group.count - 1,
                                   group.reason));
    return lines;
}

Result<void> canMerge(TQuobrixDocument& document) { return unlessForeign(document, tablesReadable(document)); }

struct Merge::Plans {
    const LogRecords& records;
    TQuobrixDocument& document;
    std::tuple<MergePlan<TripRows>, MergePlan<TroubleRows>, MergePlan<ActivityRows>, MergePlan<AccidentRows>> all;
    static_assert(std::tuple_size_v<decltype(all)> == kLogCount, "a plan for each log");

    template <class Log>
    MergePlan<Log>& of() {
        return std::get<MergePlan<Log>>(all);
    }
};

Merge::Merge(std::unique_ptr<Plans> plans) : plans_(std::move(plans)) {}
Merge::Merge(Merge&&) noexcept = default;
Merge::~Merge() = default;

Result<Merge> Merge::plan(const LogRecords& records, TQuobrixDocument& document) {
    QUOBRIX_TRY(canMerge(document));
    auto trips = Planner<TripRows>(document.trips()).plan(records.trips);
    auto troubles = Planner<TroubleRows>(document.troubles()).plan(records.troubles);
    auto activity = Planner<ActivityRows>(document.activity()).plan(records.activities);
    const TAccidentLogTable none;
    const TAccidentLogTable* stops = document.accidents();
    auto accidents = Planner<AccidentRows>(stops ? *stops : none).plan(records.stops);
    const auto firstError = [](const auto&... plans) {
        Result<void> error;
        ((error && !plans ? void(error = plans.error()) : void()), ...);
        return error;
    };
    QUOBRIX_TRY(unlessForeign(document, firstError(trips, troubles, activity, accidents)));
    return Merge(std::unique_ptr<Plans>(new Plans{
        records, document, {std::move(*trips), std::move(*troubles), std::move(*activity), std::move(*accidents)}}));
}

MergeCounts Merge::counts(LogId log) const {
    MergeCounts counts;
    const auto take = [&](const auto& plan) {
        if (plan.kLog == log)
            counts = plan.counts();
    };
    std::apply([&](const auto&... plans) { (take(plans), ...); }, plans_->all);
    return counts;
}

std::vector<UnidentifiedVehicle> Merge::unidentified() const {
    std::vector<UnidentifiedVehicle> vehicles;
    std::unordered_map<std::string_view, std::size_t> places;
    for (const auto& trip : plans_->of<TripRows>().fresh) {
        const std::string& read = trip.record->origin.vin;
        if (isVin(read))
            continue;
        const auto [place, first] = places.try_emplace(read, vehicles.size());
        if (first)
            vehicles.push_back({read, 0, trip.record->startTime});
        UnidentifiedVehicle& vehicle = vehicles[place->second];
        ++vehicle.trips;
        vehicle.firstStart = std::min(vehicle.firstStart, trip.record->startTime);
    }
    std::ranges::stable_sort(vehicles, {}, &UnidentifiedVehicle::firstStart);
    return vehicles;
}

void Merge::identify(const std::string& read, const std::string& vin) {
    std::set<std::string_view> loggers;
    for (auto& trip : plans_->of<TripRows>().fresh)
        if (trip.record->origin.vin == read) {
            trip.vehicle = vin;
            loggers.insert(trip.record->origin.serialNumber);
        }
    for (auto& stop : plans_->of<AccidentRows>().fresh) // which were made on such trips
        if (stop.record->origin.vin == read && loggers.contains(stop.record->origin.serialNumber))
            stop.vehicle = vin;
}

Result<MergeResult> Merge::apply(std::int32_t shift) {
    const LogRecords& records = plans_->records;
    TQuobrixDocument& document = plans_->document;
    QUOBRIX_TRY(canMerge(document)); // a person may have thought for a while
    MergeResult result;
    result.refused = records.refused;
    result.unreadable = records.unreadable;
    for (const LogSpec& log : logs())
        result.logs[static_cast<std::size_t>(log.id)] = counts(log.id);
    document.edits().group(text(TextId::DownloadStep), [&] {
        result.newTrips = carryOut(plans_->of<TripRows>(), document.trips(), shift, document.edits());
        carryOut(plans_->of<TroubleRows>(), document.troubles(), shift, document.edits());
        carryOut(plans_->of<ActivityRows>(), document.activity(), shift, document.edits());
        if (!records.stops.empty())
            carryOut(plans_->of<AccidentRows>(), document.store().singleton<TAccidentLogTable>(), shift,
                     document.edits());
        result.newKeys = addNames(records, plans_->of<TripRows>(), document);
        return EditOutcome{};
    });
    return result;
}

Result<MergeResult> mergeRecords(const LogRecords& records, TQuobrixDocument& document, std::int32_t shift) {
    Result<Merge> merge = Merge::plan(records, document);
    if (!merge)
        return merge.error();
    return merge->apply(shift);
}

} // namespace quobrix
