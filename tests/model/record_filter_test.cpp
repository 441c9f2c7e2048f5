#include "model/record_filter.h"

#include "model/record_comparison.h"
#include "model/record_totals.h"
#include "support/sample_trip.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <limits>

namespace quobrix::test {
namespace {

using Rows = std::vector<RowIndex>;

const TimeZone kBerlin = *TimeZone::named("CET-1CEST,M3.5.0,M10.5.0/3");

std::int32_t at(const TimeZone& zone, int year, int month, int day, int hour = 0) {
    return zone.toUtc({.year = year, .month = month, .day = day, .hour = hour});
}

TEST(Periods, AreWholeMonthsOfTheLocalCalendar) {
    const std::int32_t now = at(kBerlin, 2026, 4, 15, 12);
    const std::int64_t april = at(kBerlin, 2026, 4, 1); // when clocks are at another distance from Greenwich
    EXPECT_EQ(april, at({}, 2026, 3, 31, 22));
    const TimeRange expected[] = {{april, now + 1},
                                  {at(kBerlin, 2026, 3, 1), april},
                                  {at(kBerlin, 2026, 1, 1), april},
                                  {at(kBerlin, 2025, 10, 1), april},
                                  {at(kBerlin, 2025, 4, 1), april}};
    ASSERT_EQ(periods().size(), std::size(expected));
    for (std::size_t i = 0; i < periods().size(); ++i)
        EXPECT_EQ(rangeOf(periods()[i], now, kBerlin), expected[i]) << periods()[i].name;
    // The last second of January by the local clock is February's at Greenwich for some, and the other way round.
    EXPECT_EQ(rangeOf(periods()[0], at(kBerlin, 2026, 2, 1), kBerlin).from, at({}, 2026, 1, 31, 23));
    EXPECT_EQ(rangeOf(periods()[1], at(kBerlin, 2026, 1, 31, 23), kBerlin).until, at(kBerlin, 2026, 1, 1));
}

TEST(Moments, AreDaysMinutesOrSeconds) {
    TUnitSystem units; // day, month, year
    units.setUnit(UnitTypeId::Date, UnitId::MonthDayYear);
    const TimeZone utc;
    const std::int64_t day = at(utc, 2026, 1, 31);
    const struct {
        const char* text;
        std::int64_t from, seconds;
    } cases[] = {
        {"2026-01-31", day, 86400},
        {"2026/1/31", day, 86400},
        {"1/31/2026", day, 86400},
        {"2026-01-31T15:00", day + 15 * 3600, 60},
        {"2026-01-31 15:00:30", day + 15 * 3600 + 30, 1},
        {"1/31/2026 3:00 PM", day + 15 * 3600, 60},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseMoment(c.text, {units, utc}), (TimeRange{c.from, c.from + c.seconds})) << c.text;
    EXPECT_EQ(parseMoment("2026-03-29", {units, kBerlin})->until, at(kBerlin, 2026, 3, 30)) << "a day of 23 hours";
    for (const char* text : {"", "today", "31/1/2026", "2026-13-01", "2026-01-31T15:00Z", "2026"})
        EXPECT_FALSE(parseMoment(text, {units, utc})) << text;
}

class Records : public testing::Test {
protected:
    /// Three trips a day apart: of Anna (7), of nobody, and of driver 8, who has no name; another logger and vehicle.
    Records() {
        for (int day = 0; day < 3; ++day)
            addTrip(document_, kStart + day * 86400);
        TTripLogTable& trips = document_.trips();
        trips.column<TTripLogDriverIDColumn>().setAll({7, Element<std::int32_t>::kNone, 8});
        document_.drivers().nameAll(document_.drivers().addMissing(std::vector<std::string>{"7", "8"}), "");
        document_.drivers().nameAll(std::vector<std::string>{"7"}, "Anna");
        trips.column<TTripLogQuobrixSerialNumberColumn>().set(2, "K-0043-B");
        trips.column<TTripLogVinColumn>().set(2, "1HGCM82633A004352");
        document_.vehicles().nameAll(std::vector<std::string>{kVin}, "Family wagon");
        trips.column<TTripLogCommentsColumn>().setAll({"To work", "To Ännes", ""});
    }

    Rows found(const RecordCriteria& criteria, LogId id = LogId::Trips) {
        const LogSpec& log = logSpec(id);
        const Table& table = *document_.log(log);
        std::vector<const Column*> columns;
        for (const PersistentType* type : log.list())
            columns.push_back(&table.columnOf(*type));
        return findRecords(log, table, columns, criteria, context_);
    }

    TQuobrixDocument document_;
    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
};

TEST_F(Records, AreFoundByEveryCriterionAndAllOfThem) {
    const struct {
        RecordCriteria criteria;
        Rows rows;
    } cases[] = {
        {{}, {0, 1, 2}},
        {{.words = "TO "}, {0, 1}},
        {{.words = "änne"}, {1}},
        {{.words = "family"}, {0, 1}},
        {{.time = {kStart + 1, {}}}, {1, 2}},
        {{.time = {{}, kStart + 86400}}, {0}},
        {{.vehicle = "family WAGON"}, {0, 1}},
        {{.vehicle = "1hgcm82633a004352"}, {2}},
        {{.driver = "anna"}, {0}},
        {{.driver = "8"}, {2}},
        {{.driver = ""}, {1}},
        {{.driver = "Family wagon"}, {}},
        {{.logger = "K-0042-B"}, {0, 1}},
        {{.words = "to", .time = {kStart + 1, {}}, .vehicle = kVin, .logger = "K-0042-B"}, {1}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(found(c.criteria), c.rows) << &c - cases;
    const LogSpec& log = logSpec(LogId::Trips);
    EXPECT_TRUE(unknownNames(log, document_.trips(), {.vehicle = "Family wagon", .driver = "8", .logger = ""}).empty());
    EXPECT_EQ(unknownNames(log, document_.trips(), {.vehicle = "Anna", .driver = "9"}),
              (std::vector{RecordName::Vehicle, RecordName::Driver}));
    const auto names = [&](RecordName what) {
        std::string text;
        for (const OccurringName& name : namesIn(log, document_.trips(), what, context_))
            text += name.key + "=" + name.shown + ";";
        return text;
    };
    EXPECT_EQ(names(RecordName::Vehicle), std::string(kVin) + "=Family wagon;1HGCM82633A004352=Unknown;");
    EXPECT_EQ(names(RecordName::Driver), "7=Anna;=;8=Unknown;");
    EXPECT_EQ(names(RecordName::Logger), "K-0042-B=Unknown (K-0042-B);K-0043-B=Unknown (K-0043-B);") << "told apart";
    document_.activity().insertRows(0, 1);
    EXPECT_EQ(found({.driver = ""}, LogId::Activity), Rows()) << "a log without drivers";
}

TEST_F(Records, AreAddedUp) {
    const TableRows all{&document_.trips(), {0, 1, 2}};
    const TableRows parts[] = {{&document_.trips(), {0}}, {&document_.trips(), {2}}};
    document_.trips().column<TTripLogDistanceColumn>().set(1, kNoValue);
    document_.trips().column<TTripLogEndTimeColumn>().set(1, Element<std::int32_t>::kNone);
    EXPECT_EQ(totalDistance({&all, 1}), 24000);
    EXPECT_EQ(totalTime({&all, 1}), 1200);
    EXPECT_EQ(totalEvents({&all, 1}), 12);
    EXPECT_EQ(totalsText(logSpec(LogId::Trips), parts, context_), "2 trips, 00:20:00, 24,000.00 m, 8 events");
    EXPECT_EQ(totalsText(logSpec(LogId::Activity), {}, context_), "0 events");
    for (const double damaged :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), -1.0}) {
        document_.trips().column<TTripLogDistanceColumn>().set(1, damaged);
        EXPECT_EQ(totalDistance({&all, 1}), 24000) << damaged;
    }
    auto& brakes = document_.trips().column<TTripLogHardBrakesColumn>();
    const std::int64_t others = totalEvents({&all, 1}) - brakes.at(1);
    brakes.set(1, -50);
    EXPECT_EQ(totalEvents({&all, 1}), others);
}

TEST(RepeatedRecords, AreLeftOutAsADownloadKnowsThemAgain) {
    const struct {
        const char* what;
        std::function<void(TQuobrixDocument&)> change; ///< of the later document
        LogId log;
        Rows earlier, later;
    } cases[] = {
        {"the same", [](auto&) {}, LogId::Trips, {0, 1}, {}},
        {"fuller",
         [](auto& d) {
             auto& samples = *d.trips().template column<TTripLogSampleTableColumn>().object(1);
             samples.insertRows(61, 1);
             d.trips().template column<TTripLogDistanceColumn>().set(1, 13000);
         },
         LogId::Trips,
         {0},
         {1}},
        {"another drive of a clock that started over",
         [](auto& d) { d.trips().template column<TTripLogSampleTableColumn>().object(1)->speed().set(3, 99); },
         LogId::Trips,
         {0, 1},
         {1}},
        {"another vehicle",
         [](auto& d) { d.trips().template column<TTripLogVinColumn>().set(1, "1HGCM82633A004352"); },
         LogId::Trips,
         {0, 1},
         {1}},
        {"given another vehicle by a person",
         [](auto& d) {
             d.trips().setRecorded(1, kVin, 7);
             d.trips().template column<TTripLogVinColumn>().set(1, "1HGCM82633A004352");
         },
         LogId::Trips,
         {0, 1},
         {}},
        {"another time",
         [](auto& d) { d.trips().template column<TTripLogStartTimeColumn>().set(1, kStart + 7200); },
         LogId::Trips,
         {0, 1},
         {1}},
        {"two events of one second", [](auto&) {}, LogId::Activity, {0, 1}, {}},
        {"one more of them", [](auto& d) { d.activity().insertRows(2, 1); }, LogId::Activity, {0, 1}, {2}},
        {"a figure more",
         [](auto& d) { d.troubles().template column<TTroubleLogEngineSpeedColumn>().set(0, 30); },
         LogId::Troubles,
         {},
         {0}},
        {"another code",
         [](auto& d) { d.troubles().template column<TTroubleLogTroubleCodeColumn>().set(0, "P0301"); },
         LogId::Troubles,
         {0},
         {0}},
    };
    for (const auto& c : cases) {
        TQuobrixDocument earlier, later;
        for (TQuobrixDocument* document : {&earlier, &later}) {
            addTrip(*document, kStart);
            addTrip(*document, kStart + 3600);
            document->activity().insertRows(0, 2);
            document->troubles().insertRows(0, 1);
            document->troubles().column<TTroubleLogTroubleCodeColumn>().set(0, "P0300");
        }
        c.change(later);
        const LogSpec& log = logSpec(c.log);
        TableRows parts[] = {{earlier.log(log), allRows(*earlier.log(log))},
                             {later.log(log), allRows(*later.log(log))}};
        dropRepeated(log, parts);
        EXPECT_EQ(parts[0].rows, c.earlier) << c.what;
        EXPECT_EQ(parts[1].rows, c.later) << c.what;
    }
}

} // namespace
} // namespace quobrix::test
