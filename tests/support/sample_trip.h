#pragma once

#include "model/quobrix_document.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quobrix::test {

inline constexpr std::int32_t kStart = 1'700'000'000; ///< 2023-11-14 22:13:20 UTC
inline constexpr const char* kVin = "1GTEK19T23E123456";
inline constexpr double kMph = 1.609344 / 3.6; ///< m/s

/// Appends a trip of 10 minutes from START with everything that a trip can hold: 12 km, two hard brakes and an extreme
/// one, one hard acceleration, four bands and standstill, a minute of speed samples, engine speed every 2 s with a
/// missing sample, fuel system status every 5 s.
inline RowIndex addTrip(TQuobrixDocument& document, std::int32_t start) {
    TTripLogTable& trips = document.trips();
    const RowIndex row = trips.rowCount();
    trips.insertRows(row, 1);
    document.vehicles().addMissing(std::vector<std::string>{kVin});
    trips.column<TTripLogVinColumn>().set(row, kVin);
    trips.column<TTripLogQuobrixSerialNumberColumn>().set(row, "K-0042-B");
    trips.column<TTripLogStartTimeColumn>().set(row, start);
    trips.column<TTripLogEndTimeColumn>().set(row, start + 600);
    trips.column<TTripLogDistanceColumn>().set(row, 12000);
    trips.column<TTripLogMaximumSpeedColumn>().set(row, 75 * kMph);
    trips.column<TTripLogHardBrakesColumn>().set(row, 2);
    trips.column<TTripLogPanicBrakesColumn>().set(row, 1);
    trips.column<TTripLogHardAccelerationsColumn>().set(row, 1);
    trips.column<TTripLogPanicAccelerationsColumn>().set(row, 0);
    trips.column<TTripLogHardBrakeThresholdColumn>().set(row, 3);
    trips.column<TTripLogPanicBrakeThresholdColumn>().set(row, 5);
    trips.column<TTripLogHardAccelerationThresholdColumn>().set(row, 2.5);
    trips.column<TTripLogPanicAccelerationThresholdColumn>().set(row, 4);
    trips.column<TTripLogSamplingIntervalColumn>().set(row, 1);
    trips.column<TTripLogHardBrakeTimesColumnColumn>().makeObject(row).setAll({30, 500});
    trips.column<TTripLogPanicBrakeTimesColumnColumn>().makeObject(row).setAll({61});
    trips.column<TTripLogHardAccelerationTimesColumnColumn>().makeObject(row).setAll({5});
    trips.column<TTripLogPanicAccelerationTimesColumnColumn>().makeObject(row);

    TTripLogSpeedBandsTable& bands = trips.column<TTripLogSpeedBandsTableColumn>().makeObject(row);
    bands.insertRows(0, 5);
    bands.column<TTripLogSpeedBandFromColumn>().setAll({0, 0, 45 * kMph, 60 * kMph, 70 * kMph});
    bands.column<TTripLogSpeedBandToColumn>().setAll({0, 45 * kMph, 60 * kMph, 70 * kMph, kNoValue});
    trips.column<TTripLogTimePerSpeedBandColumnColumn>().makeObject(row).setAll({60, 240, 150, 90, 60});
    trips.column<TTripLogTimeInTopSpeedBandColumn>().set(row, 60);

    TTripLogSampleTable& samples = trips.column<TTripLogSampleTableColumn>().makeObject(row);
    samples.insertRows(0, 61);
    std::vector<std::uint8_t> speeds;
    for (std::uint8_t second = 0; second <= 60; ++second)
        speeds.push_back(second);
    samples.speed().setAll(speeds);
    samples.series(0).setSeries({2, 2, false, {800, kNoValue, 2000, 3000}});
    samples.series(1).setSeries({kFuelSystemStatusParameter, 5, true, {2 + 4 * 256, 4 + 2 * 256, kNoValue}});
    return row;
}

} // namespace quobrix::test
