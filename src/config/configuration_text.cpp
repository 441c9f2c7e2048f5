#include "config/configuration_text.h"

#include "config/configuration_codes.h"
#include "config/named_values.h"
#include "model/parameters.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace quobrix {
namespace {

constexpr std::string_view kFirstLine = "Quobrix configuration 1";

enum class Kind { Real, Parameter, Interval };

/// A value of the configuration and how it is told.
struct Field {
    SourceText name; ///< English in files
    Kind kind;
    std::string_view unit;
    double& (*real)(LoggerConfiguration&) = nullptr;
    std::int32_t& (*code)(LoggerConfiguration&) = nullptr;
};

template <std::size_t i>
double& band(LoggerConfiguration& c) {
    return c.bandLimits[i];
}
template <std::size_t i>
double& brake(LoggerConfiguration& c) {
    return c.brakeThresholds[i];
}
template <std::size_t i>
double& acceleration(LoggerConfiguration& c) {
    return c.accelerationThresholds[i];
}
template <std::size_t i>
std::int32_t& parameter(LoggerConfiguration& c) {
    return c.parameters[i];
}
template <std::size_t i>
std::int32_t& interval(LoggerConfiguration& c) {
    return c.intervals[i];
}

constexpr Field kFields[] = {
    {SourceText("Speed Band 1"), Kind::Real, "MPH", band<0>},
    {SourceText("Speed Band 2"), Kind::Real, "MPH", band<1>},
    {SourceText("Speed Band 3"), Kind::Real, "MPH", band<2>},
    {SourceText("Hard Braking"), Kind::Real, "m/s²", brake<0>},
    {SourceText("Extreme Braking"), Kind::Real, "m/s²", brake<1>},
    {SourceText("Hard Acceleration"), Kind::Real, "m/s²", acceleration<0>},
    {SourceText("Extreme Acceleration"), Kind::Real, "m/s²", acceleration<1>},
    {SourceText("Parameter 1"), Kind::Parameter, "", nullptr, parameter<0>},
    {SourceText("Interval 1"), Kind::Interval, "s", nullptr, interval<0>},
    {SourceText("Parameter 2"), Kind::Parameter, "", nullptr, parameter<1>},
    {SourceText("Interval 2"), Kind::Interval, "s", nullptr, interval<1>},
    {SourceText("Parameter 3"), Kind::Parameter, "", nullptr, parameter<2>},
    {SourceText("Interval 3"), Kind::Interval, "s", nullptr, interval<2>},
    {SourceText("Parameter 4"), Kind::Parameter, "", nullptr, parameter<3>},
    {SourceText("Interval 4"), Kind::Interval, "s", nullptr, interval<3>},
    {SourceText("Parameter 5"), Kind::Parameter, "", nullptr, parameter<4>},
    {SourceText("Interval 5"), Kind::Interval, "s", nullptr, interval<4>},
};

using Wording = std::string (*)(SourceText);

std::string codeText(std::int32_t code) { return fmt::format("code {}", code); }

std::string englishOf(SourceText source) { return std::string(source.english()); }

/// In words that WORDED makes of the name: English in files, the user's language elsewhere.
std::string parameterText(std::int32_t code, Wording worded) {
    const std::int32_t parameter = parameterOfCode(code);
    if (codeOfParameter(parameter) != code)
        return codeText(code);
    if (parameter == kNoParameter)
        return worded(kNoParameterName);
    return worded(parameter == kFuelSystemStatusParameter ? kFuelSystemStatusName : parameterName(parameter));
}

std::string intervalText(std::int32_t code) {
    const std::int32_t seconds = secondsOfIntervalCode(code);
    return intervalCodeOfSeconds(seconds) == code ? fmt::format("{}", seconds) : codeText(code);
}

std::string valueText(const Field& field, LoggerConfiguration configuration, Wording worded) {
    switch (field.kind) {
    case Kind::Real:
        return fmt::format("{}", field.real(configuration));
    case Kind::Parameter:
        return parameterText(field.code(configuration), worded);
    default:
        return intervalText(field.code(configuration));
    }
}

std::optional<std::int32_t> readCode(Kind kind, std::string_view text) {
    constexpr std::string_view kPrefix = "code ";
    std::int32_t number = 0;
    if (text.starts_with(kPrefix))
        return readNumber(text.substr(kPrefix.size()), number) ? std::optional(number) : std::nullopt;
    if (kind == Kind::Interval) {
        if (!readNumber(text, number) || secondsOfIntervalCode(intervalCodeOfSeconds(number)) != number)
            return {};
        return intervalCodeOfSeconds(number);
    }
    for (std::int32_t parameter = kNoParameter; parameter <= kParameterCount; ++parameter)
        if (const std::int32_t code = codeOfParameter(parameter); parameterText(code, englishOf) == text)
            return code;
    return {};
}

bool readValue(const Field& field, std::string_view text, LoggerConfiguration& configuration) {
    if (field.kind == Kind::Real) {
        double& value = field.real(configuration);
        return readNumber(text, value);
    }
    const std::optional<std::int32_t> code = readCode(field.kind, text);
    if (code)
        field.code(configuration) = *code;
    return code.has_value();
}

bool equal(double a, double b) {
    if (!std::isfinite(a) || !std::isfinite(b))
        return a == b || (std::isnan(a) && std::isnan(b));
    return std::abs(a - b) <= 1e-6 * std::max(std::abs(a), std::abs(b));
}

} // namespace

std::string configurationText(const LoggerConfiguration& configuration) {
    std::string text = fmt::format("{}\n", kFirstLine);
    for (const Field& field : kFields)
        text += fmt::format("{} = {}{}{}\n", field.name.english(), valueText(field, configuration, englishOf),
                            field.unit.empty() ? "" : "  # ", field.unit);
    return text;
}

Result<LoggerConfiguration> readConfigurationText(std::string_view text) {
    std::vector<std::string> names;
    for (const Field& field : kFields)
        names.push_back(englishOf(field.name));
    LoggerConfiguration configuration;
    const auto set = [&](std::size_t place, std::string_view value) {
        return readValue(kFields[place], value, configuration);
    };
    QUOBRIX_TRY(readNamedValues(text, kFirstLine, names, set));
    return configuration;
}

std::vector<std::string> configurationDifferences(const LoggerConfiguration& a, const LoggerConfiguration& instead) {
    const Wording shown = [](SourceText source) -> std::string { return text(source); };
    std::vector<std::string> lines;
    for (const Field& field : kFields) {
        LoggerConfiguration is = a, shouldBe = instead;
        const bool same = field.kind == Kind::Real ? equal(field.real(is), field.real(shouldBe))
                                                   : field.code(is) == field.code(shouldBe);
        if (!same)
            lines.push_back(text(TextId::ConfigurationDiffersIn, text(field.name), valueText(field, a, shown),
                                 valueText(field, instead, shown), field.unit.empty() ? "" : " ", field.unit));
    }
    return lines;
}

} // namespace quobrix
