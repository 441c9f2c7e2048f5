#pragma once

#include "units/unit_catalogue.h"

#include <string>

namespace quobrix {

class TUnitSystem;

/// BASE as TUnitSystem::formatValueWithUnits() writes it, with as many more decimals as it takes to see a difference of
/// STEP (base units). Without it a way of 70 m would read "0.0 Miles". Nothing for kNoValue.
std::string fineText(const TUnitSystem& units, UnitTypeId type, double base, double step);
/// A length (base units) with two figures that are not leading zeros, at least.
std::string lengthText(const TUnitSystem& units, UnitTypeId type, double length);

} // namespace quobrix
