#pragma once

#include "device/records.h"
#include "model/quobrix_document.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// How a record of the logger and a row of its log compare, two parts of one whole being what they may be: what the one
/// holds is then the beginning, or a part, of what the other holds.
struct Comparison {
    bool differs = false; ///< they contradict each other
    bool recordHasMore = false, rowHasMore = false;
    std::uint64_t common = 0; ///< how much they hold in common; of two rows the closer one has more

    /// One of them is the whole of the other, or they are equal.
    bool same() const { return !differs && !(recordHasMore && rowHasMore); }
    bool equal() const { return !differs && !recordHasMore && !rowHasMore; }
    /// The record can take the row's place, and nothing is lost.
    bool fuller() const { return same() && recordHasMore; }

    void require(bool agrees) { differs = differs || !agrees; }
    /// A vehicle that does not tell its VIN, or something else instead, may be any.
    void vin(std::string_view row, std::string_view record);
    /// What only grows while recording goes on.
    void growing(std::uint64_t row, std::uint64_t record);
    /// What both hold must be the same, but for the last bit in which computers may differ.
    void figure(double row, double record);
    void code(std::int32_t row, std::int32_t record);
    /// The shorter one must be the beginning of the longer one.
    template <class T>
    void sequence(const std::vector<T>& row, const std::vector<T>& record) {
        const auto length = static_cast<std::ptrdiff_t>(std::min(row.size(), record.size()));
        require(std::equal(row.begin(), row.begin() + length, record.begin()));
        growing(row.size(), record.size());
    }
};

// One log each: its record and table, the log whose description names the columns that a record is known again by, and
//   time(record)                          when it happened by the logger's clock
//   code(record), codeAt(table, row)      what else tells records of one time apart
//   compare(table, row, record, shift)    SHIFT (s): what the row's times have been moved by
//   completes(table, row, record)         the record names a vehicle or driver where the row has none
//   complete(table, row, record)          puts them there
//   fill(table, row, record, shift)       makes the row hold the record; what the record does not tell of the vehicle
//                                         and the driver stays, and so does what a person has entered
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
    static void complete(TableType& table, RowIndex row, const Record& record);
    static void fill(TableType& table, RowIndex row, const Record& record, std::int64_t shift);
};

/// The vehicle in the logs where no person gives it.
template <class Table, class VinColumn, class RecordType>
struct RecordedVehicle {
    using Record = RecordType;
    using TableType = Table;
    using Vin = VinColumn;

    static bool completes(const Table& table, RowIndex row, const Record& record) {
        return !isVin(table.template column<Vin>().at(row)) && isVin(record.origin.vin);
    }
    static void complete(Table& table, RowIndex row, const Record& record) {
        auto& vins = table.template column<Vin>();
        if (isVin(record.origin.vin) || !vins.has(row))
            vins.set(row, record.origin.vin);
    }
};

struct TroubleRows : RecordedVehicle<TTroubleLogTable, TTroubleLogVinColumn, TroubleRecord> {
    static constexpr LogId kLog = LogId::Troubles;

    static std::int32_t time(const Record& record) { return record.time; }
    static std::string code(const Record& record) { return record.code; }
    static std::string codeAt(const TableType& table, RowIndex row) {
        return table.column<TTroubleLogTroubleCodeColumn>().at(row);
    }
    static Comparison compare(const TableType& table, RowIndex row, const Record& record, std::int64_t shift);
    static void fill(TableType& table, RowIndex row, const Record& record, std::int64_t shift);
};

struct ActivityRows : RecordedVehicle<TSecurityLogTable, TSecurityLogVinColumn, ActivityRecord> {
    static constexpr LogId kLog = LogId::Activity;

    static std::int32_t time(const Record& record) { return record.time; }
    static std::string code(const Record& record);
    static std::string codeAt(const TableType& table, RowIndex row);
    static Comparison compare(const TableType& table, RowIndex row, const Record& record, std::int64_t shift);
    static void fill(TableType& table, RowIndex row, const Record& record, std::int64_t shift);
};

struct AccidentRows : RecordedVehicle<TAccidentLogTable, TAccidentLogTableVinColumn, StopRecord> {
    static constexpr LogId kLog = LogId::Accidents;

    static std::int32_t time(const Record& record) { return record.startTime; }
    static std::string code(const Record&) { return {}; }
    static std::string codeAt(const TableType&, RowIndex) { return {}; }
    static Comparison compare(const TableType& table, RowIndex row, const Record& record, std::int64_t shift);
    static void fill(TableType& table, RowIndex row, const Record& record, std::int64_t shift);
};

/// A logger time with a shift (s), within what a time can hold.
std::int32_t shifted(std::int32_t time, std::int64_t shift);

} // namespace quobrix
