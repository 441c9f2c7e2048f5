#include "plots/scales.h"
#include "plots/speed_band_walk.h"
#include "plots/time_window.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace quobrix {
namespace {

TEST(Steps, AreOneTwoOrFiveAndTimesThoseOfAClock) {
    const struct {
        double least, step;
        int decimals;
    } steps[] = {{0.7, 1, 0},  {1, 1, 0},      {1.01, 2, 0},    {2.5, 5, 0},      {5.1, 10, 0},
                 {73, 100, 0}, {0.11, 0.2, 1}, {0.03, 0.05, 2}, {0.009, 0.01, 2}, {1e-7, 1e-7, 7}};
    for (const auto& c : steps) {
        EXPECT_DOUBLE_EQ(stepsFrom(c.least).step, c.step) << c.least;
        EXPECT_EQ(stepsFrom(c.least).decimals, c.decimals) << c.least;
    }
    const std::pair<double, double> times[] = {
        {0.1, 1},     {1, 1},        {3, 5},         {11, 15},       {31, 60},       {301, 600},      {901, 1800},
        {1801, 3600}, {7201, 10800}, {10801, 21600}, {43200, 43200}, {43201, 86400}, {90000, 172800}, {500000, 864000}};
    for (const auto& [least, step] : times)
        EXPECT_EQ(timeStepFrom(least), step) << least;
    EXPECT_EQ(multiples(0.1, 0.3, 0.6).size(), 4u) << "ends count, whatever rounding makes of them";
    EXPECT_EQ(multiples(10, -25, 15), (std::vector<double>{-20, -10, 0, 10}));
}

TEST(ValueScale, CutsRowsOffInBothDirections) {
    const ValueScale up{0, 30, 10, 110}, down{0, 30, 10, 110, true};
    for (const auto& [value, above, below] : {std::tuple{0.0, 110, 10},
                                              {30.0, 10, 110},
                                              {10.0, 76, 43},
                                              {20.0, 43, 76},
                                              {-3.0, 120, 0},
                                              {1e300, -1000000, 1000000}}) {
        EXPECT_EQ(up.row(value), above) << value;
        EXPECT_EQ(down.row(value), below) << value;
    }
    EXPECT_DOUBLE_EQ(up.valueAt(up.y(7)), 7);
    EXPECT_DOUBLE_EQ(down.valueAt(down.y(7)), 7);
}

TEST(SpeedBands, AreWalkedFromTheLowestUpward) {
    using Ends = std::vector<std::optional<double>>;
    using Rows = std::vector<BandRows>;
    const ValueScale up{0, 100, 20, 220}, down{0, 100, 20, 220, true};
    const struct {
        const char* what;
        ValueScale scale;
        Ends ends;
        Rows rows;
    } walks[] = {
        {"standing, three, and an open one", up, {0, 20, 60, {}}, {{220, {}}, {200, 180}, {140, 100}, {60, {}}}},
        {"no line at the first boundary, even within", up, {40, 60, {}}, {{180, {}}, {120, 100}, {60, {}}}},
        {"one above the top ends it", up, {10, 50, 120, 150, {}}, {{210, {}}, {160, 120}, {50, {}}}},
        {"one at the top edge ends it", up, {10, 100, {}}, {{210, {}}, {110, {}}}},
        {"the first boundary above the top does not", up, {130, 140, {}}, {{90, {}}, {20, {}}}},
        {"a label is never above the top", up, {300, {}}, {{20, {}}, {20, {}}}},
        {"downward", down, {10, 50, {}}, {{130, {}}, {80, 120}, {70, {}}}},
        {"downward, standing at the top edge", down, {0, 50, {}}, {{120, {}}, {70, 120}, {70, {}}}},
        {"none", up, {}, {}},
    };
    for (const auto& walk : walks)
        EXPECT_EQ(walkBands(walk.ends, walk.scale), walk.rows) << walk.what;
}

TEST(TimeWindow, StopsWhereAnIntervalIsEightUnitsWide) {
    PlotData data;
    data.whole = {0, 1000};
    data.finest = 2;
    EXPECT_EQ(leastRange(data, 800), 200);
    const auto expectRange = [](const ZoomResult& zoomed, PlotRange range, bool maximum) {
        EXPECT_NEAR(zoomed.range.from, range.from, 1e-9);
        EXPECT_NEAR(zoomed.range.to, range.to, 1e-9);
        EXPECT_EQ(zoomed.maximumReached, maximum);
    };
    expectRange(zoomedTo(data, {500, 700}, 800), {500, 700}, false);
    expectRange(zoomedTo(data, {700, 500}, 800), {500, 700}, false);
    expectRange(zoomedTo(data, {550, 650}, 800), {500, 700}, true);
    expectRange(zoomedTo(data, {-50, 10}, 800), {0, 200}, true);
    expectRange(zoomedTo(data, {-50, 5000}, 800), {0, 1000}, false);
    expectRange(zoomedAt(data, {0, 1000}, 400, 2, 800), {200, 700}, false);
    expectRange(zoomedAt(data, {200, 600}, 300, 4, 800), {250, 450}, true);
    expectRange(zoomedAt(data, {200, 600}, 600, 0.25, 800), {0, 1000}, false);
    EXPECT_EQ(panned(data, {200, 600}, -500), (PlotRange{0, 400}));
    EXPECT_EQ(panned(data, {200, 600}, 500), (PlotRange{600, 1000}));
    EXPECT_EQ(centred(data, {200, 600}, 500), (PlotRange{300, 700}));
    data.whole = {0, 100}; // less than the least, but all there is
    expectRange(zoomedTo(data, {0, 100}, 800), {0, 100}, false);
    expectRange(zoomedTo(data, {0, 50}, 800), {0, 100}, true);
}

TEST(TimeWindow, KeepsThePlaceUnderThePointerAndStaysWithin) {
    std::mt19937 random(5);
    PlotData data;
    data.whole = {-300, 40'000};
    PlotRange range = data.whole;
    const auto between = [&](double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random);
    };
    for (int i = 0; i < 2000; ++i) {
        const double at = between(range.from, range.to), factor = std::exp2(between(-2, 2));
        const ZoomResult zoomed = zoomedAt(data, range, at, factor, 1000);
        const double before = (at - range.from) / range.length();
        const double after = (at - zoomed.range.from) / zoomed.range.length();
        const bool free = zoomed.range.from > data.whole.from && zoomed.range.to < data.whole.to;
        EXPECT_TRUE(!free || std::abs(before - after) < 1e-9);
        range = i % 3 == 0 ? panned(data, zoomed.range, between(-9000, 9000)) : zoomed.range;
        ASSERT_GE(range.from, data.whole.from);
        ASSERT_LE(range.to, data.whole.to + 1e-6);
        ASSERT_GE(range.length(), leastRange(data, 1000) * (1 - 1e-9));
    }
}

} // namespace
} // namespace quobrix
