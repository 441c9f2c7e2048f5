#pragma once

#include "base/bytes.h"
#include "base/result.h"
#include "units/unit_system.h"

#include <string_view>

namespace quobrix {

// A unit-system file: format version (1), a byte written as 1 and ignored, the count T of unit types, then for each
// type in order of ids the unit's id and the decimals, and from version 1 on the fraction-diameters option (1 = on).
// Every number is one byte.

/// Larger than any such file, and the most that is read of one.
inline constexpr std::size_t kMaxUnitSystemFile = 4096;

Bytes encodeUnitSystem(const UnitChoices& choices);

/// The system of that NAME in BYTES, unlocked and unmodified. A unit that is unknown or not one of its type leaves the
/// type its default unit; decimals above 9 read as 9; types that this program does not know are passed over, and types
/// that the file does not know keep their defaults. Corrupt if the bytes end too early.
Result<UnitChoices> decodeUnitSystem(std::string_view name, ByteView bytes);

} // namespace quobrix
