#pragma once

#include "model/log_columns.h"
#include "model/record_table.h"
#include "model/recorded_cells.h"
#include "tables/table.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

struct Report;

/// The logs, in the order in which everything names them.
enum class LogId {
#define LOG(Id, ...) Id,
#include "model/logs.def"
};

inline constexpr std::size_t kLogCount = 0
#define LOG(...) +1
#include "model/logs.def"
    ;

/// The ways to look at a log: at all of its records, and at one of them.
enum class LogViewKind { Summary, Report, Plot, Table };

struct LogViewSpec {
    LogViewKind kind{};
    int page = 0; ///< names it for scripts and help
    SourceText tab{};
    SourceText path{}; ///< with places for the log's title and, unless all records are shown, the record's number
};

using RecordSections = void (*)(const Table& log, RowIndex row, const TextContext& context, Report& report);
/// LOG is there if ROW is; without, the tables have neither columns nor rows.
using RecordTables = std::vector<RecordTable> (*)(const Table* log, std::optional<RowIndex> row,
                                                  const TextContext& context);
using RecordTotals = std::vector<ShownText> (*)(std::span<const TableRows> records, const TextContext& context);

/// Columns that belong together, for whoever chooses some of them.
struct ColumnGroup {
    SourceText title{};
    std::span<const PersistentType* const> columns{};
};

/// What tells a record from all others of its log, whatever rows come and go beside its own.
struct RecordKey {
    std::string logger;
    RecordIdentity identity;
    Value code; ///< nothing in logs whose records have none
    bool operator==(const RecordKey&) const = default;
};

/// A log, as model/logs.def describes it.
struct LogSpec {
    LogId id;
    std::string_view key; ///< "Trips": names it in the properties of a document
    const PersistentType& table;
    int page;                                      ///< its own, and the id of the command that shows it
    SourceText title;                              ///< "Trip Log"
    std::string_view name;                         ///< "trips", on the command line
    std::string_view recordName;                   ///< "trip", on the command line and in the names of windows' parts
    SourceText record, records;                    ///< "trip", "trips", within a sentence
    std::span<const PersistentType* const> keys{}; ///< by which a record is known again: three, or four with its code
    const PersistentType* vehicle = nullptr;       ///< the column that holds the VIN
    const PersistentType* driver = nullptr;        ///< the column that holds the driver's number, if it has one
    const PersistentType* comments = nullptr;
    const PersistentType* recorded = nullptr; ///< the column that keeps cells as they were recorded, if it has one
    std::span<const PersistentType* const> growing{}; ///< hold lists that grow while a record is being recorded
    std::span<const PersistentType* const> summary{};
    std::span<const PersistentType* const> ownList{}; ///< list()
    std::span<const PersistentType* const> facts{};
    RecordSections sections = nullptr; ///< of a record's report, behind the facts; may be none
    RecordTables tables = nullptr;     ///< of a record; there if it has such a view
    RecordTotals totals = nullptr;     ///< of some records, besides how many there are; may be none
    std::array<LogViewSpec, 4> ownViews{};
    std::array<ColumnGroup, 5> ownGroups{};

    const PersistentType* recordColumn() const { return keys[0]; }
    const PersistentType* logger() const { return keys[1]; }
    // The columns of its table that these name.
    RecordColumn& recordsOf(const Table& log) const;
    LoggerColumn& loggersOf(const Table& log) const;
    DateTimeColumn& timesOf(const Table& log) const;
    /// Nothing in logs whose records nobody can change.
    RecordedCellsColumn* recordedCellsOf(const Table& log) const;
    /// ROW must be below the row count of LOG.
    RecordKey keyOf(const Table& log, RowIndex row) const;
    /// Nothing if there is no such record. Clocks that were never set start over, so that several may have one key: the
    /// NTH of them, from 0.
    std::optional<RowIndex> rowOf(const Table& log, const RecordKey& wanted, std::size_t nth = 0) const;
    /// The one that began last; nothing if there are none.
    std::optional<RowIndex> latest(const Table& log) const;
    /// The columns that the list of its records can show: those of the summary, and then every other one of LOG whose
    /// cells are not objects. What several columns show is among them once.
    std::vector<const PersistentType*> listable(const Table& log) const;
    /// What a column stands under where columns are chosen; empty in logs without groups.
    ShownText groupOf(const PersistentType& column) const;
    /// The columns of its list on the command line.
    std::span<const PersistentType* const> list() const { return ownList.empty() ? summary : ownList; }
    /// The ways in which it can be looked at.
    std::span<const LogViewSpec> views() const;
    /// What a record's number is headed by, and follows in its title: "Trip".
    ShownText recordHeading() const;
    /// "TTripLog": what the names of its classes begin with, and so those of its views.
    std::string_view className() const;
    /// The name of one of its views: "TTripLogSummaryView".
    std::string viewName(std::string_view view) const;
};

std::span<const LogSpec> logs();
const LogSpec& logSpec(LogId id);

/// How a record is called everywhere: "Trip 7".
ShownText recordTitle(const LogSpec& log, const Table& table, RowIndex row, const TextContext& context);

/// What stands above a view of LOG: "View / Trip Log / Record 7 / Report". NUMBER, that of the record, is not shown
/// where the view is of all of them.
ShownText viewTitle(const LogSpec& log, const LogViewSpec& view, std::string_view number);

/// The report of the record in ROW, which must be below the row count: its facts, what its log tells besides, and the
/// comments. Parts that the document does not have, or that cannot be read, are left out.
Report recordReport(const LogSpec& log, const Table& table, RowIndex row, const TextContext& context);

} // namespace quobrix
