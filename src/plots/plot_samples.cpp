#include "plots/plot_samples.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quobrix {

PlotSamples::PlotSamples(double start, double step, std::vector<double> values)
    : start_(start), step_(step), values_(std::move(values)) {
    build();
}

PlotSamples::PlotSamples(std::vector<double> places, std::vector<double> values)
    : places_(std::move(places)), values_(std::move(values)) {
    build();
}

void PlotSamples::build() {
    for (double& value : values_)
        if (!hasValue(value) || !std::isfinite(value))
            value = std::numeric_limits<double>::quiet_NaN();
    std::vector<Block> level(values_.size() / kFan);
    for (std::size_t i = 0; i < level.size() * kFan; ++i)
        level[i / kFan].include(sample(i));
    while (!level.empty()) {
        levels_.push_back(std::move(level));
        const std::vector<Block>& below = levels_.back();
        level.assign(below.size() / kFan, {});
        for (std::size_t i = 0; i < level.size() * kFan; ++i)
            level[i / kFan].include(below[i]);
    }
}

std::size_t PlotSamples::firstFrom(double place) const {
    if (!places_.empty())
        return static_cast<std::size_t>(std::ranges::lower_bound(places_, place) - places_.begin());
    if (empty() || place <= start_)
        return 0;
    if (place > at(size() - 1))
        return size();
    // What division rounds is put right by what at() says.
    auto sample = std::min(static_cast<std::size_t>((place - start_) / step_), size() - 1);
    while (sample > 0 && at(sample - 1) >= place)
        --sample;
    while (at(sample) < place)
        ++sample;
    return sample;
}

std::optional<std::size_t> PlotSamples::lastUpTo(double place) const {
    const std::size_t behind = firstFrom(std::nextafter(place, HUGE_VAL));
    return behind > 0 ? std::optional(behind - 1) : std::nullopt;
}

std::optional<PlotSamples::Extremes> PlotSamples::extremes(std::size_t begin, std::size_t end) const {
    Block found;
    while (begin < end) {
        std::size_t level = 0;
        const auto fits = [&](std::size_t size) { return (begin & (size - 1)) == 0 && begin + size <= end; };
        while (level < levels_.size() && fits(std::size_t{1} << kFanBits * (level + 1)))
            ++level;
        found.include(level > 0 ? levels_[level - 1][begin >> kFanBits * level] : sample(begin));
        begin += std::size_t{1} << kFanBits * level;
    }
    return found.leastAt == kNone ? std::nullopt : std::optional(Extremes{found.leastAt, found.greatestAt});
}

} // namespace quobrix
