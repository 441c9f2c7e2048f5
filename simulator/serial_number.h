#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quobrix::sim {

/// A serial number is "K-0042-B": a capital letter, four digits, a capital letter. Its number counts the texts in
/// their alphabetical order from 1: first letter × 260,000 + digits × 26 + last letter + 1, so 1 to 6,760,000.
std::optional<std::int32_t> serialToNumber(std::string_view text);
std::optional<std::string> serialToText(std::int32_t number);

} // namespace quobrix::sim
