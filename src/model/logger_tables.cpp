#include "model/logger_tables.h"

#include <algorithm>

namespace quobrix {
namespace {

/// Sets TIME in the row of SERIAL_NUMBER, which is added if it is not there.
template <class SerialColumn, class TimeColumn>
void recordTime(Table& table, const std::string& serialNumber, std::int32_t time) {
    if (!table.rowLock().empty())
        return; // what it says is worth less than what would be lost
    const std::vector<std::string>& serials = table.column<SerialColumn>().values();
    const auto found = std::find(serials.begin(), serials.end(), serialNumber);
    const RowIndex row = static_cast<RowIndex>(found - serials.begin());
    if (row == table.rowCount()) {
        table.insertRows(row, 1);
        table.column<SerialColumn>().set(row, serialNumber);
    }
    table.column<TimeColumn>().set(row, time);
}

} // namespace

void TDownloadTable::record(const std::string& serialNumber, std::int32_t time) {
    recordTime<TDownloadTableSerialNumberColumn, TDownloadTableMostRecentDownloadColumn>(*this, serialNumber, time);
}

void TClearTable::record(const std::string& serialNumber, std::int32_t time) {
    recordTime<TClearTableSerialNumberColumn, TClearTableMostRecentClearColumn>(*this, serialNumber, time);
}

#define SPEC(Name, Title, First, Second)                                                                               \
    const TableSpec& Name::spec() const {                                                                              \
        static constexpr TableSpec spec{kType, kTypesOf<First, Second>, {}, SourceText(Title)};                        \
        return spec;                                                                                                   \
    }
SPEC(TDownloadTable, "Downloads", TDownloadTableSerialNumberColumn, TDownloadTableMostRecentDownloadColumn)
SPEC(TClearTable, "Memory Clears", TClearTableSerialNumberColumn, TClearTableMostRecentClearColumn)
SPEC(TCurrentSpeedBandsTable, "Speed Bands", TCurrentSpeedBandFromColumn, TCurrentSpeedBandToColumn)
SPEC(TCurrentParametersTable, "Parameters", TCurrentParametersParameterColumn, TCurrentParametersSamplingIntervalColumn)
#undef SPEC

} // namespace quobrix
