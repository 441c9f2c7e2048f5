/// That nothing which a logger recorded is missing in a list: every field of what the simulator says it holds is found
/// again, in the unit of its column and as it is quantised when it is stored.
#include "support/drive_sheet.h"
#include "system/programs.h"

#include <cmath>
#include <fstream>
#include <numbers>
#include <optional>
#include <set>

namespace quobrix {
namespace {

using namespace test;

using Leaves = std::map<std::string, JsonValue>;

/// What is beside, or in, which key, and how: dumped × factor + offset. A last '#' stands for every place in an array.
struct Field {
    const char* dumped;
    const char* listed;
    double factor = 1, offset = 0;
};

constexpr double kKmh = 1 / 3.6, kKilo = 1000, kRpm = 1 / 60.0, kKelvin = 273.15;

const std::vector<Field> kTrip = {
    {"vin", "TTripLogVinColumn"},
    {"driver", "TTripLogDriverIDColumn"},
    {"start", "TTripLogStartTimeColumn"},
    {"end", "TTripLogEndTimeColumn"},
    {"disconnected", "TTripLogDisconnectedDuringTripColumn"},
    {"distance", "TTripLogDistanceColumn"},
    {"maximumSpeed", "TTripLogMaximumSpeedColumn", kKmh},
    {"thresholds.0", "TTripLogHardBrakeThresholdColumn"},
    {"thresholds.1", "TTripLogPanicBrakeThresholdColumn"},
    {"thresholds.2", "TTripLogHardAccelerationThresholdColumn"},
    {"thresholds.3", "TTripLogPanicAccelerationThresholdColumn"},
    {"bandLimits.0", "TTripLogSpeedBandsTableColumn.TTripLogSpeedBandToColumn.1", kKmh},
    {"bandLimits.1", "TTripLogSpeedBandsTableColumn.TTripLogSpeedBandToColumn.2", kKmh},
    {"bandLimits.2", "TTripLogSpeedBandsTableColumn.TTripLogSpeedBandFromColumn.4", kKmh},
    {"idleSeconds", "TTripLogTimePerSpeedBandColumnColumn.0"},
    {"bandSeconds.0", "TTripLogTimePerSpeedBandColumnColumn.1"},
    {"bandSeconds.1", "TTripLogTimePerSpeedBandColumnColumn.2"},
    {"bandSeconds.2", "TTripLogTimePerSpeedBandColumnColumn.3"},
    {"bandSeconds.3", "TTripLogTimeInTopSpeedBandColumn"},

    {"hardBrakes.#", "TTripLogHardBrakeTimesColumnColumn.#"},
    {"extremeBrakes.#", "TTripLogPanicBrakeTimesColumnColumn.#"},
    {"hardAccelerations.#", "TTripLogHardAccelerationTimesColumnColumn.#"},
    {"extremeAccelerations.#", "TTripLogPanicAccelerationTimesColumnColumn.#"},
    {"speedInterval", "TTripLogSampleTableColumn.TTripLogSampleSpeedColumn.interval"},
    {"speeds.#", "TTripLogSampleTableColumn.TTripLogSampleSpeedColumn.values.#", kKmh},
};
const std::vector<Field> kTrouble = {
    {"vin", "TTroubleLogVinColumn"},
    {"time", "TTroubleLogTimeRecordedColumn"},
    {"code", "TTroubleLogTroubleCodeColumn"},
    {"fuelSystem1", "TTroubleLogFuelSystemOneStatusColumn"},
    {"fuelSystem2", "TTroubleLogFuelSystemTwoStatusColumn"},
    {"load", "TTroubleLogCalculatedLoadValueColumn"},
    {"coolant", "TTroubleLogEngineCoolantTemperatureColumn", 1, kKelvin},
    {"shortTrims.0", "TTroubleLogShortTermFuelTrimBankOneColumn"},
    {"shortTrims.1", "TTroubleLogShortTermFuelTrimBankTwoColumn"},
    {"longTrims.0", "TTroubleLogLongTermFuelTrimBankOneColumn"},
    {"longTrims.1", "TTroubleLogLongTermFuelTrimBankTwoColumn"},
    {"fuelPressure", "TTroubleLogFuelPressureColumn", kKilo},
    {"manifoldPressure", "TTroubleLogIntakeManifoldPressureColumn", kKilo},
    {"engineSpeed", "TTroubleLogEngineSpeedColumn", kRpm},
    {"vehicleSpeed", "TTroubleLogVehicleSpeedColumn", kKmh},
};
const std::vector<Field> kActivity = {
    {"vin", "TSecurityLogVinColumn"},
    {"time", "TSecurityLogTimeRecordedColumn"},
    {"event", "TSecurityLogEventTypeColumn"},
};
const std::vector<Field> kStop = {
    {"vin", "TAccidentLogTableVinColumn"},
    {"start", "TAccidentLogTableStartTimeColumn"},
    {"standstill", "TAccidentLogTableTimestampColumn"},
    {"maximumSpeed", "TAccidentLogTableMaximumSpeedColumn", kKmh}, // that of the samples
    {"bandLimits.0", "TAccidentLogSpeedBandsTableColumn.TAccidentLogSpeedBandToColumn.1", kKmh},
    {"bandLimits.1", "TAccidentLogSpeedBandsTableColumn.TAccidentLogSpeedBandToColumn.2", kKmh},
    {"bandLimits.2", "TAccidentLogSpeedBandsTableColumn.TAccidentLogSpeedBandFromColumn.4", kKmh},
    {"interval", "TAccidentLogSpeedSamplesColumn.interval"},
    {"speeds.#", "TAccidentLogSpeedSamplesColumn.values.#", kKmh},
};

/// How a sampled parameter is stored, raw = value × scale + shift, and what that stands for, raw × step + first in the
/// logger's unit, which × factor + offset is the base unit.
struct Quantity {
    int from, to; ///< identifiers
    double scale, shift, step, first, factor = 1, offset = 0;
};
constexpr Quantity kQuantities[] = {
    {1, 1, 1, 0, 1, 0, kKmh},
    {2, 2, 4, 0, 0.25, 0, kRpm},
    {3, 3, 2.55, 0, 100 / 255.0, 0},
    {4, 4, 1, 40, 1, -40, 1, kKelvin},
    {5, 5, 2.55, 0, 100 / 255.0, 0},
    {6, 6, 1, 0, 1, 0, kKilo},
    {7, 7, 100, 0, 0.01, 0, 0.001},
    {8, 8, 1, 40, 1, -40, 1, kKelvin},
    {9, 9, 2, 128, 0.5, -64, std::numbers::pi / 180},
    {10, 10, 1 / 3.0, 0, 3, 0, kKilo},
    {11, 11, 1, 0, 1, 0},
    {12, 15, 1.28, 128, 0.78125, -100},
    {16, 23, 200, 0, 0.005, 0},
    {24, 24, 44.1306266548985, 0, 0.02266, 0},
};

double stored(int parameter, double value) {
    for (const Quantity& q : kQuantities)
        if (parameter >= q.from && parameter <= q.to)
            return (std::trunc(value * q.scale + q.shift + 0.5) * q.step + q.first) * q.factor + q.offset;
    return NAN;
}

/// The records of an array that lies at PATH, each as the leaves below it.
std::vector<Leaves> recordsAt(const Leaves& all, const std::string& path) {
    std::vector<Leaves> records;
    for (const auto& [key, value] : all) {
        if (!key.starts_with(path))
            continue;
        const std::size_t dot = key.find('.', path.size());
        const std::size_t place = std::stoul(key.substr(path.size(), dot - path.size()));
        records.resize(std::max(records.size(), place + 1));
        records[place].emplace(key.substr(dot + 1), value);
    }
    return records;
}

class Fields : public Programs {
protected:
    /// Compares what the logger of PORT holds with what a download makes of it.
    void compare(const std::string& port) {
        SCOPED_TRACE(port);
        const std::string file = "of " + port + ".car"; // Windows has devices called as ports are
        const Outcome downloaded = download(file, port);
        ASSERT_EQ(downloaded.exitCode, 0) << downloaded.error;
        const Leaves all = jsonLeaves(sim({"dump", port, "--format", "json"}).out);
        const auto listed = [&](const char* log) {
            const Outcome list = cli({"list", log, file, "--format", "json", "--samples"});
            EXPECT_EQ(list.exitCode, 0) << list.error;
            return recordsAt(jsonLeaves(list.out), "");
        };
        serial_ = all.at("serial");
        compareRecords(recordsAt(all, "trips."), listed("trips"), kTrip, {"start"},
                       "TTripLogQuobrixSerialNumberColumn");
        compareRecords(recordsAt(all, "troubles."), listed("troubles"), kTrouble, {"time", "code"},
                       "TTroubleLogQuobrixSerialNumberColumn");
        compareRecords(recordsAt(all, "activity."), listed("activity"), kActivity, {"time", "event"},
                       "TSecurityLogQuobrixIdColumn");
        compareRecords(recordsAt(all, "stops."), listed("accidents"), kStop, {"start"},
                       "TAccidentLogTableQuobrixSerialNumberColumnName");
    }

private:
    static const Field* fieldOf(const std::vector<Field>& fields, const std::string& name) {
        for (const Field& field : fields)
            if (name == field.dumped)
                return &field;
        return nullptr;
    }

    void compareRecords(const std::vector<Leaves>& dumped, const std::vector<Leaves>& listed,
                        const std::vector<Field>& fields, const std::vector<std::string>& keys, const char* logger) {
        ASSERT_EQ(dumped.size(), listed.size()) << logger;
        std::map<std::vector<JsonValue>, const Leaves*> known;
        for (const Leaves& record : listed) {
            EXPECT_EQ(record.at(logger), serial_);
            std::vector<JsonValue> key;
            for (const std::string& name : keys)
                key.push_back(record.at(fieldOf(fields, name)->listed));
            EXPECT_TRUE(known.emplace(key, &record).second) << "two records that this test cannot tell apart";
        }
        for (const Leaves& record : dumped) {
            std::vector<JsonValue> key;
            for (const std::string& name : keys)
                key.push_back(record.at(name));
            ASSERT_TRUE(known.contains(key));
            for (const auto& [path, value] : record)
                compareLeaf(record, path, value, *known.at(key), fields);
        }
    }

    void compareLeaf(const Leaves& record, const std::string& path, const JsonValue& value, const Leaves& listed,
                     const std::vector<Field>& fields) {
        if (path.starts_with("series."))
            return compareSeries(record, path, value, listed);
        const Field* field = fieldOf(fields, path);
        std::string target = field ? field->listed : "", place;
        if (const std::size_t dot = path.rfind('.'); !field && dot != path.npos) {
            place = path.substr(dot + 1);
            field = fieldOf(fields, path.substr(0, dot) + ".#");
            if (field) {
                target = field->listed;
                target.replace(target.size() - 1, 1, place);
                expectSameEnd(record, path.substr(0, dot + 1), listed, target.substr(0, target.size() - place.size()),
                              place);
            }
        }
        ASSERT_TRUE(field) << "the list has no place for " << path;
        ASSERT_TRUE(listed.contains(target)) << path;
        JsonValue expected = value;
        if (path == "driver" && value == JsonValue(0.0))
            expected = {}; // none was identified
        if (path == "maximumSpeed" && field->listed == std::string_view("TAccidentLogTableMaximumSpeedColumn"))
            for (std::size_t i = 0; record.contains("speeds." + std::to_string(i)); ++i) {
                const double speed = std::get<double>(record.at("speeds." + std::to_string(i)));
                expected = i == 0 ? speed : std::max(std::get<double>(expected), speed);
            }
        expectValue(listed.at(target), expected, path,
                    [&](double number) { return number * field->factor + field->offset; });
    }

    /// "series.1.samples.7"
    void compareSeries(const Leaves& record, const std::string& path, const JsonValue& value, const Leaves& listed) {
        const std::size_t slot = std::stoul(path.substr(7));
        const std::string series = "series." + std::to_string(slot) + ".";
        const std::string column = "TTripLogSampleTableColumn.TTripLogParameter" + std::to_string(slot + 1) + "Column.";
        const std::string field = path.substr(series.size());
        const std::size_t dot = field.find('.');
        if (dot == field.npos) {
            ASSERT_TRUE(listed.contains(column + field)) << path;
            return expectValue(listed.at(column + field), value, path, [](double number) { return number; });
        }
        ASSERT_EQ(field.substr(0, dot), "samples") << "the list has no place for " << path;
        const std::string place = field.substr(dot + 1), target = column + "values." + place;
        ASSERT_TRUE(listed.contains(target)) << path;
        const int parameter = static_cast<int>(std::get<double>(record.at(series + "parameter")));
        expectValue(listed.at(target), value, path, [&](double number) { return stored(parameter, number); });
        expectSameEnd(record, series + "samples.", listed, column + "values.", place);
    }

    /// The arrays at PATH and TARGET go on behind PLACE, or both end there.
    static void expectSameEnd(const Leaves& record, const std::string& path, const Leaves& listed,
                              const std::string& target, const std::string& place) {
        const std::string next = std::to_string(std::stoul(place) + 1);
        EXPECT_EQ(record.contains(path + next), listed.contains(target + next)) << path << next;
    }

    template <class Convert>
    static void expectValue(const JsonValue& listed, const JsonValue& dumped, const std::string& path,
                            const Convert& convert) {
        const auto* number = std::get_if<double>(&dumped);
        if (!number) {
            EXPECT_EQ(listed, dumped) << path;
            return;
        }
        ASSERT_TRUE(std::holds_alternative<double>(listed)) << path;
        EXPECT_NEAR(std::get<double>(listed), convert(*number), 1e-9 * std::max(1.0, std::abs(convert(*number))))
            << path;
    }

    JsonValue serial_;
};

TEST_F(Fields, OfEveryRecordAreListed) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    ASSERT_EQ(sim({"household", "COM3", "pickup"}).exitCode, 0);
    compare("COM3");

    // Parameters that the vehicle does not tell all the time, and a severe stop.
    ASSERT_EQ(sim({"attach", "COM4", "--serial", "K-0043-B", "--parameter", "1:1,2:1,7:5,24:10,11:5"}).exitCode, 0);
    std::ofstream(folder_ / "drive.csv", std::ios::binary)
        << "seconds,engine_rpm,speed_kmh\n0,,0\n3,2600.3,58\n9,900,90\n16,700,0\n17,700,0\n";
    const Outcome recorded = sim({"record", "COM4", "drive.csv", "--start", "2024-03-01 08:00:00", "--driver", "7"});
    ASSERT_EQ(recorded.exitCode, 0) << recorded.error;
    compare("COM4");
}

} // namespace
} // namespace quobrix
