#pragma once

#include "device/logger_status.h"
#include "model/parameters.h"

#include <cstdint>

namespace quobrix {

/// The parameter (1 to 24, see model/parameters.h) that a logger's CODE stands for; kNoParameter for any other code.
std::int32_t parameterOfCode(std::int32_t code);
/// The inverse; the logger's code for "nothing" for what is no parameter. Codes are SAE J1979 mode 01 identifiers, but
/// for those of "nothing" and of the battery voltage, which are the logger's own.
std::int32_t codeOfParameter(std::int32_t parameter);

/// Seconds between samples; 60 for a code that is none.
std::int32_t secondsOfIntervalCode(std::int32_t code);
/// The inverse; that of 60 s for an interval that the logger does not have.
std::int32_t intervalCodeOfSeconds(std::int32_t seconds);

/// CONFIGURATION with the speed bands and thresholds that are delivered, and its parameters as they are.
LoggerConfiguration withDefaultLimits(LoggerConfiguration configuration);

/// CONFIGURATION with the parameters and intervals that are delivered, and its limits as they are.
LoggerConfiguration withDefaultParameters(LoggerConfiguration configuration);

} // namespace quobrix
