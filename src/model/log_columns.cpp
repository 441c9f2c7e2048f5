#include "model/log_columns.h"

#include "model/names.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <algorithm>

namespace quobrix {
namespace {

template <class Names>
std::string_view nameIn(const Column& column, std::string_view key, std::string& buffer) {
    const Names* names = column.store() ? column.store()->existingSingleton<Names>() : nullptr;
    return names ? names->displayName(key, buffer) : textIn(buffer, kUnknownName);
}

template <class Names>
std::optional<CellSource> sourceIn(const Column& column, std::string_view key) {
    const Names* names = column.store() ? column.store()->existingSingleton<Names>() : nullptr;
    const RowIndex row = names ? names->find(key) : 0;
    if (!names || row >= names->rowCount())
        return {};
    return CellSource{*names, names->column(1).spec().key, row};
}

} // namespace

std::string_view RecordColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return context.units.formatInteger(static_cast<std::int64_t>(row) + 1, buffer.figure);
}

std::string_view VehicleColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    return nameIn<TVehicleNamesTable>(*this, at(row), buffer.words);
}

std::optional<CellSource> VehicleColumn::sourceOf(RowIndex row) const {
    return sourceIn<TVehicleNamesTable>(*this, at(row));
}

std::string_view LoggerColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    return nameIn<TQuobrixNamesTable>(*this, at(row), buffer.words);
}

std::optional<CellSource> LoggerColumn::sourceOf(RowIndex row) const {
    return sourceIn<TQuobrixNamesTable>(*this, at(row));
}

std::string DriverColumn::namedKey(RowIndex row) const { return has(row) ? std::to_string(at(row)) : std::string(); }

std::string_view DriverColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    return nameIn<DriverNamesTable>(*this, namedKey(row), buffer.words);
}

std::optional<CellSource> DriverColumn::sourceOf(RowIndex row) const {
    return sourceIn<DriverNamesTable>(*this, namedKey(row));
}

std::uint8_t speedSample(double speed) {
    // Half a km/h is no even number of m/s: what the conversion makes a hair less is meant to be one.
    constexpr double kHair = 1e-9, kKilometresPerHour = 3.6; // in a m/s
    return static_cast<std::uint8_t>(std::clamp(speed * kKilometresPerHour + 0.5 + kHair, 0.0, 255.0));
}

double SpeedSamplesColumn::speed(RowIndex row) const { return toBaseFrom(UnitId::KilometrePerHour, at(row)); }

std::string_view SpeedSamplesColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    return context.units.formatValueWithUnits(spec().unit, speed(row), buffer.figure);
}

void SpeedSamplesColumn::setValue(RowIndex row, const Value& value) {
    const auto* speed = std::get_if<double>(&value);
    set(row, speed ? speedSample(*speed) : std::uint8_t{0});
}

void SpeedSamplesColumn::setInterval(std::uint32_t seconds) {
    interval_ = seconds;
    setModified();
}

void SpeedSamplesColumn::write(ByteWriter& out) const {
    out.u32(interval_);
    ArrayColumn::write(out);
}

bool SpeedSamplesColumn::read(ByteReader& in, std::uint8_t schema) {
    interval_ = in.u32();
    return interval_ != 0 && ArrayColumn::read(in, schema);
}

} // namespace quobrix
