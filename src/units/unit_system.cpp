#include "units/unit_system.h"

#include "texts/catalogue.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <utility>

namespace quobrix {

UnitChoices::UnitChoices() {
    for (const UnitTypeRecord& type : allUnitTypes()) {
        choose(type.id, type.defaultUnit());
        decimals[static_cast<std::size_t>(type.id)] =
            static_cast<std::uint8_t>(unitRecord(type.defaultUnit()).decimals);
    }
}

void UnitChoices::choose(UnitTypeId type, UnitId unit) {
    const UnitRecord& record = unitRecord(unit);
    const auto i = static_cast<std::size_t>(type);
    units[i] = unit;
    factors[i] = record.factor;
    offsets[i] = record.offset;
    secondsPerUnit[i] = record.secondsPerUnit;
}

std::string_view TUnitSystem::formatValueWithUnits(UnitTypeId type, double base, std::span<char> buffer) const {
    const std::string_view number = formatValue(type, base, buffer);
    if (number.empty())
        return {};
    const UnitRecord& record = unitRecord(unit(type));
    std::string translated; // languages know more than one plural, of fractions, too; so one name is for all numbers
    std::string_view label = number == "1" || number == "-1" ? record.labelOfOne() : record.label;
    if (catalogue() && !label.empty())
        label = translated.append(" ").append(text(record.shownName));
    if (label.size() > buffer.size() - number.size())
        return number;
    std::ranges::copy(label, buffer.data() + number.size());
    return {buffer.data(), number.size() + label.size()};
}

std::string TUnitSystem::formatNumber(double value, int decimals) const {
    ValueText buffer;
    return std::string(formatNumber(value, decimals, buffer));
}

std::string TUnitSystem::formatInteger(std::int64_t value) const {
    ValueText buffer;
    return std::string(formatInteger(value, buffer));
}

std::string TUnitSystem::formatValue(UnitTypeId type, double base) const {
    ValueText buffer;
    return std::string(formatValue(type, base, buffer));
}

std::string TUnitSystem::formatValueWithUnits(UnitTypeId type, double base) const {
    ValueText buffer;
    return std::string(formatValueWithUnits(type, base, buffer));
}

void TUnitSystem::setUnit(UnitTypeId type, UnitId unit) {
    assert(unitTypeRecord(type).offers(unit));
    choices_.choose(type, unit);
    choices_.decimals[index(type)] = static_cast<std::uint8_t>(unitRecord(unit).decimals);
    choices_.modified = true;
    notify(UnitsChange::Unit, type);
}

void TUnitSystem::setDecimals(UnitTypeId type, int decimals) {
    choices_.decimals[index(type)] = static_cast<std::uint8_t>(std::clamp(decimals, 0, 9));
    choices_.modified = true;
    notify(UnitsChange::Decimals, type);
}

void TUnitSystem::setFractionDiameters(bool flag) {
    if (flag == choices_.fractionDiameters)
        return;
    choices_.fractionDiameters = flag;
    choices_.modified = true;
    notify(UnitsChange::FractionDiameters, {});
}

void TUnitSystem::replace(UnitChoices choices) {
    choices_ = std::move(choices);
    notify(UnitsChange::SystemLoaded, {});
}

void TUnitSystem::markSaved(std::string_view name) {
    choices_.name = name;
    choices_.locked = false;
    choices_.modified = false;
}

void TUnitSystem::setLocale(TextLocale locale) {
    locale_ = std::move(locale);
    notify(UnitsChange::SystemLoaded, {});
}

void TUnitSystem::addListener(UnitsListener& listener) { listeners_.push_back(&listener); }

void TUnitSystem::removeListener(UnitsListener& listener) {
    if (notifying_ == 0)
        std::erase(listeners_, &listener);
    else // the places of the others must not move under the loop in notify()
        std::ranges::replace(listeners_, &listener, nullptr);
}

void TUnitSystem::notify(UnitsChange reason, std::optional<UnitTypeId> type) {
    ++notifying_;
    for (std::size_t i = 0; i < listeners_.size(); ++i) {
        if (listeners_[i])
            listeners_[i]->unitsChanged(reason, type);
    }
    if (--notifying_ == 0)
        std::erase(listeners_, nullptr);
}

std::optional<int> decimalsFromText(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t+"), text.size()));
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument)
        return {};
    // "-0.5" truncates to 0; out of range means far too large or a vanishing fraction, and either is no count.
    if (error != std::errc{} || !(number > -1 && number < 10))
        return 9;
    return static_cast<int>(number);
}

} // namespace quobrix
