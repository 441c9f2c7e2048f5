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

void PlotSamples::include(Block& block, std::uint32_t least, std::uint32_t greatest) const {
    if (least == kNone)
        return;
    if (block.least == kNone || values_[least] < values_[block.least])
        block.least = least;
    if (block.greatest == kNone || values_[greatest] > values_[block.greatest])
        block.greatest = greatest;
}

void PlotSamples::build() {
    std::vector<Block> level(values_.size() / kFan);
    for (std::size_t i = 0; i < level.size() * kFan; ++i)
        if (const auto sample = static_cast<std::uint32_t>(i); has(i))
            include(level[i / kFan], sample, sample);
    while (!level.empty()) {
        levels_.push_back(std::move(level));
        const std::vector<Block>& below = levels_.back();
        level.assign(below.size() / kFan, {});
        for (std::size_t i = 0; i < level.size() * kFan; ++i)
            include(level[i / kFan], below[i].least, below[i].greatest);
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
    auto sample = std::min(static_cast<std::size_t>(std::ceil((place - start_) / step_)), size() - 1);
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
        std::size_t level = 0, size = 1;
        while (level < levels_.size() && begin % (size * kFan) == 0 && begin + size * kFan <= end) {
            size *= kFan;
            ++level;
        }
        if (level > 0)
            include(found, levels_[level - 1][begin / size].least, levels_[level - 1][begin / size].greatest);
        else if (const auto sample = static_cast<std::uint32_t>(begin); has(begin))
            include(found, sample, sample);
        begin += size;
    }
    return found.least == kNone ? std::nullopt : std::optional(Extremes{found.least, found.greatest});
}

} // namespace quobrix
