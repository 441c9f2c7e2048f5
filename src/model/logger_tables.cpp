#include "model/logger_tables.h"

#include "messages/message.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

constexpr SourceText kAndAbove("and above");
constexpr std::int32_t kSamplingIntervals[] = {1, 5, 10, 20, 30, 60}; // s

std::string intervalText(long seconds) {
    return counted(TextId::SamplingEvery, static_cast<std::uint64_t>(std::max(0l, seconds)), seconds);
}

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

bool TDownloadTable::knows(const std::string& serialNumber) const {
    return std::ranges::count(column<TDownloadTableSerialNumberColumn>().values(), serialNumber) > 0;
}

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
SPEC(TParametersTable, "Parameters", TParametersDescriptionColumn, TParametersIsSupportedColumn)
SPEC(TCurrentParametersTable, "Parameters", TCurrentParametersParameterColumn, TCurrentParametersSamplingIntervalColumn)
#undef SPEC

ShownText AscendingColumn::conflict(RowIndex row) const {
    const double before = row == 0 ? 0 : at(row - 1);
    return !has(row) || at(row) > before ? ShownText() : quobrix::text(TextId::MustAscend);
}

double SpeedBandFromColumn::from(RowIndex row) const {
    return row == 0 ? 0 : table()->column<TCurrentSpeedBandToColumn>().at(row - 1);
}

Value SpeedBandFromColumn::value(RowIndex row) const {
    const double lower = from(row);
    return hasValue(lower) ? Value(lower) : Value();
}

std::string_view SpeedBandFromColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    const double lower = from(row);
    return hasValue(lower) ? context.units.formatValueWithUnits(spec().unit, lower, buffer.figure) : "";
}

std::string_view SpeedBandToColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return isLast(row) && !has(row) ? textIn(buffer.words, kAndAbove) : RealColumn::textView(row, context, buffer);
}

ShownText SpeedBandToColumn::conflict(RowIndex row) const {
    return has(row) || isLast(row) ? AscendingColumn::conflict(row) : quobrix::text(TextId::RequiredButMissing);
}

ShownText SpeedBandToColumn::lock(RowIndex row) const {
    return isLast(row) ? quobrix::text(TextId::LastBandIsOpen) : ShownText();
}

std::vector<Selection> ParameterChoiceColumn::selections() const {
    std::vector<Selection> all;
    for (std::int32_t code = kNoParameter; code <= kParameterCount; ++code)
        all.push_back({code, selection(code)});
    return all;
}

std::string ParameterChoiceColumn::selection(std::int32_t code) const {
    const auto* slots = dynamic_cast<const TCurrentParametersTable*>(table());
    return slots ? slots->choices().choice(code) : parameterChoiceName(code);
}

ShownText ParameterChoiceColumn::conflict(RowIndex row) const {
    if (at(row) == kNoParameter || std::ranges::count(values(), at(row)) < 2)
        return {};
    return makeMessage(MessageId::DuplicateParameters).text;
}

Value SamplingIntervalColumn::value(RowIndex row) const {
    return has(row) ? Value(static_cast<std::int64_t>(std::lround(at(row)))) : Value();
}

std::string_view SamplingIntervalColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    if (!has(row))
        return {};
    buffer.words = intervalText(std::lround(at(row)));
    return buffer.words;
}

Parsed SamplingIntervalColumn::parse(std::string_view text, const TextContext&) const {
    for (const std::int32_t seconds : kSamplingIntervals)
        if (text == std::to_string(seconds))
            return {Value(std::int64_t{seconds}), {}};
    return parseSelection(selections(), text);
}

void SamplingIntervalColumn::setValue(RowIndex row, const Value& value) {
    const auto* seconds = std::get_if<std::int64_t>(&value);
    set(row, seconds ? static_cast<double>(*seconds) : kNoValue);
}

std::vector<Selection> SamplingIntervalColumn::selections() const {
    std::vector<Selection> all;
    for (const std::int32_t seconds : kSamplingIntervals)
        all.push_back({seconds, intervalText(seconds)});
    return all;
}

TParametersTable::TParametersTable() {
    insertRows(0, kParameterCount + 1);
    for (std::int32_t parameter = kNoParameter; parameter <= kParameterCount; ++parameter)
        column<TParametersDescriptionColumn>().set(static_cast<RowIndex>(parameter), parameterChoiceName(parameter));
    column<TParametersIsSupportedColumn>().setAll(std::vector<std::uint8_t>(kParameterCount + 1, 1));
}

std::string TParametersTable::choice(std::int32_t parameter) const {
    if (parameter < kNoParameter || parameter > kParameterCount)
        return {};
    const auto row = static_cast<RowIndex>(parameter);
    const std::string& name = column<TParametersDescriptionColumn>().at(row);
    return column<TParametersIsSupportedColumn>().at(row) ? name : std::string(text(TextId::NotSupported, name));
}

} // namespace quobrix
