#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace quobrix {

using RowIndex = std::size_t;

/// Rows that lie together.
struct RowRun {
    RowIndex first = 0;
    std::size_t count = 0;

    RowIndex end() const { return first + count; }
    bool operator==(const RowRun&) const = default;
};

/// Runs in ascending order, none touching the next one. Rows that come are numbered as they are when all of them are
/// there, rows that go as they are while all of them are there: so the same runs take back what they have done.
using RowRuns = std::vector<RowRun>;

std::size_t countRows(std::span<const RowRun> runs);
/// The runs of ROWS, which must be ascending and may name a row twice.
RowRuns runsOf(std::span<const RowIndex> rows);

/// The numbers of rows that stay while others come or go.
class RowShift {
public:
    explicit RowShift(std::span<const RowRun> runs);

    /// ROW is one of those that go.
    bool goes(RowIndex row) const;
    /// The number that ROW, which stays, has when the runs are gone.
    RowIndex without(RowIndex row) const;
    /// The number that ROW of the rows without the runs has when they have come.
    RowIndex with(RowIndex row) const;

private:
    struct Step {
        RowRun run;
        std::size_t before; ///< rows of the runs before this one
    };
    std::vector<Step> steps_;
};

} // namespace quobrix
