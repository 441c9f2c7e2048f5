#pragma once

#include "base/bytes.h"
#include "base/result.h"
#include "units/date_time.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#ifdef _WIN32
struct _TIME_DYNAMIC_ZONE_INFORMATION;
#endif

namespace quobrix {

/// The recurring rule of a zone, from a POSIX TZ text such as "CET-1CEST,M3.5.0,M10.5.0/3".
struct ZoneRule {
    /// When a change comes within a year, in the wall-clock time in force before it.
    struct Change {
        enum class Kind : std::uint8_t { JulianNoLeap, DayOfYear, WeekdayOfMonth };
        Kind kind = Kind::WeekdayOfMonth;
        int month = 0, week = 0, weekday = 0; ///< WeekdayOfMonth; week 5 is the last
        int day = 0;                          ///< 1 to 365 without 29 February, or 0 to 365
        int seconds = 7200;                   ///< after midnight, -167 to 167 hours
    };

    int standardOffset = 0; ///< seconds east of Greenwich
    int daylightOffset = 0;
    bool daylight = false;
    Change start, end;

    static std::optional<ZoneRule> parse(std::string_view text);
    /// Seconds east of Greenwich at UTC.
    int offsetAt(std::int64_t utc) const;
};

/// Local time of one place, without the C library's global state. A value; reading it is thread-safe.
class TimeZone {
public:
    /// Greenwich.
    TimeZone() = default;

    /// The zone of this computer: the environment's TZ, else the system's; Greenwich if neither can be read. On Windows
    /// a TZ that cannot be read there, as other systems' programs set it, does not count.
    static TimeZone local();
    /// A zone by the name under which the system knows it ("Europe/Berlin", on Windows "W. Europe Standard Time"), or
    /// by a POSIX TZ text.
    static Result<TimeZone> named(std::string_view name);
    /// A TZif file of any version. Errors: NotADocument, Corrupt, Unsupported (leap seconds).
    static Result<TimeZone> parse(ByteView bytes);

    /// Seconds east of Greenwich at UTC (seconds since 1970).
    int offsetAt(std::int64_t utc) const;
    DateTime toLocal(std::int32_t utc) const;
    /// Seconds since 1970 of a local time, whose fields may roll over. A time that the clock skipped is read with the
    /// offset before the gap (02:30 becomes 03:30); of one that came twice the first is meant. Saturates outside
    /// 32 bits, which years 1970 to 2037 never reach.
    std::int32_t toUtc(const DateTime& local) const;

private:
    static Result<TimeZone> ofSystem(std::string_view name);
#ifdef _WIN32
    static TimeZone fromYears(const _TIME_DYNAMIC_ZONE_INFORMATION& zone);
#endif

    struct Transition {
        std::int64_t at;
        int offset;
    };

    int firstOffset_ = 0;
    std::vector<Transition> transitions_; ///< ascending
    std::optional<ZoneRule> rule_;        ///< after the last transition
};

/// The computer's clock in seconds since 1970.
std::int32_t currentTime();

} // namespace quobrix
