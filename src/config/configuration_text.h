#pragma once

#include "base/result.h"
#include "device/logger_status.h"

#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// A logger's configuration as a text that people can read and edit: a first line that names the format, then a line
/// "name = value" for each of the 17 values, with comments behind '#'. Reals are written so that reading gives the same
/// ones; codes that this program does not know are kept as codes.
std::string configurationText(const LoggerConfiguration& configuration);

/// The configuration that TEXT tells. The errors are those of readNamedValues(). Whether the values make sense is not
/// looked at.
Result<LoggerConfiguration> readConfigurationText(std::string_view text);

/// What A and B differ in, in words a line ("Hard Braking: 2.9 instead of 2.7 m/s²"). Reals are equal within 1e-6 of
/// their size, since the logger keeps fewer digits than a double.
std::vector<std::string> configurationDifferences(const LoggerConfiguration& a, const LoggerConfiguration& instead);

} // namespace quobrix
