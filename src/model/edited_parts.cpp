#include "model/edited_parts.h"

#include "model/trip_log.h"

#include <algorithm>

namespace quobrix {

const TableSpec& SpeedProfileTable::spec() const {
    static constexpr TableSpec spec{kType, kTypesOf<SpeedProfileSpeedColumn>, kTypesOf<SpeedProfileTimeColumn>,
                                    SourceText("Trip Samples")};
    return spec;
}

const TableSpec& EditedBandsTable::spec() const {
    static constexpr TableSpec spec{
        kType, kTypesOf<EditedBandFromColumn, EditedBandToColumn>, {}, SourceText("Trip Speed Bands")};
    return spec;
}

Value EditedSampleTimeColumn::value(RowIndex row) const {
    return static_cast<std::int64_t>(row) * static_cast<const SpeedProfileTable&>(*table()).interval;
}

std::unique_ptr<SpeedProfileTable> editedSamples(const TTripLogSampleTable& samples) {
    auto edited = std::make_unique<SpeedProfileTable>();
    edited->interval = samples.speed().interval();
    edited->insertRows(0, samples.rowCount());
    for (RowIndex row = 0; row < samples.rowCount(); ++row)
        edited->column<SpeedProfileSpeedColumn>().set(row, samples.speed().speed(row));
    return edited;
}

std::vector<std::uint8_t> samplesOf(const SpeedProfileTable& edited) {
    std::vector<std::uint8_t> speeds;
    for (const double speed : edited.column<SpeedProfileSpeedColumn>().values())
        speeds.push_back(speedSample(speed));
    return speeds;
}

std::unique_ptr<EditedBandsTable> editedBands(const TTripLogSpeedBandsTable& bands) {
    auto edited = std::make_unique<EditedBandsTable>();
    edited->insertRows(0, bands.rowCount());
    for (RowIndex row = 0; row < bands.rowCount(); ++row) {
        edited->column<EditedBandFromColumn>().set(row, bands.column<TTripLogSpeedBandFromColumn>().at(row));
        edited->column<EditedBandToColumn>().set(row, bands.column<TTripLogSpeedBandToColumn>().at(row));
    }
    return edited;
}

} // namespace quobrix
