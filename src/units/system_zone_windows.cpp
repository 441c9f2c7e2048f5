#include "texts/text.h"
#include "units/time_zone.h"

#include "platform/environment.h"

#include <algorithm>
#include <optional>
#include <string>

#include <windows.h>

namespace quobrix {
namespace {

/// Seconds since 1970, in the wall-clock time before it, of the change that DATE prescribes for YEAR: that very date,
/// or a weekday's first to fourth, or last (5), in its month.
std::int64_t changeIn(int year, const SYSTEMTIME& date) {
    DateTime fields{year, date.wMonth, date.wDay, date.wHour, date.wMinute, date.wSecond};
    if (date.wYear == 0) {
        fields.day = 1;
        const int first = (date.wDayOfWeek - weekday(fields) + 7) % 7;
        fields.day += first + 7 * (date.wDay - 1);
        const DateTime nextMonth{year, date.wMonth + 1, 1};
        const DateTime day{year, date.wMonth, fields.day};
        if (secondsFromFields(day) >= secondsFromFields(nextMonth))
            fields.day -= 7;
    }
    // The last thousandth of a day stands for its end.
    return secondsFromFields(fields) + (date.wMilliseconds == 999 ? 1 : 0);
}

bool applies(int year, const SYSTEMTIME& date) { return date.wMonth != 0 && (date.wYear == 0 || date.wYear == year); }

} // namespace

/// Windows keeps what a zone does year by year.
TimeZone TimeZone::fromYears(const DYNAMIC_TIME_ZONE_INFORMATION& information) {
    constexpr int kFirstYear = 1970, kLastYear = 2037; // as far as a record's time goes
    TimeZone zone;
    std::optional<int> offset;
    const auto change = [&](std::int64_t wall, int to) {
        if (!offset)
            zone.firstOffset_ = to;
        else if (*offset != to) {
            const std::int64_t at = wall - *offset;
            while (!zone.transitions_.empty() && zone.transitions_.back().at >= at) // which lasted no time
                zone.transitions_.pop_back();
            zone.transitions_.push_back({at, to});
        }
        offset = to;
    };
    for (int year = kFirstYear; year <= kLastYear; ++year) {
        DYNAMIC_TIME_ZONE_INFORMATION asked = information; // the call wants it writable
        TIME_ZONE_INFORMATION rules{};
        if (!GetTimeZoneInformationForYear(static_cast<USHORT>(year), &asked, &rules))
            continue;
        const int standard = -60 * static_cast<int>(rules.Bias + rules.StandardBias);
        const int daylight = -60 * static_cast<int>(rules.Bias + rules.DaylightBias);
        const std::int64_t begin = secondsFromFields({year, 1, 1});
        if (information.DynamicDaylightTimeDisabled || !applies(year, rules.StandardDate) ||
            !applies(year, rules.DaylightDate)) {
            change(begin, standard);
        } else {
            const std::int64_t toStandard = changeIn(year, rules.StandardDate);
            const std::int64_t toDaylight = changeIn(year, rules.DaylightDate);
            const bool northern = toDaylight < toStandard;
            change(begin, northern ? standard : daylight);
            change(std::min(toDaylight, toStandard), northern ? daylight : standard);
            change(std::max(toDaylight, toStandard), northern ? standard : daylight);
        }
    }
    return zone;
}

Result<TimeZone> TimeZone::ofSystem(std::string_view name) {
    // Looked up, since mingw-w64 links 32-bit programs without it.
    const HMODULE library = LoadLibraryExW(L"advapi32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    const auto enumerate = reinterpret_cast<decltype(&EnumDynamicTimeZoneInformation)>(
        reinterpret_cast<void*>(GetProcAddress(library, "EnumDynamicTimeZoneInformation")));
    DYNAMIC_TIME_ZONE_INFORMATION zone{};
    for (DWORD i = 0; enumerate && enumerate(i, &zone) == ERROR_SUCCESS; ++i) {
        const std::wstring_view key = zone.TimeZoneKeyName;
        if (std::equal(key.begin(), key.end(), name.begin(), name.end(),
                       [](wchar_t a, char b) { return a == static_cast<unsigned char>(b); }))
            return fromYears(zone);
    }
    return Error{ErrorKind::NotFound, text(TextId::WindowsHasNoSuchTimeZone)};
}

TimeZone TimeZone::local() {
    if (const std::optional<std::string> name = environmentVariable("TZ"))
        if (const Result<TimeZone> zone = named(*name))
            return *zone;
    DYNAMIC_TIME_ZONE_INFORMATION zone{};
    if (GetDynamicTimeZoneInformation(&zone) == TIME_ZONE_ID_INVALID)
        return {};
    return fromYears(zone);
}

} // namespace quobrix
