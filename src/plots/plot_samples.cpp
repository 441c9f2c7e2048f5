#include "plots/plot_samples.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quobrix {

PlotSamples::PlotSamples(double start, double step, std::vector<double> values)
    : start_(start), step_(step), perPlace_(1 / step), values_(std::move(values)) {
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
    within_.resize(size());
    for (std::size_t begin = 0; begin < size(); begin += kFan) {
        const std::size_t end = std::min(begin + kFan, size());
        for (std::size_t i = begin, least = begin, greatest = begin; i < end; ++i) { // of equal ones the first
            least = values_[i] < values_[least] || !has(least) ? i : least;
            greatest = values_[i] > values_[greatest] || !has(greatest) ? i : greatest;
            within_[i].leastUpTo = static_cast<std::uint8_t>(least - begin);
            within_[i].greatestUpTo = static_cast<std::uint8_t>(greatest - begin);
        }
        for (std::size_t i = end, least = end - 1, greatest = end - 1; i-- > begin;) {
            least = values_[i] <= values_[least] || !has(least) ? i : least;
            greatest = values_[i] >= values_[greatest] || !has(greatest) ? i : greatest;
            within_[i].leastFrom = static_cast<std::uint8_t>(least - begin);
            within_[i].greatestFrom = static_cast<std::uint8_t>(greatest - begin);
        }
    }
    std::vector<Block> level(size() / kFan);
    for (std::size_t i = 0; i < level.size(); ++i)
        level[i].include(from(i * kFan));
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
    // What is rounded is put right by what at() says.
    auto sample = std::min(static_cast<std::size_t>((place - start_) * perPlace_), size() - 1);
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

void PlotSamples::fetch(std::size_t begin, std::size_t end) const {
    if (end > size() || levels_.empty())
        return;
    const std::size_t block = begin / kFan, behind = std::min({end / kFan, block + kFan, levels_[0].size()});
    __builtin_prefetch(&within_[begin]);
    __builtin_prefetch(&values_[block * kFan]);
    __builtin_prefetch(&values_[block * kFan] + kFan / 2);
    for (std::size_t i = block + 1; i < behind; i += 3) // a line of memory holds about three
        __builtin_prefetch(&levels_[0][i]);
}

void PlotSamples::includeBlocks(Block& found, std::size_t level, std::size_t begin, std::size_t end) const {
    const std::vector<Block>& blocks = levels_[level];
    const auto includeUpTo = [&](std::size_t behind) {
        for (; begin + 1 < behind; begin += 2) { // two at once, of which one need not wait for what was found before
            Block two = blocks[begin];
            two.include(blocks[begin + 1]);
            found.include(two);
        }
        if (begin < behind)
            found.include(blocks[begin++]);
    };
    const std::size_t above = (begin + kFan - 1) / kFan, aboveEnd = end / kFan;
    if (above < aboveEnd) {
        includeUpTo(above * kFan);
        includeBlocks(found, level + 1, above, aboveEnd);
        begin = aboveEnd * kFan;
    }
    includeUpTo(end);
}

std::optional<PlotSamples::Extremes> PlotSamples::extremes(std::size_t begin, std::size_t end) const {
    Block found;
    if (const std::size_t next = (begin / kFan + 1) * kFan; next > end) { // within a block
        for (; begin < end; ++begin)
            found.include(sample(begin));
    } else {
        found.include(from(begin));
        if (next + kFan <= end)
            includeBlocks(found, 0, next / kFan, end / kFan);
        begin = end / kFan * kFan;
        if (begin < end)
            found.include(upTo(end - 1));
    }
    if (found.leastAt == kNone)
        return {};
    return Extremes{{found.leastAt, found.least}, {found.greatestAt, found.greatest}};
}

} // namespace quobrix
