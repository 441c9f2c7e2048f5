// How the kinds of columns read what a person types, and write it for an editor.

#include "tables/columns.h"

#include "base/fold_case.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/number_parse.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>

#include <cassert>
#include <cmath>
#include <limits>

namespace quobrix {

const SourceText kNotEditable("This is not editable; see Help for more information.");

namespace {

constexpr SourceText kNotABoolean("Hey, that's not a boolean!");
constexpr SourceText kNotAnInteger("Hey, that's not an integer!");
constexpr SourceText kTooLarge("This number is too large to be kept here.");
constexpr SourceText kNotANumber("Hey, that's not a number!");
constexpr SourceText kNotADate("Hey, that's not a date!");
constexpr SourceText kNotAnElapsedTime("Hey, that's not an elapsed time in the format HH:MM:SS!");
constexpr SourceText kNotASelection("This is not a valid selection.");

// Beyond it the conversion into another unit could end at infinity.
constexpr double kLargestFigure = 1e200;

Parsed refused(SourceText why) { return {{}, quobrix::text(why)}; }

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

Parsed integerOrRefusal(std::optional<std::int64_t> value, SourceText refusal) {
    // The smallest integer of a column means that there is none.
    if (!value || *value <= std::numeric_limits<std::int32_t>::min() ||
        *value > std::numeric_limits<std::int32_t>::max())
        return refused(refusal);
    return {*value, {}};
}

std::int32_t toElement(const Value& value) {
    const auto* integer = std::get_if<std::int64_t>(&value);
    return integer ? static_cast<std::int32_t>(*integer) : Element<std::int32_t>::kNone;
}

/// VALUE in as few digits as bring it back, with the decimal separator of FORMAT.
std::string exactNumber(const NumberFormat& format, double value) {
    std::string text = fmt::format("{}", value);
    if (const std::size_t point = text.find('.'); point != std::string::npos)
        text.replace(point, 1, format.decimalSeparator);
    return text;
}

/// A figure that reads the same as a bound that belongs to RANGE, but lies beyond it, is that bound.
double snapped(const Range& range, double value, const Column& column, const TextContext& context) {
    if (range.contains(value))
        return value;
    for (const double bound : {range.lower, range.upper})
        if (std::isfinite(bound) && range.contains(bound) &&
            column.figureText(bound, context) == column.figureText(value, context))
            return bound;
    return value;
}

} // namespace

Parsed Column::parse(std::string_view, const TextContext&) const { return refused(kNotEditable); }

void Column::setValue(RowIndex, const Value&) { assert(false && "the column is not for editing"); }

std::string Column::figureText(double base, const TextContext& context) const {
    return kind() == ColumnKind::Real ? context.units.formatValueWithUnits(spec().unit, base)
                                      : context.units.formatNumber(base, 0);
}

Parsed BooleanColumn::parse(std::string_view text, const TextContext&) const {
    const std::string word = foldCase(trimmed(text));
    if (word == "yes" || word == foldCase(quobrix::text(kYes)) || word == "true" || word == "1")
        return {true, {}};
    if (word == "no" || word == foldCase(quobrix::text(kNo)) || word == "false" || word == "0")
        return {false, {}};
    return refused(kNotABoolean);
}

void BooleanColumn::setValue(RowIndex row, const Value& value) { set(row, value == Value(true)); }

Parsed IntegerColumn::parse(std::string_view text, const TextContext& context) const {
    if (trimmed(text).empty())
        return {};
    const std::optional<std::int64_t> typed = parseInteger(context.units.locale().numbers, text);
    return integerOrRefusal(typed, typed ? kTooLarge : kNotAnInteger);
}

std::string IntegerColumn::editText(RowIndex row, const TextContext&) const {
    return has(row) ? fmt::to_string(at(row)) : "";
}

void IntegerColumn::setValue(RowIndex row, const Value& value) { set(row, toElement(value)); }

Parsed RealColumn::parse(std::string_view text, const TextContext& context) const {
    return parseAs(spec().unit, text, context);
}

Parsed RealColumn::parseAs(UnitTypeId unit, std::string_view text, const TextContext& context) const {
    if (trimmed(text).empty())
        return {};
    const std::optional<double> typed = parseValue(context.units, unit, text);
    if (!typed || !(std::fabs(*typed) < kLargestFigure) || !hasValue(*typed))
        return refused(kNotANumber);
    return {
        snapped(requirements().recommended, snapped(requirements().required, *typed, *this, context), *this, context),
        {}};
}

std::string RealColumn::editText(RowIndex row, const TextContext& context) const {
    if (!has(row))
        return {};
    // The shown value may not convert back to the very same figure; a neighbour of it then does.
    const double shown = context.units.toDisplay(unitOf(row), at(row));
    for (const double candidate : {shown, std::nextafter(shown, -kInfinity), std::nextafter(shown, kInfinity)})
        if (context.units.toBase(unitOf(row), candidate) == at(row))
            return exactNumber(context.units.locale().numbers, candidate);
    return exactNumber(context.units.locale().numbers, shown);
}

void RealColumn::setValue(RowIndex row, const Value& value) {
    const auto* figure = std::get_if<double>(&value);
    set(row, figure ? *figure : kNoValue);
}

void TextColumn::setValue(RowIndex row, const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    set(row, text ? *text : std::string());
}

Parsed DateTimeColumn::parse(std::string_view text, const TextContext& context) const {
    if (trimmed(text).empty())
        return {};
    const std::optional<DateTime> local = parseDateTime(context.units, trimmed(text));
    if (!local)
        return refused(kNotADate);
    return integerOrRefusal(context.zone.toUtc(*local), kNotADate);
}

std::string DateTimeColumn::editText(RowIndex row, const TextContext& context) const {
    if (!has(row))
        return {};
    const DateTime local = context.zone.toLocal(at(row));
    if (local.second == 0)
        return dateTimeText(context.units, local);
    return fmt::format("{} {:02}:{:02}:{:02}", dateText(context.units, local), local.hour, local.minute, local.second);
}

std::string DateTimeColumn::figureText(double base, const TextContext& context) const {
    return dateTimeText(context.units, context.zone.toLocal(static_cast<std::int32_t>(base)));
}

void DateTimeColumn::setValue(RowIndex row, const Value& value) { set(row, toElement(value)); }

Parsed SelectionColumn::parse(std::string_view text, const TextContext&) const {
    return parseSelection(selections(), text);
}

void SelectionColumn::setValue(RowIndex row, const Value& value) { set(row, toElement(value)); }

Parsed parseSelection(const std::vector<Selection>& selections, std::string_view text) {
    const std::string typed = foldCase(trimmed(text));
    if (typed.empty())
        return {};
    const Selection* begun = nullptr;
    bool several = false;
    for (const Selection& selection : selections) {
        const std::string candidate = foldCase(selection.text);
        if (candidate == typed)
            return {selection.code, {}};
        if (candidate.starts_with(typed)) {
            several = begun != nullptr;
            begun = &selection;
        }
    }
    return begun && !several ? Parsed{begun->code, {}} : refused(kNotASelection);
}

Parsed ElapsedTimeColumn::parse(std::string_view text, const TextContext&) const {
    text = trimmed(text);
    if (text.empty())
        return {};
    const std::size_t first = text.find(':');
    const std::size_t second = first == std::string_view::npos ? first : text.find(':', first + 1);
    if (second == std::string_view::npos)
        return refused(kNotAnElapsedTime);
    const auto digits = [](std::string_view field) {
        const bool plain = !field.empty() && field.find_first_not_of("0123456789") == std::string_view::npos;
        return plain ? parseInteger({}, field) : std::nullopt;
    };
    const auto hours = digits(text.substr(0, first));
    const auto minutes = digits(text.substr(first + 1, second - first - 1));
    const auto seconds = digits(text.substr(second + 1));
    if (!hours || !minutes || !seconds || *hours > 1'000'000 || *minutes > 59 || *seconds > 59)
        return refused(kNotAnElapsedTime);
    return integerOrRefusal((*hours * 60 + *minutes) * 60 + *seconds, kNotAnElapsedTime);
}

std::string ElapsedTimeColumn::figureText(double base, const TextContext&) const {
    return durationText(static_cast<std::int64_t>(base));
}

} // namespace quobrix
