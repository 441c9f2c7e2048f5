#pragma once

#include "device/logger_calls.h"
#include "messages/prompter.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace quobrix {

/// The number behind a serial number typed by the user. A text that is not accepted is told to be invalid and not
/// converted. Nothing when there is no number.
std::optional<std::int32_t> convertTypedSerialNumber(std::string_view text, LoggerCalls& calls, Prompter& prompter);

} // namespace quobrix
