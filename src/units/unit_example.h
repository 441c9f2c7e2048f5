#pragma once

#include "units/unit_catalogue.h"

#include <string>

namespace quobrix {

class TUnitSystem;

/// An everyday value of TYPE in its base unit, and how the current unit system shows it: "26.8224 m/s shows as 60 MPH".
/// Empty for the types of plain numbers and percentages.
std::string unitExample(const TUnitSystem& units, UnitTypeId type);

} // namespace quobrix
