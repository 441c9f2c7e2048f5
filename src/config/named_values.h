#pragma once

#include "base/result.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace quobrix {

/// Reads a text of values that people can read and edit: FIRST_LINE, which names the format, then a line "name = value"
/// for each of NAMES in any order, with comments behind '#'. SET takes the value of a name by its place, and says
/// whether it is one. NotADocument if it is no such text at all, Corrupt if a line is wrong or a value is missing or
/// told twice; the detail names the line or the value.
Result<void> readNamedValues(std::string_view text, std::string_view firstLine, std::span<const std::string> names,
                             const std::function<bool(std::size_t place, std::string_view value)>& set);

/// All of TEXT as a number.
bool readNumber(std::string_view text, double& value);
bool readNumber(std::string_view text, std::int32_t& value);

} // namespace quobrix
