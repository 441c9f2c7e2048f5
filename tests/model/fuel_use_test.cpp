#include "model/fuel_use.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

namespace quobrix {
namespace {

FuelFill fill(std::int64_t day, double odometer, double amount, bool full = true) {
    return {.vehicle = "V", .time = day * 86'400, .odometer = odometer, .amount = amount, .fullTank = full};
}

/// Distance and fuel of each use; -1 where there is none.
std::vector<double> distances(const std::vector<FuelFill>& fills) {
    std::vector<double> all;
    for (const auto& use : fuelUses(fills))
        all.push_back(use ? use->distance : -1);
    return all;
}

TEST(FuelUse, GoesFromFullTankToFullTank) {
    std::vector<FuelFill> fills{fill(0, 1000, 50), fill(5, 1400, 10, false), fill(9, 1900, 20, false),
                                fill(12, 2000, 8), fill(20, 2600, 30)};
    EXPECT_EQ(distances(fills), (std::vector<double>{-1, -1, -1, 1000, 600}));
    EXPECT_EQ(fuelUses(fills)[3]->fuel, 38) << "partial fills count, what filled the first tank does not";
    EXPECT_EQ(fuelUses(fills)[3]->begin, 0);
    EXPECT_EQ(fuelUses(fills)[3]->end, 12 * 86'400);

    fills[1].missedFill = true;
    EXPECT_EQ(distances(fills), (std::vector<double>{-1, -1, -1, -1, 600}));
    fills[1].missedFill = false;
    fills[3].missedFill = true; // which is full: from here on all is known again
    EXPECT_EQ(distances(fills), (std::vector<double>{-1, -1, -1, -1, 600}));
}

TEST(FuelUse, IsNotKnownWhereAnEntryIsWrong) {
    const std::vector<FuelFill> right{fill(0, 1000, 50), fill(5, 1500, 10, false), fill(9, 2000, 20),
                                      fill(12, 2400, 8)};
    EXPECT_EQ(distances(right), (std::vector<double>{-1, -1, 1000, 400}));
    const auto wrong = [&](auto change) {
        std::vector<FuelFill> fills = right;
        change(fills[1]);
        return distances(fills);
    };
    const std::vector<double> chainEnds{-1, -1, -1, 400};
    EXPECT_EQ(wrong([](FuelFill& f) { f.amount.reset(); }), chainEnds);
    EXPECT_EQ(wrong([](FuelFill& f) { f.amount = 0; }), chainEnds);
    EXPECT_EQ(wrong([](FuelFill& f) { f.amount = -3; }), chainEnds);
    EXPECT_EQ(wrong([](FuelFill& f) { f.odometer.reset(); }), chainEnds);
    EXPECT_EQ(wrong([](FuelFill& f) { f.odometer = std::numeric_limits<double>::quiet_NaN(); }), chainEnds);
    EXPECT_EQ(wrong([](FuelFill& f) { f.odometer = 1000; }), chainEnds) << "none was driven";
    EXPECT_EQ(wrong([](FuelFill& f) { f.odometer = 2100; }), chainEnds) << "the next one falls";
    EXPECT_EQ(wrong([](FuelFill& f) { f.vehicle = "W"; }), (std::vector<double>{-1, -1, 1000, 400}));
    EXPECT_EQ(wrong([](FuelFill& f) { f.vehicle.clear(); }), (std::vector<double>{-1, -1, 1000, 400}));
    EXPECT_EQ(wrong([](FuelFill& f) { f.time.reset(); }), chainEnds) << "its odometer says where it belongs";
    EXPECT_EQ(wrong([](FuelFill& f) { f.time = 10 * 86'400; }), (std::vector<double>{-1, -1, 1000, -1}));

    std::vector<FuelFill> fallen{fill(9, 2000, 20), fill(0, 2100, 50), fill(12, 2400, 8)};
    EXPECT_EQ(fallenOdometers(fallen)[0], 1u) << "by time, not by row";
    EXPECT_FALSE(fallenOdometers(fallen)[1] || fallenOdometers(fallen)[2]);
    EXPECT_TRUE(fuelUses({}).empty());
}

TEST(FuelUse, CostsAreOfWhatHasAPrice) {
    std::vector<FuelFill> fills{fill(0, 0, 50), fill(30, 1000, 10, false), fill(60, 2000, 10), fill(90, 3000, 20)};
    fills[0].totalPrice = 70;
    fills[1].totalPrice = 14;
    fills[3].totalPrice = 30;
    const FuelTotals totals = fuelTotals(fills);
    EXPECT_EQ(totals.distance, 3000);
    EXPECT_EQ(totals.fuel, 40);
    EXPECT_EQ(totals.pricedDistance, 1000) << "of the first 2000 a price is missing";
    EXPECT_EQ(totals.distancePrice, 30);
    EXPECT_EQ(totals.price, 114);
    EXPECT_EQ(totals.monthsPrice, 44) << "the first tank was used up before";
    EXPECT_NEAR(totals.months, 60 / 30.4375, 1e-9) << "of the second month nobody knows";
}

/// Whatever the order of rows, what is known is the same; fuel and distance of a vehicle add up.
TEST(FuelUse, DoesNotDependOnTheOrderOfEntries) {
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        std::vector<FuelFill> fills;
        double odometers[2] = {0, 5000};
        for (int i = 0; i < 40; ++i) {
            const auto vehicle = random() % 2;
            odometers[vehicle] += static_cast<double>(random() % 900 + 1);
            fills.push_back(fill(i, odometers[vehicle], static_cast<double>(random() % 50 + 1), random() % 3 > 0));
            fills.back().vehicle = vehicle ? "V" : "W";
        }
        const FuelTotals before = fuelTotals(fills);
        std::ranges::shuffle(fills, random);
        const FuelTotals after = fuelTotals(fills);
        EXPECT_EQ(before.distance, after.distance);
        EXPECT_EQ(before.fuel, after.fuel);
        double driven = 0;
        for (const auto& use : fuelUses(fills))
            driven += use ? use->distance : 0;
        EXPECT_EQ(driven, after.distance);
        EXPECT_LE(driven, odometers[0] + odometers[1] - 5000);
    }
}

} // namespace
} // namespace quobrix
