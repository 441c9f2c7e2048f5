#pragma once

#include <bit>
#include <cstdint>

namespace quobrix {

/// Marks a real figure that has no value. Compared for exact equality, before any conversion.
inline constexpr double kNoValue = -8.8888888e-08;
static_assert(std::bit_cast<std::uint64_t>(kNoValue) == 0xBE77DC65DADFCA1Dull);

constexpr bool hasValue(double value) {
    return std::bit_cast<std::uint64_t>(value) != std::bit_cast<std::uint64_t>(kNoValue);
}

} // namespace quobrix
