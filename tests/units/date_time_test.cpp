#include "units/date_time.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

constexpr DateTime kMarch{2009, 3, 4, 15, 4, 5};

TEST(DateText, FollowsTheUnitsOfDateAndTime) {
    TUnitSystem units;
    EXPECT_EQ(dateTimeText(units, kMarch), "03/04/2009 03:04 PM");
    units.setUnit(UnitTypeId::Date, UnitId::DayMonthYear);
    units.setUnit(UnitTypeId::Time, UnitId::Hour24);
    EXPECT_EQ(dateTimeText(units, kMarch), "04/03/2009 15:04");
    units.setUnit(UnitTypeId::Date, UnitId::YearMonthDay);
    EXPECT_EQ(dateText(units, kMarch), "2009/03/04");
    EXPECT_EQ(dateText(units, {2009, 2, 31}), "2009/03/03") << "a day past its month's end rolls over";
    EXPECT_EQ(dateText(units, {2008, 2, 31}), "2008/03/02");

    units.setUnit(UnitTypeId::Time, UnitId::AmPm);
    EXPECT_EQ(timeText(units, {2009, 3, 4, 0, 15}), "12:15 AM");
    EXPECT_EQ(timeText(units, {2009, 3, 4, 12, 0}), "12:00 PM");
    units.setLocale({{}, "πμ", ""});
    EXPECT_EQ(timeText(units, {2009, 3, 4, 9, 0}), "09:00 πμ");
    EXPECT_EQ(timeText(units, kMarch), "03:04 PM") << "a locale without a word";
}

TEST(DateText, FixedForms) {
    EXPECT_EQ(yearFirstText(kMarch), "2009/03/04 15:04:05 ");
    EXPECT_EQ(twelveHourText(kMarch), "03/04/2009 03:04:05 PM");
    EXPECT_EQ(twelveHourText({2009, 3, 4, 0, 15}), "03/04/2009 12:15:00 AM");
    EXPECT_EQ(twelveHourTime({2009, 3, 4, 12, 0}), "12:00 PM");
    EXPECT_EQ(dayFirstDate(kMarch), "04/03/2009");
    EXPECT_EQ(shortDate(kMarch), "3/4/2009");
    EXPECT_EQ(compactDate(kMarch), "04March2009");
    EXPECT_EQ(compactDate({2026, 11, 15}), "15Nov2026");
    EXPECT_EQ(currentTimeText({2009, 3, 4, 0, 15}), "00:15:00 AM") << "unlike the other forms";
    EXPECT_EQ(currentTimeText({2009, 3, 4, 12, 0}), "12:00:00 PM");
    EXPECT_EQ(currentTimeText({2009, 3, 4, 23, 59, 59}), "11:59:59 PM");
    EXPECT_EQ(timestampText(kMarch), "200903041504");
    EXPECT_EQ(logTimeText(kMarch), "03/04/2009 - 03:04 PM");
    EXPECT_EQ(monthName(9).english(), "Sep");
    EXPECT_TRUE(monthName(13).empty());
    EXPECT_EQ(weekdayName(weekday(kMarch)).english(), "Wednesday");
    EXPECT_EQ(durationText(3661), "01:01:01");
    EXPECT_EQ(durationText(360000), "100:00:00");
    EXPECT_EQ(durationText(-5), "-00:00:05");
}

TEST(DateText, WidensYearsAndChecksRanges) {
    const int rows[][2] = {{0, 2000}, {9, 2009},  {10, 2010}, {37, 2037}, {38, 38},
                           {69, 69},  {70, 1970}, {99, 1999}, {100, 100}, {2037, 2037}};
    for (const auto& [typed, year] : rows)
        EXPECT_EQ(widenYear(typed), year);
    DateTime date{37, 2, 31};
    EXPECT_TRUE(widenAndValidate(date));
    for (DateTime bad : {DateTime{38, 1, 1}, {1969, 1, 1}, {2038, 1, 1}, {2009, 13, 1}, {2009, 0, 1}, {2009, 1, 32}})
        EXPECT_FALSE(widenAndValidate(bad));
}

TEST(DateEntry, ReadsTheCurrentOrder) {
    TUnitSystem units;
    EXPECT_EQ(parseDate(units, "3/4/09"), (DateTime{2009, 3, 4}));
    units.setUnit(UnitTypeId::Date, UnitId::DayMonthYear);
    EXPECT_EQ(parseDate(units, " 4.3.2009 "), (DateTime{2009, 3, 4}));
    EXPECT_EQ(parseDateTime(units, "4-3-99 5:06 pm"), (DateTime{1999, 3, 4, 17, 6}));
    EXPECT_EQ(parseDateTime(units, "04/03/2009"), (DateTime{2009, 3, 4}));
    units.setUnit(UnitTypeId::Date, UnitId::YearMonthDay);
    EXPECT_EQ(parseDateTime(units, "9 3 4 15:04:05"), kMarch);
    for (const char* bad : {"", "2009", "2009/3", "2009/3/4x", "209/3/4", "2009/13/4", "38/1/1", "2009/-3/4",
                            "2009/3/4/5", "99999999999/1/1", "2009//4"})
        EXPECT_FALSE(parseDate(units, bad)) << bad;
}

TEST(DateEntry, ReadsTimesOfBothClocks) {
    TUnitSystem units;
    const auto hours = [&](const char* text) {
        const std::optional<DateTime> time = parseTime(units, text);
        return time ? time->hour * 100 + time->minute : -1;
    };
    EXPECT_EQ(hours("15:04"), 1504);
    EXPECT_EQ(hours("12:15 AM"), 15);
    EXPECT_EQ(hours("12 pm"), 1200);
    EXPECT_EQ(hours("3:04PM"), 1504);
    for (const char* bad :
         {"", "9", "24:00", "13:00 PM", "0:30 AM", "9:60", "9:5:61", "9:05 XM", "9:05 PM PM", "9:05 PM 1"})
        EXPECT_EQ(hours(bad), -1) << bad;
    units.setLocale({{}, "vorm.", "nachm."});
    for (const char* typed : {"3:04 Nachm.", "3:04 nachm", "3:04 PM"})
        EXPECT_EQ(hours(typed), 1504) << typed;
    units.setLocale({{}, "a.\u00A0m.", "p.\u00A0m."}); // with a blank that no keyboard has
    for (const char* typed : {"3:04 p.\u00A0m.", "3:04 p. m.", "3:04p.m.", "3:04 PM"})
        EXPECT_EQ(hours(typed), 1504) << typed;
    EXPECT_EQ(hours("3:04 ."), -1);
}

TEST(DateEntry, ReadsWhatItWrites) {
    TUnitSystem units;
    for (const UnitId order : unitTypeRecord(UnitTypeId::Date).units) {
        for (const UnitId clock : unitTypeRecord(UnitTypeId::Time).units) {
            units.setUnit(UnitTypeId::Date, order);
            units.setUnit(UnitTypeId::Time, clock);
            for (std::int64_t s = 0; s < 2145916800; s += 86400 * 17 + 3660) {
                const DateTime value = fieldsFromSeconds(s);
                ASSERT_EQ(parseDateTime(units, dateTimeText(units, value)), value);
            }
        }
    }
}

} // namespace
} // namespace quobrix
