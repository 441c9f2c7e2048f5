#include "units/date_time.h"

#include "units/unit_system.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <array>
#include <chrono>

namespace quobrix {
namespace {

constexpr std::array<std::string_view, 13> kMonthNames = {"",     "Jan",    "Feb", "March", "April", "May", "June",
                                                          "July", "August", "Sep", "Oct",   "Nov",   "Dec"};
constexpr std::array<std::string_view, 7> kWeekdayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                           "Thursday", "Friday", "Saturday"};
constexpr std::int64_t kDay = 86400;

int twelveHour(int hour) { return hour == 0 ? 12 : hour > 12 ? hour - 12 : hour; }
std::string_view halfOfDay(int hour) { return hour < 12 ? "AM" : "PM"; }

// What every cell of every list needs is compiled. DATE and TIME have every field within its range.

std::string textOfDate(const TUnitSystem& units, const DateTime& date) {
    switch (units.unit(UnitTypeId::Date)) {
    case UnitId::DayMonthYear:
        return fmt::format(FMT_COMPILE("{:02}/{:02}/{:04}"), date.day, date.month, date.year);
    case UnitId::YearMonthDay:
        return fmt::format(FMT_COMPILE("{:04}/{:02}/{:02}"), date.year, date.month, date.day);
    default:
        return fmt::format(FMT_COMPILE("{:02}/{:02}/{:04}"), date.month, date.day, date.year);
    }
}

std::string textOfTime(const TUnitSystem& units, const DateTime& time) {
    if (units.unit(UnitTypeId::Time) == UnitId::Hour24)
        return fmt::format(FMT_COMPILE("{:02}:{:02}"), time.hour, time.minute);
    const std::string& word = time.hour < 12 ? units.locale().am : units.locale().pm;
    return fmt::format(FMT_COMPILE("{:02}:{:02} {}"), twelveHour(time.hour), time.minute,
                       word.empty() ? halfOfDay(time.hour) : word);
}

} // namespace

std::int64_t secondsFromFields(const DateTime& fields) {
    using namespace std::chrono;
    const int months = fields.month - 1;
    const int carry = months >= 0 ? months / 12 : -((11 - months) / 12);
    const year_month_day first{year{fields.year + carry}, month{static_cast<unsigned>(months - carry * 12 + 1)},
                               day{1}};
    const std::int64_t days = sys_days{first}.time_since_epoch().count() + std::int64_t{fields.day} - 1;
    return days * kDay + std::int64_t{fields.hour} * 3600 + std::int64_t{fields.minute} * 60 + fields.second;
}

DateTime fieldsFromSeconds(std::int64_t seconds) {
    using namespace std::chrono;
    const sys_days day = floor<days>(sys_seconds{std::chrono::seconds{seconds}});
    const year_month_day date{day};
    const auto rest = static_cast<int>(seconds - day.time_since_epoch().count() * kDay);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            rest / 3600,
            rest / 60 % 60,
            rest % 60};
}

int weekday(const DateTime& date) {
    using namespace std::chrono;
    const sys_days day = floor<days>(sys_seconds{seconds{secondsFromFields(date)}});
    return static_cast<int>(std::chrono::weekday{day}.c_encoding());
}

int widenYear(int year) {
    if (year >= 70 && year <= 99)
        return year + 1900;
    return year >= 0 && year <= 37 ? year + 2000 : year;
}

bool widenAndValidate(DateTime& date) {
    date.year = widenYear(date.year);
    return date.year >= 1970 && date.year <= 2037 && date.month >= 1 && date.month <= 12 && date.day >= 1 &&
           date.day <= 31;
}

std::string_view monthName(int month) {
    return month >= 1 && month <= 12 ? kMonthNames[static_cast<std::size_t>(month)] : std::string_view{};
}

std::string_view weekdayName(int day) {
    return day >= 0 && day <= 6 ? kWeekdayNames[static_cast<std::size_t>(day)] : std::string_view{};
}

std::string dateText(const TUnitSystem& units, const DateTime& value) { return textOfDate(units, normalized(value)); }

std::string timeText(const TUnitSystem& units, const DateTime& value) { return textOfTime(units, normalized(value)); }

std::string dateTimeText(const TUnitSystem& units, const DateTime& value) {
    const DateTime moment = normalized(value);
    return textOfDate(units, moment) + " " + textOfTime(units, moment);
}

std::string yearFirstText(const DateTime& value) {
    return fmt::format("{:04}/{:02}/{:02} {:02}:{:02}:{:02} ", value.year, value.month, value.day, value.hour,
                       value.minute, value.second);
}

std::string twelveHourText(const DateTime& value) {
    return fmt::format("{:02}/{:02}/{} {:02}:{:02}:{:02} {}", value.month, value.day, value.year,
                       twelveHour(value.hour), value.minute, value.second, halfOfDay(value.hour));
}

std::string twelveHourTime(const DateTime& value) {
    return fmt::format("{:02}:{:02} {}", twelveHour(value.hour), value.minute, halfOfDay(value.hour));
}

std::string dayFirstDate(const DateTime& value) {
    return fmt::format("{:02}/{:02}/{:04}", value.day, value.month, value.year);
}

std::string shortDate(const DateTime& today) { return fmt::format("{}/{}/{}", today.month, today.day, today.year); }

std::string compactDate(const DateTime& today) {
    return fmt::format("{:02}{}{}", today.day, monthName(today.month), today.year);
}

std::string currentTimeText(const DateTime& now) {
    const int hour = now.hour > 12 ? now.hour - 12 : now.hour;
    return fmt::format("{:02}:{:02}:{:02} {}", hour, now.minute, now.second, halfOfDay(now.hour));
}

std::string timestampText(const DateTime& value) {
    return fmt::format("{:04}{:02}{:02}{:02}{:02}", value.year, value.month, value.day, value.hour, value.minute);
}

std::string durationText(std::int64_t seconds) {
    const auto magnitude = seconds < 0 ? 0 - static_cast<std::uint64_t>(seconds) : static_cast<std::uint64_t>(seconds);
    return fmt::format(FMT_COMPILE("{}{:02}:{:02}:{:02}"), seconds < 0 ? "-" : "", magnitude / 3600,
                       magnitude / 60 % 60, magnitude % 60);
}

} // namespace quobrix
