#include "config/parameter_threshold_text.h"

#include "config/named_values.h"
#include "model/parameter_thresholds.h"

#include <fmt/format.h>

#include <cmath>
#include <vector>

namespace quobrix {
namespace {

constexpr std::string_view kFirstLine = "Quobrix parameter thresholds 1";

/// In English, as files have them.
std::vector<std::string> names() {
    std::vector<std::string> result;
    for (std::int32_t parameter = 1; parameter <= kParameterCount; ++parameter)
        result.emplace_back(
            (parameter == kFuelSystemStatusParameter ? kFuelSystemStatusName : parameterName(parameter)).english());
    return result;
}

} // namespace

std::string parameterThresholdText(const ThresholdValues& values) {
    std::string text = fmt::format("{}\n", kFirstLine);
    const std::vector<std::string> named = names();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const ColumnSpec& spec = parameterThresholdSpec(static_cast<std::int32_t>(i + 1));
        const std::string_view unit = unitTypeRecord(spec.unit).base;
        text += fmt::format("{} = {}{}{}\n", named[i], values[i], unit.empty() ? "" : "  # ", unit);
    }
    return text;
}

Result<ThresholdValues> readParameterThresholdText(std::string_view text) {
    ThresholdValues values{};
    const auto set = [&](std::size_t place, std::string_view value) {
        return readNumber(value, values[place]) && std::isfinite(values[place]);
    };
    QUOBRIX_TRY(readNamedValues(text, kFirstLine, names(), set));
    return values;
}

} // namespace quobrix
