#pragma once

#include "base/result.h"
#include "model/parameters.h"

#include <array>
#include <string>
#include <string_view>

namespace quobrix {

/// A threshold for each parameter, from 1 on, in the base unit of its unit type.
using ThresholdValues = std::array<double, kParameterCount>;

/// VALUES as a text that people can read and edit; reading gives the same ones.
std::string parameterThresholdText(const ThresholdValues& values);

/// The thresholds that TEXT tells. The errors are those of readNamedValues(). Whether they make sense is not looked at.
Result<ThresholdValues> readParameterThresholdText(std::string_view text);

} // namespace quobrix
