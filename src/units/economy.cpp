#include "units/economy.h"

#include "texts/text.h"
#include "units/unit_system.h"

namespace quobrix {
namespace {

bool inLitresPer100Kilometres(const TUnitSystem& units) {
    return units.unit(UnitTypeId::Distance) == UnitId::Kilometre && units.unit(UnitTypeId::Fuel) == UnitId::Liter;
}

} // namespace

bool inMiles(const TUnitSystem& units) {
    const UnitId unit = units.unit(UnitTypeId::Distance);
    return unit == UnitId::Mile || unit == UnitId::Foot;
}

ShownText economyUnit(const TUnitSystem& units) {
    if (inLitresPer100Kilometres(units))
        return text(TextId::LitresPer100Kilometres);
    if (units.unit(UnitTypeId::Distance) == UnitId::Mile && units.unit(UnitTypeId::Fuel) == UnitId::Gallon)
        return text(TextId::MilesPerGallon);
    const auto name = [&](UnitTypeId type) { return text(unitRecord(units.unit(type)).shownName); };
    return text(TextId::UnitPerUnit, name(UnitTypeId::Distance), name(UnitTypeId::Fuel));
}

double shownEconomy(double metres, const TUnitSystem& units) {
    const double perFuel = units.toDisplay(UnitTypeId::Distance, metres) / units.toDisplay(UnitTypeId::Fuel, 1);
    return inLitresPer100Kilometres(units) ? 100 / perFuel : perFuel;
}

ShownText economyText(double metres, const TUnitSystem& units) {
    ValueText buffer;
    return ShownText::asItIs(std::string(formatNumber(units.locale().numbers, shownEconomy(metres, units), 1, buffer)) +
                             ' ' + economyUnit(units));
}

} // namespace quobrix
