#include "model/parameters.h"

#include "model/trip_report.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace quobrix {
namespace {

TEST(Parameters, AreConvertedBothWays) {
    const struct {
        std::int32_t parameter;
        std::uint16_t raw;
        double metric, base;
    } samples[] = {
        {1, 255, 255, 255 / 3.6},
        {2, 0xFFFF, 16383.75, 16383.75 / 60},
        {3, 255, 100, 100},
        {4, 0, -40, 233.15},
        {4, 255, 215, 488.15},
        {5, 51, 20, 20},
        {6, 101, 101, 101'000},
        {7, 0xFFFF, 655.35, 0.65535},
        {8, 40, 0, 273.15},
        {9, 0, -64, -64 * std::numbers::pi / 180},
        {9, 255, 63.5, 63.5 * std::numbers::pi / 180},
        {10, 255, 765, 765'000},
        {11, 0x0402, 0x0402, 0x0402},
        {12, 128, 0, 0},
        {13, 0, -100, -100},
        {14, 255, 99.21875, 99.21875},
        {15, 129, 0.78125, 0.78125},
        {16, 255, 1.275, 1.275},
        {23, 1, 0.005, 0.005},
        {24, 0xFFFF, 0.02266 * 0xFFFF, 0.02266 * 0xFFFF},
    };
    for (const auto& s : samples) {
        SCOPED_TRACE(s.parameter);
        EXPECT_NEAR(metricFromRaw(s.parameter, s.raw), s.metric, 1e-9);
        EXPECT_NEAR(baseFromMetric(s.parameter, s.metric), s.base, 1e-6);
        EXPECT_EQ(rawFromMetric(s.parameter, s.metric), s.raw);
    }
    for (std::int32_t parameter = 1; parameter <= kParameterCount; ++parameter)
        for (std::uint32_t raw = 0; raw < (parameterWidth(parameter) == 1 ? 0x100u : 0x10000u); ++raw)
            ASSERT_EQ(rawFromMetric(parameter, metricFromRaw(parameter, static_cast<std::uint16_t>(raw))), raw)
                << parameter;
}

TEST(Parameters, AreRoundedAndKeptWithinTheirWidth) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        std::int32_t parameter;
        double metric;
        std::uint16_t raw;
    } samples[] = {
        {1, 0.49, 0},     {1, 0.5, 1},       {1, 254.5, 255},      {1, 300, 255},     {1, -1, 0},
        {2, 0.124, 0},    {2, 0.125, 1},     {2, 20'000, 65535},   {4, -40.51, 0},    {4, -41, 0},
        {4, 215.6, 255},  {9, -64.3, 0},     {9, 63.74, 255},      {10, 1.49, 0},     {10, 1.5, 1},
        {12, 0.39, 128},  {12, 0.391, 129},  {3, 100.5, 255},      {24, 5000, 65535}, {7, 0.0049, 0},
        {1, infinity, 0}, {1, -infinity, 0}, {1, std::nan(""), 0},
    };
    for (const auto& s : samples)
        EXPECT_EQ(rawFromMetric(s.parameter, s.metric), s.raw) << s.parameter << ": " << s.metric;
    for (const std::int32_t unknown : {-1, 0, 25, std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(metricFromRaw(unknown, 7), 0) << unknown;
        EXPECT_EQ(rawFromMetric(unknown, 7), 0) << unknown;
        EXPECT_TRUE(parameterName(unknown).empty()) << unknown;
    }
}

TEST(Parameters, SamplesAreShownByTheirKind) {
    TUnitSystem units;
    units.setUnit(UnitTypeId::Temperature, UnitId::Celsius);
    const TimeZone zone;
    const struct {
        SampledSeries series;
        const char *heading, *text;
    } cases[] = {
        {{4, 1, false, {-40}}, "Coolant Temperature", "-40.00 °C"},
        {{4, 1, false, {kNoValue}}, "Coolant Temperature", "0.00 °C"}, // zero as loggers measure, not the absolute one
        {{1, 1, false, {kNoValue}}, "Vehicle Speed", "0.0 m/s"},
        {{12, 1, true, {0}}, "Short Term Fuel Trim (B1) 1 / 2", "0.00 %"},
        {{11, 1, true, {2 + 4 * 256}}, "Fuel System Status 1 / 2", "C / O"},
        {{11, 1, true, {8 + 16 * 256}}, "Fuel System Status 1 / 2", "O (SF) / C (OF)"},
        {{11, 1, false, {2 + 4 * 256}}, "Fuel System Status", "C"},
        {{11, 1, false, {1}}, "Fuel System Status", "O (U)"},
        {{11, 1, true, {kNoValue}}, "Fuel System Status 1 / 2", ""},
    };
    for (const auto& c : cases) {
        TTripLogParameter1Column column;
        column.setSeries(c.series);
        TextBuffer buffer;
        EXPECT_EQ(seriesHeading(column), c.heading);
        EXPECT_EQ(column.sampleText(0, {units, zone}, buffer), c.text) << c.heading;
        EXPECT_EQ(column.sampleValue(0) == Value(), !c.series.has(0)) << c.heading;
    }
}

} // namespace
} // namespace quobrix
