#include "plots/scales.h"

#include "units/date_time.h"

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

constexpr double kRounding = 1e-9; ///< of a step

} // namespace

int ValueScale::row(double value) const {
    constexpr double kFar = 1e6; // beyond any screen
    return static_cast<int>(std::clamp(y(value), -kFar, kFar));
}

double ValueScale::valueAt(double y) const {
    const double part = (downward ? y - top : bottom - y) / (bottom - top);
    return least + part * (greatest - least);
}

Steps stepsFrom(double least) {
    int exponent = static_cast<int>(std::floor(std::log10(least)));
    // Positive powers are exact everywhere, others not.
    const auto power = [&] { return exponent < 0 ? 1 / std::pow(10.0, -exponent) : std::pow(10.0, exponent); };
    double times = 10;
    for (const double candidate : {1.0, 2.0, 5.0})
        if (candidate * power() >= least * (1 - kRounding)) {
            times = candidate;
            break;
        }
    if (times == 10) {
        times = 1;
        ++exponent;
    }
    return {times * power(), std::max(0, -exponent)};
}

double timeStepFrom(double least) {
    constexpr double kSteps[] = {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200};
    const auto* const step = std::ranges::lower_bound(kSteps, least);
    return step != std::end(kSteps) ? *step : stepsFrom(std::max(1.0, least / kSecondsPerDay)).step * kSecondsPerDay;
}

std::vector<double> multiples(double step, double from, double to) {
    std::vector<double> all;
    const double first = std::ceil(from / step - kRounding), last = std::floor(to / step + kRounding);
    for (double i = first; i <= last; ++i)
        all.push_back(i * step + 0.0); // no negative zero
    return all;
}

} // namespace quobrix
