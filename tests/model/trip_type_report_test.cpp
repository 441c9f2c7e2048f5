#include "model/trip_type_report.h"

#include "model/trip_rules.h"
#include "report/render.h"
#include "support/sample_trip.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

constexpr std::int32_t kHour = 3600, kDay = 24 * kHour;

class TripTypeReportTest : public ::testing::Test {
protected:
    RowIndex add(std::int32_t start, const char* type, double distance, const char* vin = test::kVin) {
        const RowIndex row = test::addTrip(document_, start);
        trips_.column<TTripLogTripTypeColumn>().set(row, type);
        trips_.column<TTripLogDistanceColumn>().set(row, distance);
        trips_.column<TTripLogVinColumn>().set(row, vin);
        return row;
    }
    TableRows all() const { return {&trips_, allRows(trips_)}; }
    std::int64_t amount(RowIndex row) const { return amountOf(trips_, row, types_, zone_).value_or(-1); }

    TQuobrixDocument document_;
    TTripLogTable& trips_ = document_.trips();
    std::vector<TripType> types_ =
        readTripTypes("Work\t0.3\tkm\nWork\t0.67\tmi\t2023-11-15\nLate\t1\tkm\t2030-01-01\nFun").types;
    TUnitSystem units_;
    TimeZone zone_;
};

TEST_F(TripTypeReportTest, EachTripIsPaidByTheRateOfItsLocalDayAndRoundedOnce) {
    zone_ =
        *TimeZone::named("EST5EDT,M3.2.0,M11.1.0"); // the trips start at 17:13 there, and five hours later in Greenwich
    add(test::kStart, "Work", 10'050);              // 3.015, exactly half a hundredth
    add(test::kStart + 3 * kHour, "wORK", 1000);    // 20:13, the next day in Greenwich
    add(test::kStart + 7 * kHour, "Work", 1609.344 * 10);
    add(test::kStart, "Fun", 1000);
    add(test::kStart, "Late", 1000);
    add(test::kStart, "", 1000);
    add(test::kStart, "Work", kNoValue);
    add(test::kStart, "Work", 1e300);
    EXPECT_EQ(amount(0), 302);
    EXPECT_EQ(amount(1), 30);
    EXPECT_EQ(amount(2), 670);
    EXPECT_EQ(amount(3), -1);
    EXPECT_EQ(amount(4), -1) << "the rate begins later";
    EXPECT_EQ(amount(5), -1);
    EXPECT_EQ(amount(6), 0);
    EXPECT_EQ(amount(7), -1) << "a damaged figure";
    trips_.removeRows(7, 1);
    const TableRows rows = all();
    const TripTypeTotals totals = tripTypeTotals({&rows, 1}, types_, zone_);
    EXPECT_EQ(totals.amount, 302 + 30 + 670);
    EXPECT_EQ(totals.paid, 4u);
    EXPECT_EQ(totals.unpaid, 1u);
    const TripAmountColumn column(trips_, types_, zone_);
    EXPECT_EQ(column.text(0, {units_, zone_}), "3.02");
    EXPECT_EQ(column.text(3, {units_, zone_}), "");
}

TEST_F(TripTypeReportTest, GroupsComeToTheWhole) {
    for (int day = 0; day < 40; ++day)
        add(test::kStart + day * kDay,
            day % 4 == 0   ? "Work"
            : day % 4 == 1 ? "fun"
            : day % 4 == 2 ? ""
                           : "Other",
            1000 + day, day % 3 == 0 ? "OTHER" : test::kVin);
    trips_.column<TTripLogDriverIDColumn>().set(5, 7);
    const TableRows rows = all();
    const TripTypeTotals whole = tripTypeTotals({&rows, 1}, types_, zone_);
    const auto names = [&](TripTypeGrouping by) {
        TripTypeTotals sum;
        std::string found;
        for (const TripTypeGroup& group : groupTrips({&rows, 1}, by, types_, {units_, zone_})) {
            sum.trips += group.totals.trips;
            sum.distance += group.totals.distance;
            sum.time += group.totals.time;
            sum.amount += group.totals.amount;
            found += group.name + "|";
        }
        EXPECT_EQ(sum.trips, whole.trips);
        EXPECT_NEAR(sum.distance, whole.distance, 1e-6);
        EXPECT_EQ(sum.time, whole.time);
        EXPECT_EQ(sum.amount, whole.amount);
        return found;
    };
    EXPECT_EQ(names(TripTypeGrouping::Type), "Work|Fun|Other||");
    EXPECT_EQ(names(TripTypeGrouping::Month), "Nov 2023|Dec 2023|");
    EXPECT_EQ(names(TripTypeGrouping::Vehicle), "Unknown #1|Unknown|") << "as the trip log calls them";
    EXPECT_EQ(names(TripTypeGrouping::Driver), "Unknown (7)|Unknown|") << "one without a name, and none";
    std::vector<RowIndex> some = rows.rows;
    keepType(some, trips_, "FUN");
    EXPECT_EQ(some.size(), 10u);
    some = rows.rows;
    keepType(some, trips_, "");
    EXPECT_EQ(some.size(), 10u);
}

TEST_F(TripTypeReportTest, OdometersAreCarriedFromTheNearestReading) {
    for (int day = 0; day < 4; ++day)
        add(test::kStart + day * kDay, "Work", 1000);
    add(test::kStart + kDay, "Work", 5000, "OTHER");
    const std::int64_t start = test::kStart;
    const std::vector<OdometerReading> readings{{test::kVin, start + kDay, 100'000},
                                                {test::kVin, start + 3 * kDay, 103'000}};
    const TableRows rows = all();
    const auto at = [&](std::int64_t time, const char* vehicle = test::kVin) {
        return odometerAt(readings, {&rows, 1}, vehicle, time).value_or(-1);
    };
    EXPECT_EQ(at(start + kDay), 100'000);
    EXPECT_EQ(at(start + kDay + 1), 101'000) << "a trip counts from its start on";
    EXPECT_EQ(at(start + 3 * kDay - 1), 102'000);
    EXPECT_EQ(at(start + 9 * kDay), 104'000) << "from the last one entered";
    EXPECT_EQ(at(start), 99'000) << "back from the first one";
    EXPECT_EQ(at(start, "OTHER"), -1);
    TripTypeReport report{.trips = {rows}, .types = types_, .readings = readings};
    const std::string text = renderText(tripTypeReport(report, {units_, zone_}));
    EXPECT_NE(text.find("Unknown #1  99,000.00 m  104,000.00 m\n\n"), std::string::npos) << text;
    report.readings.clear();
    EXPECT_EQ(renderText(tripTypeReport(report, {units_, zone_})).find("Odometer"), std::string::npos);
}

TEST_F(TripTypeReportTest, TellsWhatTheTripsComeToAndEachOfThem) {
    add(test::kStart, "Work", 10'000);
    trips_.column<TTripLogCommentsColumn>().set(0, "To Lübeck");
    TripTypeReport report{.trips = {all()}, .period = ShownText::asItIs("Last Month"), .types = types_};
    add(test::kStart + kDay, "", 30'000);
    report.trips = {all()};
    EXPECT_EQ(renderText(tripTypeReport(report, {units_, zone_})),
              "Trip Type Report\n\n"
              "  Period        Last Month (11/14/2023 to 11/15/2023)\n"
              "  Vehicle       Unknown #1\n"
              "  Trips         2\n"
              "  Driving Time  00:20:00\n"
              "  Distance      40,000.00 m\n"
              "  Amount        3.00\n\n"
              "Trip Types\n"
              "  Trip Type  Trips  Driving Time     Distance  Amount  Share\n"
              "  Work           1      00:10:00  10,000.00 m    3.00    25%\n"
              "  No Type        1      00:10:00  30,000.00 m            75%\n\n"
              "Trips\n"
              "  Date        Start     End       Driver   Trip Type     Distance  Amount  Purpose\n"
              "  11/14/2023  10:13 PM  10:23 PM  Unknown  Work       10,000.00 m    3.00  To Lübeck\n"
              "  11/15/2023  10:13 PM  10:23 PM  Unknown             30,000.00 m\n");
    report.trips.front().rows.clear();
    EXPECT_NE(renderText(tripTypeReport(report, {units_, zone_})).find("There is no trip of that time"),
              std::string::npos);
}

} // namespace
} // namespace quobrix
