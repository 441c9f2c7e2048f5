#include "tables/row_runs.h"

#include <algorithm>

namespace quobrix {

std::size_t countRows(std::span<const RowRun> runs) {
    std::size_t rows = 0;
    for (const RowRun& run : runs)
        rows += run.count;
    return rows;
}

RowRuns runsOf(std::span<const RowIndex> rows) {
    RowRuns runs;
    for (const RowIndex row : rows) {
        if (runs.empty() || row > runs.back().end())
            runs.push_back({row, 1});
        else if (row == runs.back().end())
            ++runs.back().count;
    }
    return runs;
}

RowShift::RowShift(std::span<const RowRun> runs) {
    steps_.reserve(runs.size());
    std::size_t before = 0;
    for (const RowRun& run : runs) {
        steps_.push_back({run, before});
        before += run.count;
    }
}

bool RowShift::goes(RowIndex row) const {
    const auto next = std::ranges::upper_bound(steps_, row, {}, [](const Step& step) { return step.run.first; });
    return next != steps_.begin() && row < std::prev(next)->run.end();
}

RowIndex RowShift::without(RowIndex row) const {
    const auto next = std::ranges::upper_bound(steps_, row, {}, [](const Step& step) { return step.run.first; });
    return next == steps_.begin() ? row : row - std::prev(next)->before - std::prev(next)->run.count;
}

RowIndex RowShift::with(RowIndex row) const {
    // A run comes before the row that has its first number without it.
    const auto next =
        std::ranges::upper_bound(steps_, row, {}, [](const Step& step) { return step.run.first - step.before; });
    return next == steps_.begin() ? row : row + std::prev(next)->before + std::prev(next)->run.count;
}

} // namespace quobrix
