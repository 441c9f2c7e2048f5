#include "units/fine_text.h"

#include "base/no_value.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <cmath>

namespace quobrix {
namespace {

constexpr int kMostDecimals = 9;

} // namespace

std::string fineText(const TUnitSystem& units, UnitTypeId type, double base, double step) {
    if (!hasValue(base))
        return {};
    int decimals = units.decimals(type);
    const double shown = std::abs(units.toDisplay(type, step) - units.toDisplay(type, 0));
    while (shown > 0 && shown * std::pow(10.0, decimals) < 1 - 1e-9 && decimals < kMostDecimals)
        ++decimals;
    if (decimals == units.decimals(type))
        return units.formatValueWithUnits(type, base);
    const std::string name = text(unitRecord(units.unit(type)).shownName);
    return units.formatNumber(units.toDisplay(type, base), decimals) + (name.empty() ? "" : " " + name);
}

std::string lengthText(const TUnitSystem& units, UnitTypeId type, double length) {
    return fineText(units, type, length, length / 10);
}

} // namespace quobrix
