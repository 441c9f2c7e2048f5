#include "model/log_columns.h"

#include "model/names.h"
#include "units/unit_system.h"

namespace quobrix {
namespace {

template <class Names>
std::string nameIn(const Column& column, std::string_view key) {
    const Names* names = column.store() ? column.store()->existingSingleton<Names>() : nullptr;
    return names ? names->displayName(key) : std::string(kUnknownName);
}

} // namespace

std::string RecordColumn::text(RowIndex row, const TextContext& context) const {
    return context.units.formatInteger(static_cast<std::int64_t>(row) + 1);
}

std::string VehicleColumn::text(RowIndex row, const TextContext&) const {
    return nameIn<TVehicleNamesTable>(*this, at(row));
}

std::string LoggerColumn::text(RowIndex row, const TextContext&) const {
    return nameIn<TQuobrixNamesTable>(*this, at(row));
}

std::string DriverColumn::text(RowIndex row, const TextContext&) const {
    return nameIn<DriverNamesTable>(*this, has(row) ? std::to_string(at(row)) : std::string());
}

double SpeedSamplesColumn::speed(RowIndex row) const { return toBaseFrom(UnitId::KilometrePerHour, at(row)); }

std::string SpeedSamplesColumn::text(RowIndex row, const TextContext& context) const {
    return context.units.formatValueWithUnits(spec().unit, speed(row));
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
