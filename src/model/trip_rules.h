#pragma once

#include "model/trip_types.h"
#include "units/date_time.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

class Settings;
class TTripLogTable;

/// The days on which a rule may hold: all, Monday to Friday, Saturday and Sunday, and each one from Monday on.
inline constexpr std::size_t kRuleDays = 10;

/// Which type new trips get: those that start on one of its days, within its hours, with its vehicle.
struct TripRule {
    std::string type;
    std::size_t days = 0; ///< below kRuleDays
    /// Minutes from midnight; none: where the day begins and ends. Hours that end before they begin go on into the next
    /// day, and belong to the first.
    std::optional<int> from{}, until{};
    std::string vehicle{}; ///< VIN; empty: any
    bool operator==(const TripRule&) const = default;
};
inline constexpr std::size_t kMostTripRules = 100;

/// Whether a trip that starts at START, as it is shown, with VEHICLE gets the type of RULE.
bool fits(const TripRule& rule, const DateTime& start, std::string_view vehicle);
/// The type of the first of RULES that fits; empty if none does.
std::string_view typeByRules(std::span<const TripRule> rules, const DateTime& start, std::string_view vehicle);

/// A rule as it lies in the settings, its fields with tabs between: days, from and until (HH:MM, or empty), VIN, type.
std::string tripRuleText(const TripRule& rule);
/// Nothing for a text that says no rule.
std::optional<TripRule> readTripRule(std::string_view text);
/// In their order; what says no rule is passed over.
std::vector<TripRule> loadTripRules(const Settings& settings);
/// Puts RULES in place of those before; what says no rule stays, behind them.
void saveTripRules(Settings& settings, std::span<const TripRule> rules);

/// Gives the trips of ROWS that have no type those of RULES, within a step of the document's edits. A rule whose type
/// is none of NAMES leaves the trips that it fits without: a later rule was not made for them.
void giveTypesByRules(TTripLogTable& trips, std::span<const RowIndex> rows, std::span<const TripRule> rules,
                      std::span<const std::string> names, const TimeZone& zone);

/// One of the keys that are offered, shown by name. Cells hold codes, which keep their meaning whatever is offered, so
/// that edits can be undone.
class RuleChoiceColumn : public SelectionColumn {
public:
    struct Choice {
        std::string key, name;
    };
    /// Offers CHOICES, known by their keys in any case, instead of those before.
    void offer(const std::vector<Choice>& choices);
    /// Empty where nothing is chosen.
    std::string key(RowIndex row) const;
    void setKey(RowIndex row, const std::string& key);
    bool isOffered(RowIndex row) const;
    std::vector<Selection> selections() const override;

protected:
    std::string selection(std::int32_t code) const override;

private:
    std::int32_t codeOf(const Choice& choice);

    std::vector<Choice> known_; ///< by code
    std::vector<std::int32_t> offered_;
};

/// A rule without its type gives nothing.
class RuleTypeColumn : public RuleChoiceColumn {
public:
    ShownText conflict(RowIndex row) const override;
};

class RuleDaysColumn : public SelectionColumn {
public:
    std::vector<Selection> selections() const override;

protected:
    std::string selection(std::int32_t code) const override;
};

/// Minutes from midnight, shown as a time of day.
class TimeOfDayColumn : public IntegerColumn {
public:
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;
    std::string editText(RowIndex row, const TextContext& context) const override { return text(row, context); }
    Parsed parse(std::string_view text, const TextContext& context) const override;
};

class RuleUntilColumn : public TimeOfDayColumn {
public:
    ShownText conflict(RowIndex row) const override;
    bool comparesRows() const override { return true; }
};

QUOBRIX_COLUMN_CLASS(TripRuleDaysColumn, RuleDaysColumn, "TripRuleDaysColumn", D0, "&Days",
                     "The days on which such trips start.", Required)
QUOBRIX_COLUMN_CLASS(TripRuleFromColumn, TimeOfDayColumn, "TripRuleFromColumn", D0, "&From",
                     "The time of day from which on such trips start; empty: from midnight on.", Optional)
QUOBRIX_COLUMN_CLASS(TripRuleUntilColumn, RuleUntilColumn, "TripRuleUntilColumn", D0, "&Until",
                     "The time of day before which such trips start; empty: until midnight. Hours that end before they "
                     "begin go on into the night of the day.",
                     Optional)
QUOBRIX_COLUMN_CLASS(TripRuleVehicleColumn, RuleChoiceColumn, "TripRuleVehicleColumn", D0, "&Vehicle",
                     "The vehicle of such trips; empty: any.", Optional)
QUOBRIX_COLUMN_CLASS(TripRuleTypeColumn, RuleTypeColumn, "TripRuleTypeColumn", D0, "&Type",
                     "The type that such trips get.", Required)

/// The rules as they are edited.
class TripRulesTable final : public Table {
    QUOBRIX_TABLE_CLASS(TripRulesTable, false)

    /// Shows RULES in place of all rows.
    void show(std::span<const TripRule> rules);
    /// What can be chosen. Vehicles of rules are offered whether they are among VEHICLES or not.
    void offer(const std::vector<std::string>& types, std::vector<RuleChoiceColumn::Choice> vehicles);
    /// The rules of the rows. What is wrong with a row is told by its number: Corrupt.
    Result<std::vector<TripRule>> rules() const;
};

} // namespace quobrix
