#include "units/date_time.h"

#include "texts/text.h"
#include "units/text_writer.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <chrono>

namespace quobrix {
namespace {

constexpr SourceText kMonthNames[] = {
    SourceText(),      SourceText("Jan"),  SourceText("Feb"),  SourceText("March"),  SourceText("April"),
    SourceText("May"), SourceText("June"), SourceText("July"), SourceText("August"), SourceText("Sep"),
    SourceText("Oct"), SourceText("Nov"),  SourceText("Dec"),
};
constexpr SourceText kWeekdayNames[] = {
    SourceText("Sunday"),   SourceText("Monday"), SourceText("Tuesday"),  SourceText("Wednesday"),
    SourceText("Thursday"), SourceText("Friday"), SourceText("Saturday"),
};

int twelveHour(int hour) { return hour == 0 ? 12 : hour > 12 ? hour - 12 : hour; }
SourceText halfOfDay(int hour) { return hour < 12 ? SourceText("AM") : SourceText("PM"); }

// What every cell of every list needs is put together by hand, into a buffer. DATE and TIME have every field within its
// range.

void appendTwoDigits(TextWriter& text, int value) {
    const char digits[] = {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
    text.append({digits, 2});
}

void appendYear(TextWriter& text, int year) {
    if (year < 0 || year > 9999) {
        text.append(fmt::format("{:04}", year));
        return;
    }
    appendTwoDigits(text, year / 100);
    appendTwoDigits(text, year % 100);
}

void appendDate(TextWriter& text, const TUnitSystem& units, const DateTime& date) {
    const UnitId order = units.unit(UnitTypeId::Date);
    if (order == UnitId::YearMonthDay) {
        appendYear(text, date.year);
        text.append("/");
    }
    appendTwoDigits(text, order == UnitId::DayMonthYear ? date.day : date.month);
    text.append("/");
    appendTwoDigits(text, order == UnitId::DayMonthYear ? date.month : date.day);
    if (order != UnitId::YearMonthDay) {
        text.append("/");
        appendYear(text, date.year);
    }
}

void appendTime(TextWriter& text, const TUnitSystem& units, const DateTime& time, bool seconds = false) {
    const bool wholeDay = units.unit(UnitTypeId::Time) == UnitId::Hour24;
    appendTwoDigits(text, wholeDay ? time.hour : twelveHour(time.hour));
    text.append(":");
    appendTwoDigits(text, time.minute);
    if (seconds) {
        text.append(":");
        appendTwoDigits(text, time.second);
    }
    if (wholeDay)
        return;
    const std::string& word = time.hour < 12 ? units.locale().am : units.locale().pm;
    text.append(" ");
    std::string translated;
    text.append(word.empty() ? textIn(translated, halfOfDay(time.hour)) : word);
}

} // namespace

std::int64_t secondsFromFields(const DateTime& fields) {
    using namespace std::chrono;
    const int months = fields.month - 1;
    const int carry = months >= 0 ? months / 12 : -((11 - months) / 12);
    const year_month_day first{year{fields.year + carry}, month{static_cast<unsigned>(months - carry * 12 + 1)},
                               day{1}};
    const std::int64_t days = sys_days{first}.time_since_epoch().count() + std::int64_t{fields.day} - 1;
    return days * kSecondsPerDay + std::int64_t{fields.hour} * 3600 + std::int64_t{fields.minute} * 60 + fields.second;
}

DateTime fieldsFromSeconds(std::int64_t seconds) {
    using namespace std::chrono;
    const sys_days day = floor<days>(sys_seconds{std::chrono::seconds{seconds}});
    const year_month_day date{day};
    const auto rest = static_cast<int>(seconds - day.time_since_epoch().count() * kSecondsPerDay);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            rest / 3600,
            rest / 60 % 60,
            rest % 60};
}

DateTime normalized(const DateTime& fields) {
    const auto within = [](int field, int first, int last) { return field >= first && field <= last; };
    const bool normal = within(fields.month, 1, 12) && within(fields.day, 1, 28) && within(fields.hour, 0, 23) &&
                        within(fields.minute, 0, 59) && within(fields.second, 0, 59);
    return normal ? fields : fieldsFromSeconds(secondsFromFields(fields));
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

SourceText monthName(int month) { return month >= 1 && month <= 12 ? kMonthNames[month] : SourceText(); }

SourceText weekdayName(int day) { return day >= 0 && day <= 6 ? kWeekdayNames[day] : SourceText(); }

std::string dateText(const TUnitSystem& units, const DateTime& value) {
    ValueText buffer;
    TextWriter text(buffer);
    appendDate(text, units, normalized(value));
    return std::string(text.text());
}

std::string timeText(const TUnitSystem& units, const DateTime& value) {
    ValueText buffer;
    TextWriter text(buffer);
    appendTime(text, units, normalized(value));
    return std::string(text.text());
}

std::string timeTextWithSeconds(const TUnitSystem& units, const DateTime& value) {
    ValueText buffer;
    TextWriter text(buffer);
    appendTime(text, units, normalized(value), true);
    return std::string(text.text());
}

std::string_view dateTimeText(const TUnitSystem& units, const DateTime& value, std::span<char> buffer) {
    const DateTime moment = normalized(value);
    TextWriter text(buffer);
    appendDate(text, units, moment);
    text.append(" ");
    appendTime(text, units, moment);
    return text.text();
}

std::string dateTimeText(const TUnitSystem& units, const DateTime& value) {
    ValueText buffer;
    return std::string(dateTimeText(units, value, buffer));
}

std::string yearFirstText(const DateTime& value) {
    return fmt::format("{:04}/{:02}/{:02} {:02}:{:02}:{:02} ", value.year, value.month, value.day, value.hour,
                       value.minute, value.second);
}

std::string twelveHourText(const DateTime& value) {
    return fmt::format("{:02}/{:02}/{} {:02}:{:02}:{:02} {}", value.month, value.day, value.year,
                       twelveHour(value.hour), value.minute, value.second, text(halfOfDay(value.hour)));
}

std::string twelveHourTime(const DateTime& value) {
    return fmt::format("{:02}:{:02} {}", twelveHour(value.hour), value.minute, text(halfOfDay(value.hour)));
}

std::string dayFirstDate(const DateTime& value) {
    return fmt::format("{:02}/{:02}/{:04}", value.day, value.month, value.year);
}

std::string shortDate(const DateTime& today) { return fmt::format("{}/{}/{}", today.month, today.day, today.year); }

std::string compactDate(const DateTime& today) {
    return fmt::format("{:02}{}{}", today.day, monthName(today.month).english(), today.year);
}

std::string currentTimeText(const DateTime& now) {
    const int hour = now.hour > 12 ? now.hour - 12 : now.hour;
    return fmt::format("{:02}:{:02}:{:02} {}", hour, now.minute, now.second, text(halfOfDay(now.hour)));
}

std::string timestampText(const DateTime& value) {
    return fmt::format("{:04}{:02}{:02}{:02}{:02}", value.year, value.month, value.day, value.hour, value.minute);
}

std::string logTimeText(const DateTime& value) {
    return fmt::format("{:02}/{:02}/{:04} - {:02}:{:02} {}", value.month, value.day, value.year, twelveHour(value.hour),
                       value.minute, halfOfDay(value.hour).english());
}

std::string_view durationText(std::int64_t seconds, std::span<char> buffer) {
    const auto magnitude = seconds < 0 ? 0 - static_cast<std::uint64_t>(seconds) : static_cast<std::uint64_t>(seconds);
    TextWriter text(buffer);
    if (seconds < 0)
        text.append("-");
    const std::uint64_t hours = magnitude / 3600;
    if (hours < 100)
        appendTwoDigits(text, static_cast<int>(hours));
    else
        text.append(fmt::format_int(hours).c_str());
    for (const std::uint64_t field : {magnitude / 60 % 60, magnitude % 60}) {
        text.append(":");
        appendTwoDigits(text, static_cast<int>(field));
    }
    return text.text();
}

std::string durationText(std::int64_t seconds) {
    ValueText buffer;
    return std::string(durationText(seconds, buffer));
}

} // namespace quobrix
