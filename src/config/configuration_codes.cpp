#include "config/configuration_codes.h"

#include <algorithm>
#include <iterator>

namespace quobrix {
namespace {

constexpr std::int32_t kNothingCode = 0xF9;

// By parameter, from 1.
constexpr std::int32_t kParameterCodes[] = {0x0D, 0x0C, 0x11, 0x05, 0x04, 0x0B, 0x10, 0x0F, 0x0E, 0x0A, 0x03, 0x06,
                                            0x08, 0x07, 0x09, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B, 0xE1};

struct Interval {
    std::int32_t seconds, code;
};
constexpr Interval kIntervals[] = {{1, 32}, {5, 1}, {10, 2}, {20, 4}, {30, 8}, {60, 16}};

} // namespace

std::int32_t parameterOfCode(std::int32_t code) {
    const auto found = std::ranges::find(kParameterCodes, code);
    return found == std::end(kParameterCodes)
               ? kNoParameter
               : static_cast<std::int32_t>(std::distance(std::begin(kParameterCodes), found)) + 1;
}

std::int32_t codeOfParameter(std::int32_t parameter) {
    return parameter < 1 || parameter > std::ssize(kParameterCodes) ? kNothingCode : kParameterCodes[parameter - 1];
}

std::int32_t secondsOfIntervalCode(std::int32_t code) {
    const auto found = std::ranges::find(kIntervals, code, &Interval::code);
    return found == std::end(kIntervals) ? 60 : found->seconds;
}

std::int32_t intervalCodeOfSeconds(std::int32_t seconds) {
    const auto found = std::ranges::find(kIntervals, seconds, &Interval::seconds);
    return found == std::end(kIntervals) ? 16 : found->code;
}

LoggerConfiguration withDefaultLimits(LoggerConfiguration configuration) {
    configuration.bandLimits = {45, 60, 70};
    configuration.brakeThresholds = configuration.accelerationThresholds = {2.745862, 4.707192}; // 0.28 and 0.48 g
    return configuration;
}

LoggerConfiguration withDefaultParameters(LoggerConfiguration configuration) {
    constexpr struct {
        std::int32_t parameter, seconds;
    } kSlots[QUOBRIX_SLOT_COUNT] = {{2, 5}, {3, 5}, {4, 60}, {5, 5}, {kNoParameter, 60}};
    for (std::size_t slot = 0; slot < std::size(kSlots); ++slot) {
        configuration.parameters[slot] = codeOfParameter(kSlots[slot].parameter);
        configuration.intervals[slot] = intervalCodeOfSeconds(kSlots[slot].seconds);
    }
    return configuration;
}

} // namespace quobrix
