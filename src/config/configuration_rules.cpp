#include "config/configuration_rules.h"

#include "config/configuration_codes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <set>

namespace quobrix {
namespace {

constexpr double kKilometresPerMile = 1.609344;
constexpr double kMaxSpeed = 255 / kKilometresPerMile; // MPH
constexpr double kMaxThreshold = 2 * 9.80665;          // m/s2

/// Strictly, above 0 and up to MAXIMUM, but for what converting a bound into other units and back leaves.
template <std::size_t n>
bool ascends(const std::array<double, n>& values, double maximum) {
    return values.front() > 0 && values.back() <= maximum * (1 + 1e-9) &&
           std::ranges::adjacent_find(values, std::not_fn(std::less<>())) == values.end();
}

/// What a logger tells that is no number is the same as long as it is none.
template <std::size_t n>
bool edited(const std::array<double, n>& values, const std::array<double, n>& present) {
    return !std::ranges::equal(values, present,
                               [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); });
}

bool hasTwice(const std::array<std::int32_t, QUOBRIX_SLOT_COUNT>& parameters) {
    std::set<std::int32_t> seen;
    return std::ranges::any_of(parameters, [&](std::int32_t code) {
        return parameterOfCode(code) != kNoParameter && !seen.insert(code).second;
    });
}

} // namespace

std::optional<Message> configurationProblem(const LoggerConfiguration& changed, const LoggerConfiguration& present) {
    if (edited(changed.bandLimits, present.bandLimits) && !ascends(changed.bandLimits, kMaxSpeed))
        return makeMessage(MessageId::SpeedBandsOutOfRange);
    if (edited(changed.brakeThresholds, present.brakeThresholds) && !ascends(changed.brakeThresholds, kMaxThreshold))
        return makeMessage(MessageId::ThresholdsOutOfRange, text(SourceText("braking")));
    if (edited(changed.accelerationThresholds, present.accelerationThresholds) &&
        !ascends(changed.accelerationThresholds, kMaxThreshold))
        return makeMessage(MessageId::ThresholdsOutOfRange, text(SourceText("acceleration")));
    if (changed.parameters != present.parameters && hasTwice(changed.parameters))
        return makeMessage(MessageId::DuplicateParameters);
    return {};
}

} // namespace quobrix
