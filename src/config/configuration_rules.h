#pragma once

#include "device/logger_status.h"
#include "messages/message.h"

#include <optional>

namespace quobrix {

/// Why CHANGED is not to be written to a logger that has PRESENT: speed bands that do not ascend strictly within 0 to
/// 255 km/h, thresholds that do not within 0 to 2 g, a parameter in two slots. What is as it was may be anything.
std::optional<Message> configurationProblem(const LoggerConfiguration& changed, const LoggerConfiguration& present);

} // namespace quobrix
