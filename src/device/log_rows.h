#pragma once

#include "device/records.h"
#include "model/quobrix_document.h"
#include "model/record_comparison.h"

#include <cstdint>
#include <string>

namespace quobrix {

// One log each: its record and table, the log whose description names the columns that a record is known again by, and
//   time(record)                          when it happened by the logger's clock
//   code(record), codeAt(table, row)      what else tells records of one time apart
//   compare(table, row, record, shift)    SHIFT (s): what the row's times have been moved by
//   completes(table, row, record)         the record names a vehicle or driver where the row has none
//   complete(table, row, record)          puts them there
//   fill(table, row, record, shift)       makes the row hold the record; what the record does not tell of the vehicle
//                                         and the driver stays, and so does what a person has entered
//   isFixed(table, row)                   a person has changed what the row owns, so that no record takes its place
// A row is compared as it was recorded; complete() and fill() are called while it is as it was recorded (exchange()).
// What of a row cannot be read is not compared.

struct TripRows {
    using Record = TripRecord;
    using TableType = TTripLogTable;
    using Vin = TTripLogVinColumn;
    static constexpr LogId kLog = LogId::Trips;

    static std::int32_t time(const Record& record) { return record.startTime; }
    static std::string code(const Record&) { return {}; }
    static std::string codeAt(const TableType&, RowIndex) { return {}; }
    static Comparison compare(const TableType& table, RowIndex row, const Record& record, std::int64_t shift);
    static bool completes(const TableType& table, RowIndex row, const Record& record);
    static bool isFixed(const TableType& table, RowIndex row) { return table.hasOtherParts(row); }
    static void complete(TableType& table, RowIndex row, const Record& record);
    static void fill(TableType& table, RowIndex row, const Record& record, std::int64_t shift);
};

/// The vehicle in the logs where no person gives it.
template <LogId kId, class Table, class VinColumn, class RecordType>
struct RecordedVehicle {
    static constexpr LogId kLog = kId;
    using Record = RecordType;
    using TableType = Table;
    using Vin = VinColumn;

    static bool completes(const Table& table, RowIndex row, const Record& record) {
        const auto& vins = table.template column<Vin>();
        return !isVin(recordedAt(vins, logSpec(kLog).recordedCellsOf(table), row)) && isVin(record.origin.vin);
    }
    static bool isFixed(const Table&, RowIndex) { return false; }
    static void complete(Table& table, RowIndex row, const Record& record) {
        auto& vins = table.template column<Vin>();
        if (isVin(record.origin.vin) || !vins.has(row))
            vins.set(row, record.origin.vin);
    }
};

struct TroubleRows : RecordedVehicle<LogId::Troubles, TTroubleLogTable, TTroubleLogVinColumn, TroubleRecord> {
    static std::int32_t time(const Record& record) { return record.time; }
    static std::string code(const Record& record) { return record.code; }
    static std::string codeAt(const TableType& table, RowIndex row) {
        return recordedAt(table.column<TTroubleLogTroubleCodeColumn>(), &table.column<TTroubleLogRecordedCellsColumn>(),
                          row);
    }
    static Comparison compare(const TableType& table, RowIndex row, const Record& record, std::int64_t shift);
    static void fill(TableType& table, RowIndex row, const Record& record, std::int64_t shift);
};

struct ActivityRows : RecordedVehicle<LogId::Activity, TSecurityLogTable, TSecurityLogVinColumn, ActivityRecord> {
    static std::int32_t time(const Record& record) { return record.time; }
    static std::string code(const Record& record);
    static std::string codeAt(const TableType& table, RowIndex row);
    static Comparison compare(const TableType& table, RowIndex row, const Record& record, std::int64_t shift);
    static void fill(TableType& table, RowIndex row, const Record& record, std::int64_t shift);
};

struct AccidentRows : RecordedVehicle<LogId::Accidents, TAccidentLogTable, TAccidentLogTableVinColumn, StopRecord> {
    static std::int32_t time(const Record& record) { return record.startTime; }
    static std::string code(const Record&) { return {}; }
    static std::string codeAt(const TableType&, RowIndex) { return {}; }
    static Comparison compare(const TableType& table, RowIndex row, const Record& record, std::int64_t shift);
    static void fill(TableType& table, RowIndex row, const Record& record, std::int64_t shift);
};

/// A logger time with a shift (s), within what a time can hold.
std::int32_t shifted(std::int32_t time, std::int64_t shift);

} // namespace quobrix
