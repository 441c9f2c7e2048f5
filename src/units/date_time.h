#pragma once

#include "texts/source_text.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quobrix {

class TUnitSystem;

inline constexpr std::int64_t kSecondsPerDay = 86400;

/// Calendar fields in local time. Valid values are those of a 32-bit clock: years 1970 to 2037.
struct DateTime {
    int year = 1970; ///< in full
    int month = 1;   ///< 1 to 12
    int day = 1;     ///< 1 to 31, not checked against the month
    int hour = 0;
    int minute = 0;
    int second = 0;
    auto operator<=>(const DateTime&) const = default;
};

/// Seconds from 1970-01-01 00:00:00 to FIELDS, counted as if there were no time zones. Fields beyond their range roll
/// over: 31 February is 3 March, or 2 March in a leap year.
std::int64_t secondsFromFields(const DateTime& fields);
/// The inverse; always yields fields within their ranges.
DateTime fieldsFromSeconds(std::int64_t seconds);
/// The same moment with every field within its range.
DateTime normalized(const DateTime& fields);
/// 0 is Sunday.
int weekday(const DateTime& date);

/// Completes a short year: 70 to 99 are of the 20th century, 0 to 37 of the 21st, any other year stays.
int widenYear(int year);
/// Widens DATE's year and tells whether its year, month and day are within the valid ranges.
bool widenAndValidate(DateTime& date);

/// The month's name, mixed short and full as it has always been shown ("Jan", "March", "Sep"); empty but for 1 to 12.
SourceText monthName(int month);
/// 0 is "Sunday"; empty but for 0 to 6.
SourceText weekdayName(int day);

// Text in the person's choice of date order and clock (the unit types Date and Time): "04/03/2009", "03:04 PM".
std::string dateText(const TUnitSystem& units, const DateTime& value);
std::string timeText(const TUnitSystem& units, const DateTime& value);
std::string timeTextWithSeconds(const TUnitSystem& units, const DateTime& value); ///< "03:04:05 PM"
/// Date, a blank, time. Into a buffer (ValueText) it is written without taking memory.
std::string dateTimeText(const TUnitSystem& units, const DateTime& value);
std::string_view dateTimeText(const TUnitSystem& units, const DateTime& value, std::span<char> buffer);

// Text that does not depend on the unit system.
std::string yearFirstText(const DateTime& value);  ///< "2009/03/04 15:04:05 ", with the blank at its end
std::string twelveHourText(const DateTime& value); ///< "03/04/2009 03:04:05 PM"; midnight is 12
std::string twelveHourTime(const DateTime& value); ///< "03:04 PM"; midnight is 12
std::string dayFirstDate(const DateTime& value);   ///< "04/03/2009"
std::string shortDate(const DateTime& today);      ///< "3/4/2009", month first, no leading zeros
std::string compactDate(const DateTime& today);    ///< "04March2009", fit for file names
std::string currentTimeText(const DateTime& now);  ///< "03:04:05 PM"; midnight stays 00 here, on purpose
std::string timestampText(const DateTime& value);  ///< "YYYYMMDDhhmm"
std::string logTimeText(const DateTime& value);    ///< "03/04/2009 - 03:04 PM" in every language

/// An elapsed time as HH:MM:SS; the hours may exceed 99.
std::string durationText(std::int64_t seconds);
std::string_view durationText(std::int64_t seconds, std::span<char> buffer);

// What a person types, in the current order of date fields. Fields are separated by '/', '-', '.' or blanks; a year may
// have one, two (widened) or four digits. Times may carry seconds and the locale's words for AM and PM whatever the
// clock; without them hours count to 23. Nothing if TEXT is not of that form or outside the valid ranges.
std::optional<DateTime> parseDate(const TUnitSystem& units, std::string_view text);
std::optional<DateTime> parseTime(const TUnitSystem& units, std::string_view text); ///< on 1 January 1970
/// A date, optionally followed by blanks and a time (else midnight).
std::optional<DateTime> parseDateTime(const TUnitSystem& units, std::string_view text);

} // namespace quobrix
