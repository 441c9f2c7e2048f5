#include "device/records.h"

#include "support/record_set_builder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>

namespace quobrix::testing {
namespace {

LogRecords parseTrips(const Bytes& set) {
    LogRecords records;
    parseMainRecords(set, {}, records);
    return records;
}

template <class Change>
Bytes tripWith(Change change) {
    QuobrixTripRecord trip = plainTrip();
    change(trip);
    return RecordSetBytes().add(trip, {10, 20, 30}).take();
}

/// Why the first record of SET was refused; empty when none was.
std::string refusal(const LogRecords& records) { return records.refused.empty() ? "" : records.refused[0].reason; }

TEST(Records, EachFigureOfATripIsChecked) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* what;
        Bytes set;
    } damaged[] = {
        {"serial number without end", tripWith([](auto& t) { std::fill_n(t.serialNumber, 12, 'A'); })},
        {"serial number of another form", tripWith([](auto& t) { t.serialNumber[3] = 'X'; })},
        {"VIN not printable", tripWith([](auto& t) { t.vin[3] = '\x80'; })},
        {"end before start", tripWith([](auto& t) { t.endTime = t.startTime - 1; })},
        {"end before start by more than 31 bits", tripWith([](auto& t) {
             t.startTime = std::numeric_limits<std::int32_t>::max();
             t.endTime = std::numeric_limits<std::int32_t>::min();
         })},
        {"distance", tripWith([&](auto& t) { t.distance = nan; })},
        {"distance without value", tripWith([](auto& t) { t.distance = QUOBRIX_NO_VALUE; })},
        {"speed", tripWith([](auto& t) { t.maximumSpeed = -1; })},
        {"threshold", tripWith([](auto& t) { t.hardBrakeThreshold = std::numeric_limits<double>::infinity(); })},
        {"band limit", tripWith([&](auto& t) { t.bandLimit[2] = nan; })},
        {"more samples than seconds", tripWith([](auto& t) { --t.endTime; })},
        {"interval of zero", tripWith([](auto& t) { t.speedSamplingInterval = 0; })},
        {"array beyond the record", tripWith([](auto& t) { t.speedSamples.count = 9; })},
        {"array far beyond the record", tripWith([](auto& t) {
             t.speedSamples = {0xFFFFFFF8u, 0xFFFFFFFFu};
         })},
        {"array within the fixed part", tripWith([](auto& t) { t.speedSamples.offset = 8; })},
        {"array not aligned", tripWith([](auto& t) {
             t.hardBrakes = {sizeof t + 1, 1};
         })},
        {"event after the end", tripWith([](auto& t) {
             t.hardBrakes = {sizeof t, 1};
         })},
        {"more seconds than it lasts", tripWith([](auto& t) { t.idleSeconds = t.bandSeconds[3] = 2; })},
        {"more seconds than a number holds", tripWith([](auto& t) { t.idleSeconds = t.bandSeconds[0] = 0xFFFFFFFFu; })},
        {"speed of 256 km/h", tripWith([](auto& t) { t.maximumSpeed = 256; })},
        {"distance at 257 km/h", tripWith([](auto& t) { t.distance = 257 / 3.6 * 3; })},
        {"unknown parameter", tripWith([](auto& t) { t.series[3].parameter = 25; })},
        {"series without interval", tripWith([](auto& t) {
             t.series[3] = {1, 0, 0, 0, {sizeof t, 1}};
         })},
    };
    for (const auto& [what, set] : damaged) {
        const LogRecords records = parseTrips(set);
        EXPECT_TRUE(records.trips.empty()) << what;
        ASSERT_EQ(records.refused.size(), 1u) << what;
        EXPECT_EQ(records.refused[0].kind, RecordKind::Trip) << what;
        EXPECT_EQ(records.refused[0].ordinal, 1u) << what;
    }
    const Bytes utmost = tripWith([](auto& t) { // the last of its samples may stand for another second
        t.maximumSpeed = 255;
        t.distance = 255 / 3.6 * 3;
        t.idleSeconds = 1;
        t.bandSeconds[3] = 2;
    });
    EXPECT_EQ(refusal(parseTrips(utmost)), "");
}

TEST(Records, OneBadRecordNeverStopsTheRest) {
    QuobrixTripRecord bad = plainTrip();
    bad.distance = -1;
    RecordSetBytes set;
    set.add(plainTrip(), {1, 2, 3}).add(bad, {1, 2, 3}).add(plainActivity()).add(plainTrip(), {4, 5, 6});
    const LogRecords records = parseTrips(set.take());
    EXPECT_EQ(records.trips.size(), 2u);
    ASSERT_EQ(records.refused.size(), 2u);
    EXPECT_EQ(records.refused[0].ordinal, 2u);
    EXPECT_EQ(records.refused[1].kind, RecordKind::Activity) << "activity has no place among the trips";
}

TEST(Records, ASetThatIsShorterThanItsHeadIsRefused) {
    for (const std::uint32_t size : {0u, 4u, 7u}) {
        RecordBlock block(static_cast<QuobrixRecordSet*>(std::malloc(sizeof(QuobrixRecordSet))));
        *block = {size, 3};
        EXPECT_EQ(parseTrips(Bytes(bytesOf(block).begin(), bytesOf(block).end())).refusedCount(), 1u) << size;
        *block = {0, 0}; // what a library leaves blank holds nothing
        EXPECT_EQ(parseTrips(Bytes(bytesOf(block).begin(), bytesOf(block).end())).refusedCount(), 0u);
    }
}

TEST(Records, WhatIsNotCountedIsNotPassedOver) {
    auto set = RecordSetBytes().add(plainTrip(), {10, 20, 30}).add(plainTrip(), {10, 20, 30}).take();
    set[4] = 1; // of two
    LogRecords records;
    parseMainRecords(set, {}, records);
    EXPECT_EQ(records.trips.size(), 1u);
    EXPECT_EQ(records.refusedCount(), 1u) << "so that the logger is not cleared of it unasked";
}

TEST(Records, ADamagedLengthHidesTheRest) {
    const Bytes whole = RecordSetBytes().add(plainActivity()).add(plainActivity()).add(plainActivity()).take();
    const auto parse = [](const Bytes& set) {
        LogRecords records;
        parseMainRecords({}, set, records);
        return records;
    };
    ASSERT_EQ(parse(whole).activities.size(), 3u);

    const std::size_t second = sizeof(QuobrixRecordSet) + sizeof(QuobrixActivityRecord);
    for (const int length : {0, 4, 49, 255}) {
        Bytes damaged = whole;
        damaged[second] = static_cast<std::uint8_t>(length);
        EXPECT_EQ(parse(damaged).activities.size(), 1u) << length;
        EXPECT_EQ(parse(damaged).refusedCount(), 2u) << length;
    }
    Bytes boastful = whole;
    std::fill_n(boastful.begin() + 4, 4, 0xFF); // the count of records
    EXPECT_EQ(parse(boastful).activities.size(), 3u);
    EXPECT_EQ(parse(boastful).refusedCount(), 1u);
    for (std::size_t size = 1; size < whole.size(); ++size) {
        const LogRecords records = parse(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_EQ(records.activities.size(), (size - 8) / sizeof(QuobrixActivityRecord) * (size >= 8)) << size;
        EXPECT_GE(records.refusedCount(), 1u) << size;
    }
}

TEST(Records, UnreportedFiguresOfATroubleCode) {
    QuobrixTroubleRecord raw = plainTrouble();
    LogRecords records;
    parseMainRecords({}, RecordSetBytes().add(raw).take(), records);
    ASSERT_EQ(records.troubles.size(), 1u) << refusal(records);
    EXPECT_EQ(records.troubles[0].code, "P0301");
    EXPECT_FALSE(hasValue(records.troubles[0].fuelPressure));
    EXPECT_EQ(records.troubles[0].fuelSystemStatus, (std::array<std::int32_t, 2>{1, QUOBRIX_NO_CODE}));
}

// Clearing the logger would destroy what was refused.
TEST(Records, NoneIsRefusedForWhatItTells) {
    const std::pair<std::string_view, const char*> codes[] = {
        {"", ""}, {"P030", "P030"}, {"X0301", "X0301"}, {"P\x80\n01", "P??01"}, {"P0301P03", "P0301P03"}};
    const std::int32_t numbers[] = {std::numeric_limits<std::int32_t>::max(), 21, 8, -1, -7, QUOBRIX_NO_CODE + 1};
    for (const auto& [told, kept] : codes) {
        QuobrixTroubleRecord raw = plainTrouble();
        std::fill(std::begin(raw.code), std::end(raw.code), '\0');
        std::ranges::copy(told, raw.code); // the longest one has no end
        LogRecords records;
        parseMainRecords({}, RecordSetBytes().add(raw).take(), records);
        ASSERT_EQ(records.troubles.size(), 1u) << refusal(records);
        EXPECT_EQ(records.troubles[0].code, kept);
    }
    const double nan = std::numeric_limits<double>::quiet_NaN(), infinite = std::numeric_limits<double>::infinity();
    for (const double figure : {nan, infinite, -infinite, 256.0, 255.9}) {
        QuobrixTroubleRecord raw = plainTrouble();
        raw.engineSpeed = 800;
        raw.vehicleSpeed = raw.longTermFuelTrim[1] = figure;
        LogRecords records;
        parseMainRecords({}, RecordSetBytes().add(raw).take(), records);
        ASSERT_EQ(records.troubles.size(), 1u) << refusal(records);
        EXPECT_EQ(records.troubles[0].engineSpeed, 800);
        EXPECT_EQ(records.troubles[0].longTermFuelTrim[1], std::isfinite(figure) ? figure : kNoValue);
        EXPECT_EQ(records.troubles[0].vehicleSpeed, figure < 256 && figure > 0 ? figure : kNoValue);
    }
    for (const std::int32_t number : numbers) {
        QuobrixTroubleRecord trouble = plainTrouble();
        trouble.fuelSystemStatus[0] = trouble.fuelSystemStatus[1] = number;
        QuobrixActivityRecord activity = plainActivity();
        activity.eventType = number;
        LogRecords records;
        parseMainRecords({}, RecordSetBytes().add(trouble).add(activity).take(), records);
        ASSERT_EQ(records.troubles.size(), 1u) << refusal(records);
        EXPECT_EQ(records.troubles[0].fuelSystemStatus, (std::array{number, number}));
        ASSERT_EQ(records.activities.size(), 1u) << refusal(records);
        EXPECT_EQ(records.activities[0].eventType, number);
    }
}

TEST(Records, SamplesFindTheirAccident) {
    QuobrixStopRecord bad = plainStop();
    bad.timestamp = bad.startTime - 1;
    const Bytes stops = RecordSetBytes().add(bad).add(plainStop()).add(plainStop()).take();
    const Bytes samples = RecordSetBytes()
                              .add(samplesOf(0, 3), {9, 9, 0})
                              .add(samplesOf(1, 3), {50, 20, 0})
                              .add(samplesOf(1, 3), {1, 1, 1})
                              .add(samplesOf(3, 3), {1, 1, 1})
                              .add(samplesOf(2, 4), {1, 1, 1, 1})
                              .take();
    LogRecords records;
    parseAccidentRecords(stops, samples, records);
    ASSERT_EQ(records.stops.size(), 2u) << refusal(records);
    EXPECT_EQ(records.stops[0].speedSamples, (std::vector<std::uint8_t>{50, 20, 0}));
    EXPECT_TRUE(records.stops[1].speedSamples.empty()) << "one second too many for its duration";
    ASSERT_EQ(records.refused.size(), 4u);
    EXPECT_EQ(records.refused[0].kind, RecordKind::Stop);
    EXPECT_EQ(records.refused[1].reason, "its stop has samples already");
    EXPECT_EQ(records.refused[2].reason, "its stop is missing");

    parseAccidentRecords(stops, samples, records); // the second accident log numbers its stops anew
    ASSERT_EQ(records.stops.size(), 4u);
    EXPECT_EQ(records.stops[2].speedSamples, (std::vector<std::uint8_t>{50, 20, 0}));
}

} // namespace
} // namespace quobrix::testing
