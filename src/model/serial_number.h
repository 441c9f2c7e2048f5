#pragma once

#include <cstddef>
#include <string_view>

namespace quobrix {

inline constexpr std::size_t kSerialNumberLength = 8;

/// The form of a logger's serial number: a letter, a hyphen, four digits, a hyphen, a letter (K-0042-B).
bool isSerialNumber(std::string_view text);

/// Whether a serial number typed by the user is taken. More lenient than the form itself: some positions are held
/// against their neighbour's upper bound, and users have numbers on file that only pass because of it.
bool isAcceptedTyped(std::string_view text);

} // namespace quobrix
