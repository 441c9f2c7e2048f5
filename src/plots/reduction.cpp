#include "plots/reduction.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quobrix {
namespace {

/// So many samples a column are drawn as they are.
constexpr std::size_t kFew = 2;

/// So many columns before they are looked at, samples are fetched.
constexpr std::size_t kAhead = 8;

/// Columns of the axis, counted from its zero: they have the same edges, to the last bit, wherever a plot begins.
class PixelGrid {
public:
    PixelGrid(double origin, double width) : width_(width), offset_(origin - std::round(origin / width) * width) {
        if (std::abs(offset_) < 1e-6 * width)
            offset_ = 0;
    }

    double edge(double column) const { return offset_ + column * width_; }
    double columnOf(double place) const {
        double column = std::floor((place - offset_) / width_);
        column -= edge(column) > place;
        return column + (edge(column + 1) <= place);
    }

private:
    double width_, offset_;
};

class Runs {
public:
    using Sample = PlotSamples::Sample;

    explicit Runs(std::vector<std::vector<Sample>>& runs) : runs_(runs) {}

    /// FIRST is the next sample with a value behind all that were added.
    void beginWith(std::size_t first) {
        if (runs_.empty() || runs_.back().back().number + 1 != first)
            runs_.emplace_back();
    }
    void add(Sample sample) { runs_.back().push_back(sample); }
    /// SAMPLE may be the last that was added.
    void addOther(Sample sample) {
        if (runs_.back().back().number != sample.number)
            add(sample);
    }

private:
    std::vector<std::vector<Sample>>& runs_;
};

} // namespace

Reduction reduce(const PlotSamples& samples, double origin, double width, std::size_t columns) {
    Reduction result;
    Runs runs(result.runs);
    const PixelGrid grid(origin, width);
    std::size_t i = samples.firstFrom(origin);
    std::size_t end = samples.firstFrom(std::nextafter(origin + width * static_cast<double>(columns), HUGE_VAL));
    i -= i > 0;
    end += end < samples.size();
    result.reduced = end - i > kFew * columns;
    double column = i < end ? grid.columnOf(samples.at(i)) : 0;
    while (i < end) {
        std::size_t next = i + 1;
        if (result.reduced) {
            if (const double place = samples.at(i); grid.edge(column + 1) <= place) // behind columns that hold nothing
                column = grid.columnOf(place);
            next = std::min(samples.firstFrom(grid.edge(++column)), end);
            samples.fetch(next + kAhead * (next - i), next + (kAhead + 1) * (next - i));
        }
        if (const auto extremes = samples.extremes(i, next)) {
            std::size_t first = i, last = next - 1;
            while (!samples.has(first))
                ++first;
            while (!samples.has(last))
                --last;
            PlotSamples::Sample earlier = extremes->least, later = extremes->greatest;
            if (later.number < earlier.number)
                std::swap(earlier, later);
            runs.beginWith(first);
            runs.add({first, samples.value(first)});
            for (const PlotSamples::Sample& sample : {earlier, later, PlotSamples::Sample{last, samples.value(last)}})
                runs.addOther(sample);
        }
        i = next;
    }
    return result;
}

} // namespace quobrix
