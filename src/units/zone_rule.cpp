#include "units/time_zone.h"

#include <algorithm>
#include <charconv>

namespace quobrix {
namespace {

/// Reads the pieces of a POSIX TZ text (IEEE Std 1003.1, chapter 8.3, with the hours of RFC 8536).
class RuleText {
public:
    explicit RuleText(std::string_view text) : text_(text) {}

    bool atEnd() const { return text_.empty(); }
    bool take(char c) {
        if (text_.empty() || text_.front() != c)
            return false;
        text_.remove_prefix(1);
        return true;
    }
    /// An abbreviation: three letters or more, or anything within <>.
    bool name() {
        if (take('<')) {
            const std::size_t end = text_.find('>');
            if (end == std::string_view::npos || end == 0)
                return false;
            text_.remove_prefix(end + 1);
            return true;
        }
        std::size_t letters = 0;
        while (letters < text_.size() && ((text_[letters] | 32) >= 'a' && (text_[letters] | 32) <= 'z'))
            ++letters;
        text_.remove_prefix(letters);
        return letters >= 3;
    }
    std::optional<int> number(int low, int high) {
        int value = 0;
        const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
        if (error != std::errc{} || text_.front() == '-' || value < low || value > high)
            return {};
        text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
        return value;
    }
    /// [+-]hh[:mm[:ss]] in seconds.
    std::optional<int> time(int maxHours) {
        const int sign = take('-') ? -1 : 1;
        if (sign == 1)
            take('+');
        const std::optional<int> hours = number(0, maxHours);
        if (!hours)
            return {};
        int seconds = *hours * 3600;
        for (const int scale : {60, 1}) {
            if (!take(':'))
                break;
            const std::optional<int> part = number(0, 59);
            if (!part)
                return {};
            seconds += *part * scale;
        }
        return sign * seconds;
    }
    std::optional<ZoneRule::Change> change() {
        using Kind = ZoneRule::Change::Kind;
        ZoneRule::Change change;
        std::optional<int> value;
        if (take('M')) {
            const std::optional<int> month = number(1, 12);
            const std::optional<int> week = take('.') ? number(1, 5) : std::nullopt;
            value = take('.') ? number(0, 6) : std::nullopt;
            if (!month || !week || !value)
                return {};
            change.month = *month;
            change.week = *week;
            change.weekday = *value;
        } else {
            change.kind = take('J') ? Kind::JulianNoLeap : Kind::DayOfYear;
            value = change.kind == Kind::JulianNoLeap ? number(1, 365) : number(0, 365);
            if (!value)
                return {};
            change.day = *value;
        }
        if (take('/')) {
            const std::optional<int> seconds = time(167);
            if (!seconds)
                return {};
            change.seconds = *seconds;
        }
        return change;
    }

private:
    std::string_view text_;
};

/// The wall-clock time of CHANGE in YEAR, in seconds since 1970 as if there were no zones.
std::int64_t changeInYear(const ZoneRule::Change& change, int year) {
    using Kind = ZoneRule::Change::Kind;
    const auto midnight = [year](int month, int day) { return secondsFromFields({year, month, day}); };
    if (change.kind == Kind::DayOfYear)
        return midnight(1, 1 + change.day) + change.seconds;
    if (change.kind == Kind::JulianNoLeap) { // 29 February is never counted, so 1 March is always day 60
        const bool leap = midnight(3, 1) - midnight(2, 28) == 2 * kSecondsPerDay;
        return midnight(1, change.day + (leap && change.day >= 60 ? 1 : 0)) + change.seconds;
    }
    const int first = weekday({year, change.month, 1});
    int day = 1 + (change.weekday - first + 7) % 7 + (change.week - 1) * 7;
    if (midnight(change.month, day) >= midnight(change.month + 1, 1))
        day -= 7;
    return midnight(change.month, day) + change.seconds;
}

} // namespace

std::optional<ZoneRule> ZoneRule::parse(std::string_view text) {
    RuleText in(text);
    ZoneRule rule;
    // POSIX counts offsets westwards.
    const std::optional<int> standard = in.name() ? in.time(24) : std::nullopt;
    if (!standard)
        return {};
    rule.standardOffset = rule.daylightOffset = -*standard;
    if (in.atEnd())
        return rule;
    if (!in.name())
        return {};
    rule.daylight = true;
    rule.daylightOffset += 3600;
    bool ownRule = in.take(',');
    if (!ownRule && !in.atEnd()) {
        const std::optional<int> daylight = in.time(24);
        if (!daylight)
            return {};
        rule.daylightOffset = -*daylight;
        ownRule = in.take(',');
    }
    if (!ownRule && !in.atEnd())
        return {};
    // Without a rule of its own a zone changes as the United States do.
    RuleText changes = ownRule ? in : RuleText("M3.2.0,M11.1.0");
    const std::optional<Change> start = changes.change();
    const std::optional<Change> end = changes.take(',') ? changes.change() : std::nullopt;
    if (!start || !end || !changes.atEnd())
        return {};
    rule.start = *start;
    rule.end = *end;
    return rule;
}

int ZoneRule::offsetAt(std::int64_t utc) const {
    if (!daylight)
        return standardOffset;
    const int year = fieldsFromSeconds(utc + standardOffset).year;
    const std::int64_t begins = changeInYear(start, year) - standardOffset;
    const std::int64_t ends = changeInYear(end, year) - daylightOffset;
    const bool summer = begins < ends ? utc >= begins && utc < ends : utc >= begins || utc < ends;
    return summer ? daylightOffset : standardOffset;
}

} // namespace quobrix
