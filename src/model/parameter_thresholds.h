#pragma once

#include "model/parameters.h"
#include "tables/column.h"

namespace quobrix {

class Settings;

/// What a sampled parameter (1 to 24) is compared with, when the time that it spends above and below is counted: name,
/// unit type and the delivered value (Requirements::defaultValue).
const ColumnSpec& parameterThresholdSpec(std::int32_t parameter);

/// As a person has set it, else the delivered one; in the base unit of the parameter's unit type.
double parameterThreshold(const Settings& settings, std::int32_t parameter);
/// The delivered one is set by removing what a person has set.
void setParameterThreshold(Settings& settings, std::int32_t parameter, double value);

} // namespace quobrix
