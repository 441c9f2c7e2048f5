#pragma once

#include "tables/column.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace quobrix {

/// Says of a stored row whether it is shown.
using RowFilter = std::function<bool(RowIndex)>;

/// Which rows of its columns a list shows, and in which order; the columns stay as they are stored. A place is a row as
/// it is shown, from 0 at the top.
class ShownRows {
public:
    /// At a place whose row has been removed.
    static constexpr RowIndex kGone = std::numeric_limits<RowIndex>::max();

    /// Those of STORED rows that FILTER (none: every one) shows, in their stored order.
    void reset(RowIndex stored, const RowFilter& filter = {});
    /// The rows that are shown in the order of their values in COLUMN: figures and dates by base value, texts and
    /// selections as they read in the person's language ("#2" before "#10"). Rows without a value come last either way;
    /// equal rows keep their stored order.
    void sort(const Column& column, const TextContext& context, bool downward);
    /// The rows that are shown in their stored order.
    void unsort();

    /// Rows have been inserted, which are not shown yet: the others have the numbers that they have beside them.
    void rowsInserted(std::span<const RowRun> runs);
    /// Shows rows, none of which is shown yet: at their places in the stored order, else as the last ones.
    void show(std::span<const RowRun> runs);
    /// Rows have been removed, whose places stay as kGone: the others have the numbers that they have without them.
    void rowsRemoved(std::span<const RowRun> runs);
    void dropGone();

    /// Puts the row at place FROM[i] at place i.
    void arrange(std::span<const std::size_t> from);
    void insertAt(std::size_t place, std::span<const RowIndex> rows);
    void eraseAt(std::size_t place, std::size_t count);

    std::span<const RowIndex> rows() const { return rows_; } ///< by place
    RowIndex rowAt(std::size_t place) const { return rows_[place]; }
    /// Nothing for a row that is not shown.
    std::optional<std::size_t> placeOf(RowIndex row) const;
    std::size_t size() const { return rows_.size(); }
    RowIndex stored() const { return stored_; } ///< how many rows there are, shown or not

private:
    std::vector<double> textKeys(const Column& column, std::span<const RowIndex> rows, const TextContext& context);

    static constexpr auto kNoPlace = std::numeric_limits<std::uint32_t>::max();

    RowIndex stored_ = 0;
    std::vector<RowIndex> rows_;
    bool sorted_ = false;
    mutable std::vector<std::uint32_t> places_; ///< by row, kNoPlace if it is not shown; made when first asked for
    using Ranks = std::unordered_map<std::string, double>;
    std::shared_ptr<const Ranks> ranks_ = std::make_shared<Ranks>(); ///< of the texts that were sorted last
};

} // namespace quobrix
