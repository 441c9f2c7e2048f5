#include "texts/text.h"
#include "units/date_time.h"

#include "base/fold_case.h"
#include "units/unit_system.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quobrix {
namespace {

/// Takes numbers, separators and words off the front of what was typed.
class Typed {
public:
    explicit Typed(std::string_view text) : text_(text) { blanks(); }

    /// A number of at most MAX_DIGITS digits.
    std::optional<int> number(std::size_t maxDigits) {
        int value = 0;
        const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
        const auto digits = static_cast<std::size_t>(end - text_.data());
        if (error != std::errc{} || text_.front() == '-' || digits > maxDigits)
            return {};
        digits_ = digits;
        text_.remove_prefix(digits);
        return value;
    }
    std::size_t digits() const { return digits_; }

    bool blanks() {
        const std::size_t count = std::min(text_.find_first_not_of(" \t"), text_.size());
        text_.remove_prefix(count);
        return count > 0;
    }
    /// One of SEPARATORS, with blanks around it, or blanks alone if the set has one.
    bool separator(std::string_view separators) {
        const bool blank = blanks();
        const bool found = !text_.empty() && separators.find(text_.front()) != std::string_view::npos;
        if (found)
            text_.remove_prefix(1);
        blanks();
        return found || (blank && separators.find(' ') != std::string_view::npos);
    }
    /// WORD as the rest of the text, in any case and however it is spaced and dotted: "a. m." is typed in many ways.
    bool word(std::string_view word) {
        if (word.empty() || bare(text_) != bare(word))
            return false;
        text_ = {};
        return true;
    }
    bool atEnd() {
        blanks();
        return text_.empty();
    }

private:
    static std::string bare(std::string_view word) {
        constexpr std::string_view kMarks[] = {".", " ", "\t", "\u00A0", "\u202F"};
        std::string result;
        while (!word.empty()) {
            const auto mark = std::ranges::find_if(kMarks, [&](auto each) { return word.starts_with(each); });
            if (mark == std::end(kMarks))
                result += word.front();
            word.remove_prefix(mark == std::end(kMarks) ? 1 : mark->size());
        }
        return foldCase(result);
    }

    std::string_view text_;
    std::size_t digits_ = 0;
};

bool takeDate(const TUnitSystem& units, Typed& typed, DateTime& date) {
    using Field = int DateTime::*;
    std::array<Field, 3> order{&DateTime::month, &DateTime::day, &DateTime::year};
    if (units.unit(UnitTypeId::Date) == UnitId::DayMonthYear)
        order = {&DateTime::day, &DateTime::month, &DateTime::year};
    else if (units.unit(UnitTypeId::Date) == UnitId::YearMonthDay)
        order = {&DateTime::year, &DateTime::month, &DateTime::day};
    for (const Field field : order) {
        if (field != order.front() && !typed.separator("/-. "))
            return false;
        const bool isYear = field == &DateTime::year;
        const std::optional<int> number = typed.number(isYear ? 4 : 2);
        if (!number || (isYear && typed.digits() == 3))
            return false;
        date.*field = *number;
    }
    return widenAndValidate(date);
}

bool takeTime(const TUnitSystem& units, Typed& typed, DateTime& time) {
    const std::optional<int> hour = typed.number(2);
    if (!hour)
        return false;
    time.hour = *hour;
    bool minutes = false;
    for (int DateTime::*const field : {&DateTime::minute, &DateTime::second}) {
        if (!typed.separator(":"))
            break;
        const std::optional<int> number = typed.number(2);
        if (!number || *number > 59)
            return false;
        time.*field = *number;
        minutes = true;
    }
    typed.blanks();
    const bool am = typed.word(units.locale().am) || typed.word(quobrix::text(SourceText("AM"))) || typed.word("AM");
    const bool pm =
        !am && (typed.word(units.locale().pm) || typed.word(quobrix::text(SourceText("PM"))) || typed.word("PM"));
    if (!am && !pm)
        return minutes && time.hour <= 23; // "9" alone is no time
    if (time.hour < 1 || time.hour > 12)
        return false;
    time.hour = time.hour % 12 + (pm ? 12 : 0);
    return true;
}

} // namespace

std::optional<DateTime> parseDate(const TUnitSystem& units, std::string_view text) {
    Typed typed(text);
    DateTime date;
    if (!takeDate(units, typed, date) || !typed.atEnd())
        return {};
    return date;
}

std::optional<DateTime> parseTime(const TUnitSystem& units, std::string_view text) {
    Typed typed(text);
    DateTime time;
    if (!takeTime(units, typed, time) || !typed.atEnd())
        return {};
    return time;
}

std::optional<DateTime> parseDateTime(const TUnitSystem& units, std::string_view text) {
    Typed typed(text);
    DateTime value;
    if (!takeDate(units, typed, value))
        return {};
    if (typed.atEnd())
        return value;
    Typed afterDate = typed;
    if (!takeTime(units, afterDate, value) || !afterDate.atEnd())
        return {};
    return value;
}

} // namespace quobrix
