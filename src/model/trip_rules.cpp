#include "model/trip_rules.h"

#include "base/fold_case.h"
#include "base/utf8.h"
#include "model/trip_log.h"
#include "settings/settings.h"
#include "texts/text.h"
#include "units/time_zone.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace quobrix {
namespace {

constexpr std::string_view kSection = "TripRules";
constexpr int kMinutesPerDay = 24 * 60;
constexpr int kDaysPerWeek = 7;

/// By its place in a rule: how it is called in the settings, and a bit for each day from Sunday on.
struct RuleDays {
    std::string_view name;
    unsigned days;
};
constexpr std::array<RuleDays, kRuleDays> kDays{{{"all", 0x7F},
                                                 {"mon-fri", 0x3E},
                                                 {"sat-sun", 0x41},
                                                 {"mon", 0x02},
                                                 {"tue", 0x04},
                                                 {"wed", 0x08},
                                                 {"thu", 0x10},
                                                 {"fri", 0x20},
                                                 {"sat", 0x40},
                                                 {"sun", 0x01}}};
constexpr std::size_t kFirstSingleDay = 3; // Monday

bool holdsOn(const TripRule& rule, int day) { return (kDays[rule.days].days >> day & 1) != 0; }

std::string minutesText(std::optional<int> minutes) {
    return minutes ? fmt::format("{:02}:{:02}", *minutes / 60, *minutes % 60) : std::string();
}

/// MINUTES become what TEXT, HH:MM or empty, says; false if it says something else.
bool readMinutes(std::string_view text, std::optional<int>& minutes) {
    if (text.empty())
        return true;
    if (text.size() != 5 || text[2] != ':')
        return false;
    const auto number = [&](std::size_t at) {
        int value = -1;
        const auto [end, error] = std::from_chars(text.data() + at, text.data() + at + 2, value);
        return error == std::errc() && end == text.data() + at + 2 ? value : -1;
    };
    const int hour = number(0), minute = number(3);
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59)
        return false;
    minutes = hour * 60 + minute;
    return true;
}

bool isOneLine(std::string_view text, std::size_t longest) {
    return characterCount(text) <= longest && validUtf8(text) == text && oneLine(text) == text;
}

constexpr std::size_t kLongestVehicle = 64; // characters; a VIN has 17, what other vehicles tell is short

} // namespace

bool fits(const TripRule& rule, const DateTime& start, std::string_view vehicle) {
    if (!rule.vehicle.empty() && foldCase(rule.vehicle) != foldCase(vehicle))
        return false;
    const int day = weekday(start), minute = start.hour * 60 + start.minute;
    const int from = rule.from.value_or(0), until = rule.until.value_or(kMinutesPerDay);
    if (from < until)
        return minute >= from && minute < until && holdsOn(rule, day);
    return (minute >= from && holdsOn(rule, day)) ||
           (minute < until && holdsOn(rule, (day + kDaysPerWeek - 1) % kDaysPerWeek));
}

std::string_view typeByRules(std::span<const TripRule> rules, const DateTime& start, std::string_view vehicle) {
    const auto rule = std::ranges::find_if(rules, [&](const TripRule& each) { return fits(each, start, vehicle); });
    return rule != rules.end() ? std::string_view(rule->type) : std::string_view();
}

std::string tripRuleText(const TripRule& rule) {
    return fmt::format("{}\t{}\t{}\t{}\t{}", kDays[rule.days].name, minutesText(rule.from), minutesText(rule.until),
                       rule.vehicle, rule.type);
}

std::optional<TripRule> readTripRule(std::string_view text) {
    std::array<std::string_view, 5> fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::size_t tab = text.find('\t');
        if ((tab == std::string_view::npos) != (i + 1 == fields.size()))
            return {};
        fields[i] = text.substr(0, tab);
        text.remove_prefix(std::min(tab + 1, text.size()));
    }
    TripRule rule{.type = std::string(fields[4])};
    const auto days = std::ranges::find(kDays, fields[0], &RuleDays::name);
    if (days == kDays.end() || !readMinutes(fields[1], rule.from) || !readMinutes(fields[2], rule.until) ||
        rule.type.empty() || !isOneLine(rule.type, kLongestTripType) || !isOneLine(fields[3], kLongestVehicle))
        return {};
    if (rule.from.value_or(0) == rule.until.value_or(kMinutesPerDay))
        return {};
    rule.days = static_cast<std::size_t>(days - kDays.begin());
    rule.vehicle = fields[3];
    return rule;
}

std::vector<TripRule> loadTripRules(const Settings& settings) {
    std::vector<TripRule> rules;
    for (std::size_t i = 1; i <= kMostTripRules; ++i) {
        const std::string text = settings.getText(kSection, std::to_string(i));
        if (text.empty())
            break;
        if (std::optional<TripRule> rule = readTripRule(text))
            rules.push_back(*std::move(rule));
    }
    return rules;
}

void saveTripRules(Settings& settings, std::span<const TripRule> rules) {
    std::vector<std::string> texts;
    std::ranges::transform(rules, std::back_inserter(texts), tripRuleText);
    for (std::size_t i = 1; i <= kMostTripRules; ++i) // what another version may read
        if (std::string text = settings.getText(kSection, std::to_string(i)); !text.empty() && !readTripRule(text))
            texts.push_back(std::move(text));
    texts.resize(kMostTripRules);
    for (std::size_t i = 0; i < texts.size(); ++i)
        settings.setText(kSection, std::to_string(i + 1), texts[i]);
}

void giveTypesByRules(TTripLogTable& trips, std::span<const RowIndex> rows, std::span<const TripRule> rules,
                      std::span<const std::string> names, const TimeZone& zone) {
    const auto& starts = trips.column<TTripLogStartTimeColumn>();
    const auto& vehicles = trips.column<TTripLogVinColumn>();
    auto& types = trips.column<TTripLogTripTypeColumn>();
    for (const RowIndex row : rows) {
        if (types.has(row) || !starts.has(row))
            continue;
        const std::string wanted = foldCase(typeByRules(rules, zone.toLocal(starts.at(row)), vehicles.at(row)));
        const auto name = std::ranges::find_if(names, [&](const auto& each) { return foldCase(each) == wanted; });
        if (name != names.end())
            types.set(row, *name);
    }
}

void RuleChoiceColumn::offer(const std::vector<Choice>& choices) {
    offered_.clear();
    for (const Choice& choice : choices) {
        offered_.push_back(codeOf(choice));
        known_[static_cast<std::size_t>(offered_.back())] = choice;
    }
}

std::int32_t RuleChoiceColumn::codeOf(const Choice& choice) {
    const auto known = std::ranges::find_if(
        known_, [key = foldCase(choice.key)](const Choice& each) { return foldCase(each.key) == key; });
    if (known != known_.end())
        return static_cast<std::int32_t>(known - known_.begin());
    known_.push_back(choice);
    return static_cast<std::int32_t>(known_.size() - 1);
}

std::string RuleChoiceColumn::key(RowIndex row) const {
    const auto code = static_cast<std::size_t>(at(row));
    return has(row) && code < known_.size() ? known_[code].key : std::string();
}

void RuleChoiceColumn::setKey(RowIndex row, const std::string& key) {
    set(row, key.empty() ? Element<std::int32_t>::kNone : codeOf({key, key}));
}

bool RuleChoiceColumn::isOffered(RowIndex row) const { return std::ranges::find(offered_, at(row)) != offered_.end(); }

std::vector<Selection> RuleChoiceColumn::selections() const {
    std::vector<Selection> all;
    std::ranges::transform(offered_, std::back_inserter(all), [this](std::int32_t code) {
        return Selection{code, selection(code)};
    });
    return all;
}

std::string RuleChoiceColumn::selection(std::int32_t code) const {
    return known_.at(static_cast<std::size_t>(code)).name;
}

ShownText RuleTypeColumn::conflict(RowIndex row) const {
    return has(row) && !isOffered(row) ? quobrix::text(TextId::TripRuleTypeGone) : ShownText();
}

std::vector<Selection> RuleDaysColumn::selections() const {
    std::vector<Selection> all;
    for (std::int32_t code = 0; code < static_cast<std::int32_t>(kRuleDays); ++code)
        all.push_back({code, selection(code)});
    return all;
}

std::string RuleDaysColumn::selection(std::int32_t code) const {
    constexpr TextOf<0> kSeveral[kFirstSingleDay] = {TextId::TripRuleEveryDay, TextId::TripRuleWorkingDays,
                                                     TextId::TripRuleWeekend};
    const auto days = static_cast<std::size_t>(code);
    if (days < kFirstSingleDay)
        return quobrix::text(kSeveral[days]);
    return quobrix::text(weekdayName(static_cast<int>(days - kFirstSingleDay + 1) % kDaysPerWeek));
}

std::string_view TimeOfDayColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    if (!has(row))
        return {};
    buffer.words = timeText(context.units, {.hour = at(row) / 60, .minute = at(row) % 60});
    return buffer.words;
}

Parsed TimeOfDayColumn::parse(std::string_view text, const TextContext& context) const {
    if (text.find_first_not_of(" \t") == std::string_view::npos)
        return {};
    const std::optional<DateTime> time = parseTime(context.units, text);
    if (!time || time->second != 0)
        return {{}, quobrix::text(TextId::TripRuleNotATime)};
    return {std::int64_t{time->hour} * 60 + time->minute, {}};
}

ShownText RuleUntilColumn::conflict(RowIndex row) const {
    const auto& from = table()->column<TripRuleFromColumn>();
    const int begin = from.has(row) ? from.at(row) : 0, end = has(row) ? at(row) : kMinutesPerDay;
    return begin == end ? quobrix::text(TextId::TripRuleNoHours) : ShownText();
}

const TableSpec& TripRulesTable::spec() const {
    static constexpr TableSpec spec{kType,
                                    kTypesOf<TripRuleDaysColumn, TripRuleFromColumn, TripRuleUntilColumn,
                                             TripRuleVehicleColumn, TripRuleTypeColumn>,
                                    {},
                                    SourceText("Rules for New Trips"),
                                    {.editable = true, .required = {0, kMostTripRules}}};
    return spec;
}

void TripRulesTable::show(std::span<const TripRule> rules) {
    removeRows(0, rowCount());
    insertRows(0, rules.size());
    const auto setTime = [](TimeOfDayColumn& column, RowIndex row, std::optional<int> minutes) {
        if (minutes)
            column.set(row, *minutes);
    };
    for (RowIndex row = 0; row < rules.size(); ++row) {
        column<TripRuleDaysColumn>().set(row, static_cast<std::int32_t>(rules[row].days));
        setTime(column<TripRuleFromColumn>(), row, rules[row].from);
        setTime(column<TripRuleUntilColumn>(), row, rules[row].until);
        column<TripRuleVehicleColumn>().setKey(row, rules[row].vehicle);
        column<TripRuleTypeColumn>().setKey(row, rules[row].type);
    }
}

void TripRulesTable::offer(const std::vector<std::string>& types, std::vector<RuleChoiceColumn::Choice> vehicles) {
    std::vector<RuleChoiceColumn::Choice> choices;
    for (const std::string& type : types)
        choices.push_back({type, type});
    column<TripRuleTypeColumn>().offer(choices);
    auto& given = column<TripRuleVehicleColumn>();
    for (RowIndex row = 0; row < rowCount(); ++row)
        if (const std::string key = given.key(row);
            !key.empty() &&
            std::ranges::none_of(vehicles, [&](const auto& each) { return foldCase(each.key) == foldCase(key); }))
            vehicles.push_back({key, key});
    given.offer(vehicles);
}

Result<std::vector<TripRule>> TripRulesTable::rules() const {
    std::vector<TripRule> all;
    const auto& types = column<TripRuleTypeColumn>();
    const auto& until = column<TripRuleUntilColumn>();
    const auto timeAt = [](const TimeOfDayColumn& times, RowIndex row) {
        return times.has(row) ? std::optional<int>(times.at(row)) : std::nullopt;
    };
    for (RowIndex row = 0; row < rowCount(); ++row) {
        ShownText why = types.has(row) ? types.conflict(row) : text(TextId::TripRuleNoType);
        if (why.empty())
            why = until.conflict(row);
        if (!why.empty())
            return Error{ErrorKind::Corrupt, text(TextId::TripTypeRow, row + 1, why)};
        const auto& days = column<TripRuleDaysColumn>();
        all.push_back({.type = types.key(row),
                       .days = days.has(row) ? static_cast<std::size_t>(days.at(row)) : 0,
                       .from = timeAt(column<TripRuleFromColumn>(), row),
                       .until = timeAt(until, row),
                       .vehicle = column<TripRuleVehicleColumn>().key(row)});
    }
    return all;
}

} // namespace quobrix
