#include "plots/reduction.h"

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

/// So many samples a column are drawn as they are.
constexpr std::size_t kFew = 2;

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
    explicit Runs(std::vector<std::vector<std::size_t>>& runs) : runs_(runs) {}

    /// FIRST is the next sample with a value behind all that were added.
    void beginWith(std::size_t first) {
        if (runs_.empty() || runs_.back().back() + 1 != first)
            runs_.emplace_back();
    }
    void add(std::size_t sample) { runs_.back().push_back(sample); }
    /// SAMPLE may be the last that was added.
    void addOther(std::size_t sample) {
        if (runs_.back().back() != sample)
            add(sample);
    }

private:
    std::vector<std::vector<std::size_t>>& runs_;
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
        }
        if (const auto extremes = samples.extremes(i, next)) {
            std::size_t first = i, last = next - 1;
            while (!samples.has(first))
                ++first;
            while (!samples.has(last))
                --last;
            const auto [earlier, later] = std::minmax(extremes->least, extremes->greatest);
            runs.beginWith(first);
            runs.add(first);
            for (const std::size_t sample : {earlier, later, last})
                runs.addOther(sample);
        }
        i = next;
    }
    return result;
}

} // namespace quobrix
