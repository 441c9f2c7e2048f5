#pragma once

#include "base/shown_text.h"

namespace quobrix {

class TUnitSystem;

/// Distances are shown in miles or feet.
bool inMiles(const TUnitSystem& units);

/// What economies are shown in: miles a gallon, litres for 100 km (less is better), or else the user's unit of distance
/// for one of fuel.
ShownText economyUnit(const TUnitSystem& units);
/// METRES that were driven with a US gallon, as a number of that.
double shownEconomy(double metres, const TUnitSystem& units);
/// The same as the user reads it, with one decimal and the unit.
ShownText economyText(double metres, const TUnitSystem& units);

} // namespace quobrix
