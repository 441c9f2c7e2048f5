#pragma once

#include "units/number_format.h"
#include "units/unit_catalogue.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace quobrix {

class TUnitSystem;

// Numbers as a person types or pastes them: with the decimal separator of FORMAT, or a period where that does not group
// digits; with a sign in any of the places where locales write it; with or without the separators of digit groups,
// which must stand where FORMAT puts them. A number out of range, and anything else, is nothing.

/// A power of ten may follow ("10.0e+3").
std::optional<double> parseNumber(const NumberFormat& format, std::string_view text);
/// No decimals and no power of ten.
std::optional<std::int64_t> parseInteger(const NumberFormat& format, std::string_view text);

/// A base value: a number in the current unit of TYPE, or one followed by the name of any of its units.
std::optional<double> parseValue(const TUnitSystem& units, UnitTypeId type, std::string_view text);

} // namespace quobrix
