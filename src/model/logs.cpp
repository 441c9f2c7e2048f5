#include "model/logs.h"

#include "model/accident_report.h"
#include "model/activity_log.h"
#include "model/record_totals.h"
#include "model/trip_log.h"
#include "model/trip_report.h"
#include "model/trip_tables.h"
#include "model/trouble_log.h"
#include "model/trouble_report.h"
#include "texts/text.h"

#include <algorithm>
#include <concepts>
#include <iterator>

namespace quobrix {
namespace {

template <std::derived_from<RecordColumn> Record, std::derived_from<LoggerColumn> Logger,
          std::derived_from<DateTimeColumn> Time, class... Code>
constexpr auto& kKeysOf = kTypesOf<Record, Logger, Time, Code...>;

/// A function that makes sections from a table of its own class, as one that adds them to a report on any.
template <auto kMake>
struct SectionsOf;
template <class LogTable, std::vector<Block> (*kMake)(const LogTable&, RowIndex, const TextContext&)>
struct SectionsOf<kMake> {
    static void add(const Table& log, RowIndex row, const TextContext& context, Report& report) {
        std::ranges::move(kMake(static_cast<const LogTable&>(log), row, context), std::back_inserter(report.blocks));
    }
};

/// The same of its tables.
template <auto kMake>
struct TablesOf;
template <class LogTable,
          std::vector<RecordTable> (*kMake)(const LogTable*, std::optional<RowIndex>, const TextContext&)>
struct TablesOf<kMake> {
    static std::vector<RecordTable> make(const Table* log, std::optional<RowIndex> row, const TextContext& context) {
        return kMake(static_cast<const LogTable*>(log), row, context);
    }
};

constexpr LogSpec kLogs[] = {
// clang-format off
#define LOG(Id, Table, Page, Title) {.id = LogId::Id, .key = #Id, .table = Table::kType, .page = Page, .title = SourceText(Title),
#define NAMES(Log, Record) .name = Log, .recordName = Record,
#define WORDS(Record, Records) .record = SourceText(Record), .records = SourceText(Records),
#define KEYS(...) .keys = kKeysOf<__VA_ARGS__>,
#define VEHICLE(Column) .vehicle = &Column::kType,
#define DRIVER(Column) .driver = &Column::kType,
#define COMMENTS(Column) .comments = &Column::kType,
#define RECORDED(Column) .recorded = &Column::kType,
#define SUMMARY(...) .summary = kTypesOf<__VA_ARGS__>,
#define LIST(...) .ownList = kTypesOf<__VA_ARGS__>,
#define FACTS(...) .facts = kTypesOf<__VA_ARGS__>,
#define SECTIONS(Function) .sections = &SectionsOf<&Function>::add,
#define TABLES(Function) .tables = &TablesOf<&Function>::make,
#define GROWING(...) .growing = kTypesOf<__VA_ARGS__>,
#define TOTALS(Function) .totals = &Function,
#define VIEWS(...) .ownViews = {{__VA_ARGS__}},
#define GROUPS(...) .ownGroups = {{__VA_ARGS__}},
#define GROUP(Title, ...) {SourceText(Title), kTypesOf<__VA_ARGS__>},
#define VIEW(Kind, Page, Tab, Path) {LogViewKind::Kind, Page, SourceText(Tab), SourceText(Path)},
#define END },
// clang-format on
#include "model/logs.def"
};

constexpr bool isWhole(const LogSpec& log) {
    return log.table.name.ends_with("Table") && log.ownViews[0].kind == LogViewKind::Summary;
}

constexpr bool areWholeAndInOrder() {
    for (std::size_t i = 0; i < std::size(kLogs); ++i)
        if (kLogs[i].id != static_cast<LogId>(i) || !isWhole(kLogs[i]))
            return false;
    return true;
}
static_assert(areWholeAndInOrder());

} // namespace

std::span<const LogViewSpec> LogSpec::views() const {
    return {ownViews.begin(), std::ranges::find(ownViews, 0, &LogViewSpec::page)};
}

std::string_view LogSpec::className() const { return table.name.substr(0, table.name.rfind("Table")); }

std::string LogSpec::viewName(std::string_view view) const { return std::string(className()).append(view); }

// That the keys are of these classes is told by kKeysOf.
RecordColumn& LogSpec::recordsOf(const Table& log) const { return static_cast<RecordColumn&>(log.columnOf(*keys[0])); }
LoggerColumn& LogSpec::loggersOf(const Table& log) const { return static_cast<LoggerColumn&>(log.columnOf(*keys[1])); }
DateTimeColumn& LogSpec::timesOf(const Table& log) const {
    return static_cast<DateTimeColumn&>(log.columnOf(*keys[2]));
}

RecordedCellsColumn* LogSpec::recordedCellsOf(const Table& log) const {
    return recorded ? &static_cast<RecordedCellsColumn&>(log.columnOf(*recorded)) : nullptr;
}

RecordKey LogSpec::keyOf(const Table& log, RowIndex row) const {
    return {loggersOf(log).at(row), recordsOf(log).at(row),
            keys.size() > 3 ? log.columnOf(*keys[3]).value(row) : Value()};
}

std::optional<RowIndex> LogSpec::rowOf(const Table& log, const RecordKey& wanted, std::size_t nth) const {
    const RecordColumn& identities = recordsOf(log);
    for (RowIndex row = 0; row < log.rowCount(); ++row)
        if (identities.at(row) == wanted.identity && keyOf(log, row) == wanted && nth-- == 0)
            return row;
    return std::nullopt;
}

std::optional<RowIndex> LogSpec::latest(const Table& log) const {
    const DateTimeColumn& times = timesOf(log);
    std::optional<RowIndex> result;
    for (RowIndex row = 0; row < log.rowCount(); ++row)
        if (!result || times.at(row) >= times.at(*result)) // no time is the smallest one
            result = row;
    return result;
}

std::vector<const PersistentType*> LogSpec::listable(const Table& log) const {
    std::vector<const PersistentType*> result, figures;
    const auto add = [&](const PersistentType& type) { // by a column of its own, so as to load none of those in LOG
        const auto object = type.create();
        const auto& column = static_cast<const Column&>(*object);
        const PersistentType* figure = column.repeatsSibling() ? column.repeats() : &type;
        if (column.kind() == ColumnKind::Table || std::ranges::find(figures, figure) != figures.end())
            return;
        figures.push_back(figure);
        result.push_back(&type);
    };
    for (const PersistentType* type : summary)
        add(*type);
    for (std::size_t i = 0; i < log.columnCount(); ++i)
        add(log.spec().column(i));
    return result;
}

ShownText LogSpec::groupOf(const PersistentType& column) const {
    if (ownGroups[0].columns.empty())
        return {};
    for (const ColumnGroup& group : ownGroups)
        if (std::ranges::find(group.columns, &column) != group.columns.end())
            return text(group.title);
    return text(TextId::OtherColumns);
}

ShownText LogSpec::recordHeading() const {
    return plainHeading(static_cast<const Column&>(*recordColumn()->create()).spec());
}

std::span<const LogSpec> logs() { return kLogs; }

const LogSpec& logSpec(LogId id) { return kLogs[static_cast<std::size_t>(id)]; }

ShownText recordTitle(const LogSpec& log, const Table& table, RowIndex row, const TextContext& context) {
    return text(TextId::SideBySide, log.recordHeading(), table.columnOf(*log.recordColumn()).text(row, context));
}

ShownText viewTitle(const LogSpec& log, const LogViewSpec& view, std::string_view number) {
    const ShownText title = text(log.title);
    return fillPlaces(view.path, fmt::make_format_args(title, number));
}

Report recordReport(const LogSpec& log, const Table& table, RowIndex row, const TextContext& context) {
    Facts facts;
    for (const PersistentType* type : log.facts) {
        const Column& column = table.columnOf(*type);
        // Whatever heads the column in a list ("VIN"), what it shows is the vehicle's name.
        facts.facts.push_back(
            {type == log.vehicle ? text(TextId::FactVehicle) : plainHeading(column.spec()), column.text(row, context)});
    }
    Report report{recordTitle(log, table, row, context), {Heading{text(TextId::SectionGeneral)}, std::move(facts)}};
    if (log.sections)
        log.sections(table, row, context, report);
    const Column& comments = table.columnOf(*log.comments);
    if (std::string words = comments.text(row, context); !words.empty()) {
        report.blocks.push_back(Heading{plainHeading(comments.spec())});
        report.blocks.push_back(Paragraph{std::move(words)});
    }
    return report;
}

} // namespace quobrix
