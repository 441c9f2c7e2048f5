#pragma once

#include "device/logger_calls.h"
#include "messages/prompter.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quobrix {

inline constexpr std::size_t kSerialNumberLength = 8;

/// The form of a logger's serial number: a letter, a hyphen, four digits, a hyphen, a letter (K-0042-B).
bool isSerialNumber(std::string_view text);

/// Whether a serial number typed by the user may be converted. More lenient than the form itself: some positions are
/// held against their neighbour's upper bound, and users have numbers on file that only pass because of it.
bool isAcceptedTyped(std::string_view text);

/// The number behind a serial number typed by the user. A text that is not accepted is told to be invalid and not
/// converted. Nothing when there is no number.
std::optional<std::int32_t> convertTypedSerialNumber(std::string_view text, LoggerCalls& calls, Prompter& prompter);

} // namespace quobrix
