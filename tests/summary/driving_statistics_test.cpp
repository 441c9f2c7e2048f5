#include "summary/driving_figures.h"
#include "summary/driving_report.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace quobrix {
namespace {

const TimeZone kZone = *TimeZone::named("CET-1CEST,M3.5.0,M10.5.0/3");
const std::int32_t kNow = kZone.toUtc({.year = 2026, .month = 3, .day = 10, .hour = 12});

SummaryRecord trip(const DateTime& start, std::string_view vin, std::string_view driver, float kilometres) {
    SummaryRecord record;
    record.mark = SummaryRecord::kOurs;
    record.vin = SummaryText(vin);
    record.driver = SummaryText(driver);
    record.start = kZone.toUtc(start);
    record.end = record.start + 1800;
    record.distance = kilometres * 1000;
    record.topSpeed = 20 + kilometres / 10;
    record.idleTime = 300;
    record.bandTimes = {600, 450, 300};
    record.topBandTime = 150;
    record.events[SummaryRecord::HardBrakes] = {4, 10};
    return record;
}

const Period& period(std::string_view name) { return *std::ranges::find(periods(), name, &Period::name); }

double valueOf(std::string_view key, const DrivingTotals& totals) {
    return *std::ranges::find(drivingFigures(), key, &DrivingFigure::key)->value(totals);
}

TEST(DrivingStatistics, MonthsAreThoseOfTheLocalCalendar) {
    std::vector<SummaryRecord> records{
        trip({2026, 3, 1, 0, 0, 0}, "V1", "1", 10),    trip({2026, 2, 28, 23, 59, 59}, "V1", "1", 20),
        trip({2026, 2, 1, 0, 0, 0}, "V1", "2", 30),    trip({2026, 1, 31, 23, 59, 59}, "V2", "1", 40),
        trip({2025, 12, 1, 0, 0, 0}, "V2", "2", 50),   trip({2025, 11, 30, 23, 0, 0}, "V2", "2", 60),
        trip({2025, 3, 31, 23, 59, 59}, "V2", "2", 7), trip({2026, 3, 10, 12, 0, 1}, "V2", "2", 0.5),
    };
    const auto kilometres = [&](std::string_view name) {
        const DrivingStatistics s = drivingStatistics(records, {&period(name)}, kNow, kZone);
        EXPECT_EQ(s.unfinished, name == "this-month");
        EXPECT_EQ(s.before.has_value(), name != "this-month");
        return std::pair(s.totals.distance / 1000, s.before ? s.before->distance / 1000 : -1);
    };
    EXPECT_EQ(kilometres("this-month"), std::pair(10.0, -1.0));
    EXPECT_EQ(kilometres("last-month"), std::pair(50.0, 40.0));
    EXPECT_EQ(kilometres("last-3-months"), std::pair(140.0, 60.0));
    EXPECT_EQ(kilometres("last-6-months"), std::pair(200.0, 7.0));
    const DrivingStatistics all = drivingStatistics(records, {}, kNow, kZone);
    EXPECT_EQ(all.totals.trips, 8u);
    ASSERT_EQ(all.months.size(), 12u);
    EXPECT_EQ(all.months.front().month, 4);
    EXPECT_EQ(all.months.front().totals.trips, 0u);
    EXPECT_EQ(all.months[8].totals.distance, 50'000);
    EXPECT_TRUE(all.months.back().unfinished);
    EXPECT_EQ(all.months.back().totals.trips, 2u);
    const DrivingStatistics chosen = drivingStatistics(records, {&period("last-month"), "V1", "2"}, kNow, kZone);
    EXPECT_EQ(chosen.totals.distance, 30'000);
    EXPECT_EQ(chosen.before->trips, 0u);
    const DrivingFigure& distance = drivingFigures().front();
    const TUnitSystem units;
    EXPECT_FALSE(figureChange(distance, *chosen.before, chosen.totals, units));
    EXPECT_NEAR(*figureChange(distance, all.months[9].totals, all.months[10].totals, units), 0.25, 1e-12);
}

TEST(DrivingStatistics, FiguresAreMadeOfTheSums) {
    const std::vector<SummaryRecord> records{trip({2026, 2, 1}, "V", "1", 40), trip({2026, 2, 2}, "V", "1", 10)};
    const DrivingStatistics s = drivingStatistics(records, {}, kNow, kZone);
    EXPECT_EQ(valueOf("averageSpeed", s.totals), 50'000.0 / 3600);
    EXPECT_EQ(valueOf("topSpeed", s.totals), 24);
    EXPECT_EQ(valueOf("hardBrakes", s.totals), 8 / 50'000.0);
    EXPECT_EQ(valueOf("topBandShare", s.totals), 300 / 3600.0);
    EXPECT_EQ(valueOf("idleShare", s.totals), 600 / 3600.0);
    for (const DrivingFigure& figure : drivingFigures()) {
        EXPECT_FALSE(figure.value(DrivingTotals())) << figure.key; // no trips, no figures
        EXPECT_EQ(figure.ofFewTrips(s.totals),
                  figure.kind == FigureKind::Rate || figure.kind == FigureKind::Share ||
                      (figure.kind == FigureKind::Economy && figure.source == FigureSource::KnownFuel))
            << figure.key;
    }
    const DrivingFigure& brakes = *std::ranges::find(drivingFigures(), "hardBrakes", &DrivingFigure::key);
    TUnitSystem units;
    const std::tuple<UnitId, const char*, const char*> shown[] = {
        {UnitId::Mile, "Hard Brakes per 100 Miles", "25.7"},
        {UnitId::Foot, "Hard Brakes per 100 Miles", "25.7"},
        {UnitId::Kilometre, "Hard Brakes per 100 km", "16.0"},
        {UnitId::Metre, "Hard Brakes per 100 km", "16.0"},
    };
    for (const auto& [unit, title, text] : shown) {
        units.setUnit(UnitTypeId::Distance, unit);
        EXPECT_EQ(figureTitle(brakes, units), title);
        EXPECT_EQ(figureText(brakes, s.totals, units), text);
    }
    DrivingTotals damaged = s.totals;
    damaged.time = std::numeric_limits<double>::max();
    const DrivingFigure& time = *std::ranges::find(drivingFigures(), FigureKind::Time, &DrivingFigure::kind);
    EXPECT_FALSE(figureText(time, damaged, units).empty()) << "and no time before the beginning";
    EXPECT_FALSE(figureText(time, damaged, units).starts_with("-"));
}

TEST(DrivingStatistics, WhatNoTripComesToCountsForNothing) {
    std::vector<SummaryRecord> records{trip({2026, 2, 1}, "V", "1", 40), trip({2026, 2, 2}, "V", "1", 10)};
    const DrivingTotals sound = drivingStatistics({records.data(), 1}, {}, kNow, kZone).totals;
    for (const float wrong : {1e30f, std::numeric_limits<float>::quiet_NaN(), HUGE_VALF, -1.0f}) {
        SummaryRecord& damaged = records[1];
        damaged.distance = damaged.fuel = damaged.idleTime = damaged.topBandTime = wrong;
        damaged.topSpeed = wrong;
        damaged.bandTimes.fill(wrong);
        damaged.parameters[0] = {1, 2, wrong, wrong, wrong, 4'000'000'000, 4'000'000'000};
        const DrivingStatistics s = drivingStatistics(records, {}, kNow, kZone);
        EXPECT_EQ(s.totals.distance, sound.distance);
        EXPECT_EQ(s.totals.topSpeed, sound.topSpeed);
        EXPECT_EQ(s.totals.bandTime(), sound.bandTime());
        EXPECT_EQ(s.totals.fuelTrips, 0u);
        for (const MonitoredParameter& parameter : s.parameters)
            EXPECT_EQ(parameter.timeOver, 0);
    }
    const DrivingFigure& distance = *drivingFigure("distance");
    DrivingTotals far = sound;
    far.distance = 1e37;
    EXPECT_EQ(changeText(figureChange(distance, sound, far, TUnitSystem())), "+1000000%");
}

TEST(DrivingStatistics, RecordsOfAnotherProgramTellNothingOfEvents) {
    std::vector<SummaryRecord> records;
    for (int day = 1; day <= 9; ++day)
        records.push_back(trip({2026, 2, day}, "V", "1", 10));
    for (std::size_t i = 1; i < records.size(); ++i)
        records[i].mark = 0;
    const TUnitSystem units;
    const auto told = [&](const char* key, std::size_t first) {
        const DrivingStatistics s = drivingStatistics(std::span(records).subspan(first), {}, kNow, kZone);
        return std::string(remarkedFigure(*drivingFigure(key), s.totals, units));
    };
    EXPECT_TRUE(told("hardBrakes", 0).ends_with(" (fewer than three trips)")) << told("hardBrakes", 0);
    EXPECT_TRUE(told("idleShare", 0).ends_with(" (fewer than three trips)"));
    EXPECT_EQ(told("hardBrakes", 1) + told("topBandTime", 1) + told("idleShare", 1), "") << "nothing is known";
    EXPECT_FALSE(told("averageSpeed", 1).empty());
}

TEST(DrivingStatistics, FuelEfficiencyIsOfTheTripsWhoseFuelIsKnown) {
    std::vector<SummaryRecord> records;
    for (int day = 1; day <= 5; ++day)
        records.push_back(trip({2026, 2, day}, "V", "1", 40));
    DrivingTotals none;
    none.add(records[0]);
    const DrivingFigure& economy = *drivingFigure("fuelEfficiency");
    EXPECT_FALSE(economy.value(none));
    records[0].fuel = 1;
    records[1].fuel = 0.5f;
    records[2].fuel = std::numeric_limits<float>::infinity();
    records[3].fuel = 9;
    records[3].mark = 0; // of another program, whose figure means something else
    records[4].fuel = 1;
    records[4].distance = 0; // the engine ran, and no efficiency is known of that
    const DrivingTotals totals = drivingStatistics(records, {}, kNow, kZone).totals;
    EXPECT_EQ(*economy.value(totals), 80'000 / 1.5);
    EXPECT_TRUE(economy.ofFewTrips(totals)) << "two of five";

    TUnitSystem units;
    DrivingTotals better = totals;
    better.fuel = 0.75; // half of it
    DrivingTotals often = totals;
    often.fuelTrips = kFewTrips;
    EXPECT_FALSE(figureChange(economy, totals, better, units)) << "from what two trips came to";
    const std::tuple<UnitId, UnitId, const char*, const char*, double> shown[] = {
        {UnitId::Mile, UnitId::Gallon, "33.1 mi/gal", "Estimated Fuel Efficiency (mi/gal)", 1},
        {UnitId::Kilometre, UnitId::Liter, "7.1 L/100 km", "Estimated Fuel Efficiency (L/100 km)", -0.5},
        {UnitId::Kilometre, UnitId::Gallon, "53.3 km/Gallon", "Estimated Fuel Efficiency (km/Gallon)", 1},
        {UnitId::Mile, UnitId::Liter, "8.8 Miles/Liter", "Estimated Fuel Efficiency (Miles/Liter)", 1},
    };
    for (const auto& [distance, fuel, text, heading, change] : shown) {
        units.setUnit(UnitTypeId::Distance, distance);
        units.setUnit(UnitTypeId::Fuel, fuel);
        EXPECT_EQ(figureText(economy, totals, units), text);
        EXPECT_EQ(figureHeading(economy, units), heading);
        EXPECT_NEAR(*figureChange(economy, often, better, units), change, 1e-9) << "of what is shown";
        EXPECT_EQ(figureText(economy, none, units), "");
    }
}

TEST(DrivingStatistics, WhatWasFilledInGoesBeforeEstimates) {
    std::vector<SummaryRecord> records{trip({2026, 2, 3}, "V1", "1", 100), trip({2026, 2, 20}, "V1", "2", 300),
                                       trip({2026, 2, 4}, "V2", "1", 50)};
    records[0].fuel = 2;
    records[1].fuel = 6;
    const auto at = [](const DateTime& time) { return std::int64_t{kZone.toUtc(time)}; };
    const std::string vin = "V1";
    const std::vector<FuelFill> fills{
        {vin, at({2026, 1, 20}), 1'000'000, 9, true, false, 40},
        {vin, at({2026, 1, 31, 23, 59}), 1'200'000, 4, false, false, 20}, // counts for the next full tank
        {vin, at({2026, 2, 1}), 1'500'000, 8, true, false, 36},           // 500 km with 12 gallons for 56
        {vin, at({2026, 2, 25}), 1'800'000, 6, true, false, {}},          // 300 km with 6, nobody knows for how much
        {vin, at({2026, 3, 2}), 1'900'000, 2, true, true, 10},            // after one that was forgotten
        {"V2", at({2026, 2, 6}), 500'000, 10, true, false, 50},
        {"V3", at({2026, 2, 7}), 1, 10, true, false, 7}, // no trip of it has been counted
    };
    const auto of = [&](const DrivingChoice& choice) { return drivingStatistics(records, choice, kNow, kZone, fills); };
    const DrivingStatistics s = of({&period("last-month")});
    EXPECT_EQ(valueOf("filledEfficiency", s.totals), 800'000 / 18.0);
    EXPECT_EQ(valueOf("distancePrice", s.totals), 56 / 500'000.0);
    EXPECT_EQ(valueOf("fuelPrice", s.totals), 36 + 50 + 7);
    EXPECT_NEAR(valueOf("fuelAgreement", s.totals), (800 * 8 / 400.0) / 18, 1e-12) << "16 gallons instead of 18";
    EXPECT_EQ(valueOf("fuelPrice", s.months[9].totals), 60) << "nobody drove then, but somebody paid";
    EXPECT_FALSE(drivingFigure("filledEfficiency")->value(*s.before));
    EXPECT_EQ(s.before->price, 60) << "for the change";
    EXPECT_EQ(s.totals.unpricedFills, 1u);
    EXPECT_TRUE(drivingFigure("fuelAgreement")->ofFewTrips(s.totals)) << "as the estimate that is in it";
    const auto& v2 = *std::ranges::find(s.vehicles, "V2", &DrivingGroup::key);
    EXPECT_EQ(valueOf("fuelPrice", v2.totals), 50);
    EXPECT_TRUE(drivingFigure("filledEfficiency")->leftOut(v2.totals)) << "one full tank";
    EXPECT_EQ(of({&period("last-month"), "V2"}).totals.price, 50);
    EXPECT_EQ(of({.month = CalendarMonth{2026, 3}}).totals.filledFuel, 0);
    EXPECT_EQ(of({&period("last-month"), {}, "1"}).totals.price, 0) << "who filled it is not known";
    double price = 0;
    for (const DrivingMonth& month : of({}).months)
        price += month.totals.price;
    EXPECT_EQ(price, of({}).totals.price);

    TUnitSystem units;
    units.setUnit(UnitTypeId::Distance, UnitId::Kilometre);
    units.setUnit(UnitTypeId::Fuel, UnitId::Liter);
    const auto reads = [&](const char* key) {
        return figureTitle(*drivingFigure(key), units) + ": " + figureText(*drivingFigure(key), s.totals, units);
    };
    EXPECT_EQ(reads("filledEfficiency"), "Fuel Efficiency: 8.5 L/100 km");
    EXPECT_EQ(reads("distancePrice"), "Fuel Cost per 100 km: 11.20");
    EXPECT_EQ(reads("fuelPrice"), "Fuel Cost: 93.00");
    EXPECT_EQ(reads("fuelAgreement"), "Fuel Estimate Against Entries: 89%");
}

TEST(DrivingStatistics, GroupsAreToldApartByWhatNeverChanges) {
    std::vector<SummaryRecord> records{trip({2026, 2, 1}, "V", "1", 40), trip({2026, 1, 2}, "V", "", 10),
                                       trip({2026, 2, 2}, "", "1", 100), trip({2026, 2, 2}, "", "", 5)};
    records[0].vehicleName = SummaryText("Wagon");
    records[1].vehicleName = SummaryText("Old name");
    records[2].vehicleName = SummaryText("Pickup");
    records[1].driverName = SummaryText("Anna");
    const DrivingStatistics s = drivingStatistics(records, {}, kNow, kZone);
    ASSERT_EQ(s.vehicles.size(), 3u);
    EXPECT_EQ(s.vehicles[0].key, "Pickup");
    EXPECT_EQ(s.vehicles[1].key + s.vehicles[1].name, "VWagon");
    EXPECT_EQ(s.vehicles[1].totals.trips, 2u);
    EXPECT_EQ(s.vehicles[2].key + s.vehicles[2].name, "");
    ASSERT_EQ(s.drivers.size(), 3u);
    EXPECT_EQ(s.drivers[0].name, "Unknown (1)");
    EXPECT_EQ(s.drivers[1].key, "Anna");

    records[1].mark = 0; // of another program, whose other figures mean something else
    records[1].events[0].count = 999;
    records[1].topBandTime = records[1].fuel = std::numeric_limits<float>::quiet_NaN();
    records[2].distance = -std::numeric_limits<float>::infinity();
    const DrivingTotals totals = drivingStatistics(records, {}, kNow, kZone).totals;
    EXPECT_EQ(totals.trips, 4u);
    EXPECT_EQ(totals.distance, 55'000);
    EXPECT_EQ(totals.watchedDistance, 45'000);
    EXPECT_EQ(totals.events[0], 12);
    EXPECT_EQ(totals.bands[4], 450);
}

TEST(DrivingStatistics, ParametersAreSummedByThemselves) {
    std::vector<SummaryRecord> records{trip({2026, 2, 2}, "V", "1", 40), trip({2026, 2, 1}, "V", "1", 10)};
    records[0].parameters[1] = {1, 4, 368, 370, 290, 20, 580};
    records[1].parameters[3] = {1, 4, 360, kNoValue, 280, 0, 600};
    records[1].parameters[4] = {1, 1, 30, 31, 0, 5, 595};
    records.push_back(trip({2026, 2, 3}, "V", "1", 5));
    records[2].parameters[0] = {1, 4, 368, kNoValue, 270, 0, 30};
    records.push_back(records[2]);
    records[3].mark = 0; // another program's, which says something else there
    const std::vector<MonitoredParameter> parameters = drivingStatistics(records, {}, kNow, kZone).parameters;
    ASSERT_EQ(parameters.size(), 3u);
    EXPECT_EQ(parameters[0].parameter, 1);
    EXPECT_EQ(parameters[1].threshold, 360) << "what is over one threshold is not over another";
    EXPECT_EQ(parameters[1].timeOver, 0);
    EXPECT_EQ(parameters[2].trips, 2u);
    EXPECT_EQ(parameters[2].threshold, 368);
    EXPECT_EQ(parameters[2].timeOver, 20);
    EXPECT_EQ(parameters[2].timeUnder, 30 + 580);
    EXPECT_EQ(parameters[2].highest, 370);
    EXPECT_EQ(parameters[2].lowest, 270);
}

TEST(DrivingStatistics, SumsOverMonthsVehiclesAndDriversAgree) {
    std::mt19937 random(3);
    for (int round = 0; round < 50; ++round) {
        std::vector<SummaryRecord> records;
        for (std::size_t i = 0, count = random() % 200; i < count; ++i)
            records.push_back(trip({2026, 3, -static_cast<int>(random() % 300), static_cast<int>(random() % 24)},
                                   random() % 4 ? "V" + std::to_string(random() % 5) : "",
                                   random() % 4 ? std::to_string(random() % 5) : "",
                                   static_cast<float>(random() % 99)));
        std::ranges::shuffle(records, random);
        const DrivingStatistics s = drivingStatistics(records, {}, kNow, kZone);
        const auto sum = [](const auto& parts) {
            DrivingTotals total;
            for (const auto& part : parts) {
                total.trips += part.totals.trips;
                total.distance += part.totals.distance;
                total.time += part.totals.time;
                total.topSpeed = std::max(total.topSpeed, part.totals.topSpeed);
            }
            return total;
        };
        for (const DrivingTotals& total : {sum(s.months), sum(s.vehicles), sum(s.drivers)}) {
            EXPECT_EQ(total.trips, s.totals.trips);
            EXPECT_EQ(total.distance, s.totals.distance); // whole metres
            EXPECT_EQ(total.time, s.totals.time);
            EXPECT_EQ(total.topSpeed, s.totals.topSpeed);
        }
        for (const char* name : {"last-month", "last-3-months"}) {
            const DrivingStatistics part = drivingStatistics(records, {&period(name)}, kNow, kZone);
            const std::size_t count = name == std::string_view("last-month") ? 1 : 3;
            std::size_t trips = 0;
            for (std::size_t i = 0; i < count; ++i)
                trips += s.months[10 - i].totals.trips;
            EXPECT_EQ(part.totals.trips, trips);
        }
    }
}

} // namespace
} // namespace quobrix
