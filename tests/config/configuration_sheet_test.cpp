#include "config/configuration_sheet.h"

#include "config/configuration_codes.h"
#include "config/configuration_rules.h"
#include "config/driving_history.h"
#include "config/limit_pictures.h"
#include "config/parameter_threshold_sheet.h"
#include "config/reported_parameters.h"
#include "model/logger_tables.h"
#include "model/parameter_thresholds.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "support/fixed_measure.h"
#include "tables/check.h"
#include "tables/table_edits.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quobrix::testing {
namespace {

const LoggerConfiguration kAsRead{.bandLimits = {45.000000001, 60, 70},
                                  .brakeThresholds = {2.745862, 4.707192},
                                  .accelerationThresholds = {0.1, 1e-300},
                                  .parameters = {0x0C, 0x42, 0xF9, 0xE1, 0x03},
                                  .intervals = {1, 3, 16, 32, -7}};

class Sheets : public ::testing::Test {
protected:
    Sheets() {
        units_.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
        units_.setUnit(UnitTypeId::Acceleration, UnitId::StandardGravity);
        units_.setUnit(UnitTypeId::Temperature, UnitId::Celsius);
        units_.setUnit(UnitTypeId::EngineSpeed, UnitId::RevolutionPerMinute);
    }
    /// The cells of SHEET as they read, '!' behind those that are marked as errors.
    std::string shown(ValueSheet& sheet) {
        std::string all;
        TableChecker checker(sheet.table());
        for (RowIndex row = 0; row < sheet.table().rowCount(); ++row) {
            all += sheet.rowTitle(row) + ":";
            for (std::size_t i = 0; i < sheet.table().columnCount(); ++i) {
                const auto found = checker.cell(i, row, context_);
                const bool wrong = !found.empty() && found.front().severity == Severity::Required;
                all += " " + sheet.table().column(i).text(row, context_) + (wrong ? "!" : "");
            }
            all += "\n";
        }
        return all;
    }
    std::string type(ValueSheet& sheet, std::size_t column, RowIndex row, std::string_view text) {
        return TableEdits(sheet.table()).type(kNoObject, column, row, text, context_).refusal;
    }
    void set(ValueSheet& sheet, std::vector<CellEdit> cells) {
        EXPECT_EQ(TableEdits(sheet.table()).set(kNoObject, std::move(cells), context_, "").refusal, "");
    }

    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
};

TEST_F(Sheets, GiveBackToTheBitWhatIsNotEdited) {
    LoggerConfiguration odd = kAsRead;
    odd.bandLimits = {std::nan(""), -5, 1e300};
    for (const auto& make : {makeSpeedBandsSheet, makeBrakingSheet, makeAccelerationSheet, makeParametersSheet})
        for (const LoggerConfiguration& present : {kAsRead, odd}) {
            const auto sheet = make();
            sheet->open(present);
            const LoggerConfiguration now = sheet->configuration();
            EXPECT_TRUE(now.bandLimits == present.bandLimits || std::isnan(now.bandLimits[0]));
            EXPECT_EQ(now.brakeThresholds, present.brakeThresholds);
            EXPECT_EQ(now.accelerationThresholds, present.accelerationThresholds);
            EXPECT_EQ(now.parameters, present.parameters);
            EXPECT_EQ(now.intervals, present.intervals);
        }
}

TEST_F(Sheets, SpeedBandsAreSetInTheUnitsOfTheLogger) {
    const auto sheet = makeSpeedBandsSheet();
    sheet->open(kAsRead);
    EXPECT_EQ(shown(*sheet), "Speed Band 1: 0 MPH 45 MPH\nSpeed Band 2: 45 MPH 60 MPH\nSpeed Band 3: 60 MPH 70 MPH\n"
                             "Speed Band 4: 70 MPH and above\n");
    EXPECT_EQ(type(*sheet, 1, 1, "65"), "");
    EXPECT_EQ(sheet->configuration().bandLimits, (std::array{45.000000001, 65.0, 70.0}));
    EXPECT_EQ(type(*sheet, 1, 2, "255 kph"), "");
    EXPECT_FALSE(configurationProblem(sheet->configuration(), kAsRead));
    EXPECT_EQ(type(*sheet, 1, 0, "66"), "") << "the way to what is right may lead through what is not";
    EXPECT_EQ(shown(*sheet), "Speed Band 1: 0 MPH 66 MPH\nSpeed Band 2: 66 MPH 65 MPH!\nSpeed Band 3: 65 MPH 158 MPH\n"
                             "Speed Band 4: 158 MPH and above\n");
    EXPECT_EQ(configurationProblem(sheet->configuration(), kAsRead)->id, MessageId::SpeedBandsOutOfRange);
    EXPECT_NE(type(*sheet, 1, 0, "-1"), "");
    EXPECT_NE(type(*sheet, 1, 0, "256 kph"), "");
    EXPECT_EQ(type(*sheet, 1, 3, "200"), "The last speed band has no upper end.");
    EXPECT_EQ(type(*sheet, 1, 0, ""), "");
    EXPECT_EQ(configurationProblem(sheet->configuration(), kAsRead)->id, MessageId::SpeedBandsOutOfRange);

    set(*sheet, sheet->originals());
    LoggerConfiguration expected = kAsRead;
    expected.bandLimits = {45, 60, 70};
    EXPECT_EQ(sheet->configuration(), expected);
}

TEST_F(Sheets, ThresholdsAreOfOneManeuverOnly) {
    const auto sheet = makeAccelerationSheet();
    sheet->open(kAsRead);
    EXPECT_EQ(type(*sheet, 0, 0, "0.3"), "");
    EXPECT_EQ(shown(*sheet), "Hard Acceleration: 0.30 G\nExtreme Acceleration: 0.00 G!\n");
    EXPECT_EQ(type(*sheet, 0, 1, "2"), "");
    EXPECT_NE(type(*sheet, 0, 1, "2.1"), "");
    EXPECT_NE(type(*sheet, 0, 1, ""), "");
    LoggerConfiguration expected = kAsRead;
    expected.accelerationThresholds = {2.941995, 19.6133};
    EXPECT_EQ(sheet->configuration(), expected);
    EXPECT_FALSE(configurationProblem(expected, kAsRead));
}

TEST_F(Sheets, ParametersKeepTheCodesThatTheyCameWith) {
    const auto sheet = makeParametersSheet();
    sheet->open(kAsRead);
    EXPECT_EQ(shown(*sheet), "Parameter 1: Engine Speed Every 5 Seconds\nParameter 2: Not Selected Every 60 Seconds\n"
                             "Parameter 3: Not Selected Every 60 Seconds\nParameter 4: Battery Voltage Every 1 Second\n"
                             "Parameter 5: Fuel System Status Every 60 Seconds\n");
    EXPECT_EQ(type(*sheet, 0, 2, "battery voltage"), "");
    EXPECT_EQ(type(*sheet, 1, 2, "10"), "");
    EXPECT_EQ(shown(*sheet), "Parameter 1: Engine Speed Every 5 Seconds\nParameter 2: Not Selected Every 60 Seconds\n"
                             "Parameter 3: Battery Voltage! Every 10 Seconds\n"
                             "Parameter 4: Battery Voltage! Every 1 Second\n"
                             "Parameter 5: Fuel System Status Every 60 Seconds\n");
    EXPECT_EQ(configurationProblem(sheet->configuration(), kAsRead)->id, MessageId::DuplicateParameters);
    EXPECT_NE(type(*sheet, 1, 2, "15"), "");
    EXPECT_NE(type(*sheet, 0, 2, ""), "");
    LoggerConfiguration expected = kAsRead;
    expected.parameters[2] = 0xE1;
    expected.intervals[2] = 2;
    EXPECT_EQ(sheet->configuration(), expected);

    LoggerConfiguration kept = expected; // as a file may tell it
    kept.parameters = {0x43, 0x0D, 0x0D, 0xF9, 0x0C};
    kept.bandLimits = {1, 2, 3};
    set(*sheet, sheet->showing(kept));
    kept.bandLimits = kAsRead.bandLimits;
    EXPECT_EQ(sheet->configuration(), kept) << "the parameters, and nothing else";
    set(*sheet, sheet->originals());
    expected = kAsRead;
    expected.parameters = {0x0C, 0x11, 0x05, 0x04, 0xF9};
    expected.intervals = {1, 1, 16, 1, -7}; // which was taken for the 60 s that it is reset to
    EXPECT_EQ(sheet->configuration(), expected);
}

TEST_F(Sheets, ParameterThresholdsAreKeptUnderTheirNames) {
    Settings settings(std::make_unique<MemorySettings>());
    ParameterThresholdSheet sheet(settings);
    EXPECT_EQ(sheet.rowTitle(3), "Coolant Temperature");
    EXPECT_EQ(type(sheet, 0, 3, "100"), "");
    EXPECT_EQ(type(sheet, 0, 1, "3000"), "");
    EXPECT_NE(type(sheet, 0, 0, ""), "");
    EXPECT_EQ(sheet.table().column(0).text(1, context_), "3,000 RPM");
    sheet.store(settings);
    EXPECT_EQ(settings.getReal("SetParameterThreshDialog", "EngineCoolantThresh", 0), 373.15);
    EXPECT_EQ(settings.getText("SetParameterThreshDialog", "VehicleSpeedThresh"), "") << "it is as it was";
    const std::pair<std::int32_t, double> kValues[] = {{1, 31.73984}, {2, 50}, {5, 80}, {8, 255.372},
                                                       {11, 0},       {23, 0}, {24, 11}};
    for (const auto& [parameter, value] : kValues)
        EXPECT_NEAR(parameterThreshold(settings, parameter), value, 1e-9) << parameter;
    ParameterThresholdSheet again(settings);
    set(again, again.originals());
    again.store(settings);
    EXPECT_EQ(parameterThreshold(settings, 4), 368.14990234375);
}

/// Appends a trip with these speeds (km/h, a second apart) and a series of one parameter.
RowIndex addDrive(TQuobrixDocument& document, std::vector<std::uint8_t> speeds, const std::string& vin = {},
                  std::int32_t parameter = 0, std::vector<double> samples = {}) {
    TTripLogTable& trips = document.trips();
    const RowIndex row = trips.rowCount();
    trips.insertRows(row, 1);
    trips.column<TTripLogVinColumn>().set(row, vin);
    trips.column<TTripLogQuobrixSerialNumberColumn>().set(row, "K-0042-B");
    TTripLogSampleTable& table = trips.column<TTripLogSampleTableColumn>().makeObject(row);
    table.insertRows(0, static_cast<RowIndex>(speeds.size()));
    table.speed().setAll(std::move(speeds));
    if (parameter != 0)
        table.series(1).setSeries({parameter, 5, false, samples});
    return row;
}

TEST(DrivingHistory, CountsAsALoggerDoes) {
    TQuobrixDocument document;
    const auto read = [&] {
        DrivingHistory history;
        while (history.readNext(document.trips())) {
        }
        return history;
    };
    EXPECT_EQ(read().trips(), 0u);
    addDrive(document, {50, 50, 50});
    addDrive(document, {60, 50, 40, 20, 20});                    // 2.78, 2.78, 5.56 m/s2: one extreme brake
    addDrive(document, {60, 50, 50, 30, 40, 31});                // 2.78; 5.56; and 2.5
    addDrive(document, {0, 12, 18});                             // 3.33, 1.67
    document.trips().insertRows(document.trips().rowCount(), 1); // without samples
    const DrivingHistory history = read();
    EXPECT_EQ(history.trips(), 4u);
    using Counts = DrivingHistory::Counts;
    const struct {
        Maneuver maneuver;
        std::array<double, 2> thresholds;
        Counts counts;
    } kCases[] = {
        {Maneuver::Braking, {2.745862, 4.707192}, {1, 2}},
        {Maneuver::Braking, {2, 6}, {2, 0}},
        {Maneuver::Braking, {3, 4}, {0, 2}},
        {Maneuver::Braking, {20 / 3.6, 6}, {0, 0}}, // above it, not at it
        {Maneuver::Acceleration, {2.745862, 4.707192}, {2, 0}},
        {Maneuver::Acceleration, {1, 3}, {1, 1}},
    };
    for (const auto& each : kCases)
        EXPECT_EQ(history.count(each.maneuver, each.thresholds), each.counts) << each.thresholds[0];
    for (int i = 0; i < 60; ++i)
        addDrive(document, {0, 36});
    EXPECT_EQ(read().trips(), DrivingHistory::kMostTrips);
    EXPECT_EQ(read().greatest(Maneuver::Acceleration), std::vector<double>(50, 10.0)) << "the newest ones";
}

TEST(ReportedParameters, OfTheVehicleLastDrivenWithTheLogger) {
    TQuobrixDocument document;
    const std::vector<double> none{kNoValue, kNoValue}, some{kNoValue, 20};
    addDrive(document, {1, 2}, "OTHER", 6, none);
    addDrive(document, {1, 2}, "VIN", 3, some); // too long ago
    for (int i = 0; i < 3; ++i)
        addDrive(document, {1, 2}, "VIN", 3, none);
    addDrive(document, {1, 2}, "VIN", 5, some);
    addDrive(document, {1, 2}, "VIN", 5, none);
    addDrive(document, {1, 2}, "VIN", 8, none);
    const auto unsupported = [&](const std::string& serial) {
        ReportedParameters reported(serial);
        while (reported.readNext(document.trips())) {
        }
        std::vector<std::int32_t> found;
        for (std::int32_t parameter = 1; parameter <= kParameterCount; ++parameter)
            if (reported.isUnsupported(parameter))
                found.push_back(parameter);
        return found;
    };
    EXPECT_EQ(unsupported("K-0042-B"), (std::vector{3, 8}));
    EXPECT_TRUE(unsupported("K-0043-B").empty());
    addDrive(document, {1, 2}, "", 9, none);
    EXPECT_TRUE(unsupported("K-0042-B").empty()) << "which vehicle that was is not known";
}

TEST_F(Sheets, PicturesShowWhatIsTyped) {
    const test::FixedMeasure measure;
    const double mph = 1.609344 / 3.6;
    const Drawing bands = drawSpeedBands({45 * mph, 60 * mph, 70 * mph}, context_, {350, 0}, measure);
    EXPECT_EQ(test::textsOf(bands), (std::vector<std::string>{"1", "2", "3", "4", "45 MPH", "60 MPH", "70 MPH"}));
    EXPECT_EQ(bands.description, "Speed Band 1: 0 MPH to 45 MPH, Speed Band 2: 45 MPH to 60 MPH, "
                                 "Speed Band 3: 60 MPH to 70 MPH, Speed Band 4: over 70 MPH");
    std::vector<Box> parts;
    for (const DrawingCommand& command : bands.commands)
        if (const auto* part = std::get_if<Rectangle>(&command))
            parts.push_back(part->box);
    ASSERT_EQ(parts.size(), 4u);
    EXPECT_NEAR(parts[1].left, 180, 1e-9); // 45 of 87.5 MPH
    EXPECT_NEAR(parts[3].left + parts[3].width, 350, 1e-9);
    for (const std::array<double, 3>& wrong : {std::array{45., 45., 70.}, {kNoValue, 60, 70}, {0, 60, 70}})
        EXPECT_EQ(drawSpeedBands(wrong, context_, {350, 0}, measure).description,
                  "Each value must be above the one before it.");

    TQuobrixDocument document;
    addDrive(document, {60, 50, 40, 20, 20});
    addDrive(document, {60, 58});
    DrivingHistory history;
    const auto words = [&](std::array<double, 2> thresholds) {
        return drawThresholds(Maneuver::Braking, thresholds, history, context_, {350, 0}, measure).description;
    };
    EXPECT_EQ(words({2, 6}), "This file has no trips to compare with.");
    while (history.readNext(document.trips())) {
    }
    EXPECT_EQ(words({2, 6}), "1 of these 2 trips would have counted a hard brake, 0 an extreme one.");
    EXPECT_EQ(words({6, 2}), "Each value must be above the one before it.");
    const Drawing thresholds = drawThresholds(Maneuver::Braking, {2, 6}, history, context_, {350, 0}, measure);
    const Drawing wrong = drawThresholds(Maneuver::Braking, {6, 2}, history, context_, {350, 0}, measure);
    EXPECT_EQ(thresholds.size, wrong.size) << "the dialog stays as it is while somebody types";
}

} // namespace
} // namespace quobrix::testing
