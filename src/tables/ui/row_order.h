#pragma once

#include "tables/column.h"

#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace quobrix {

/// The order in which a list shows the rows of its columns, which stay in their stored order: a place is a row as it is
/// shown, from 0 at the top.
class RowOrder {
public:
    /// ROWS rows in their stored order.
    void reset(RowIndex rows);
    /// The first ROWS rows of COLUMN in the order of their values: figures and dates by base value, texts and
    /// selections as they read in the person's language ("#2" before "#10"). Rows without a value come last either way;
    /// equal rows keep their stored order.
    void sort(const Column& column, RowIndex rows, const TextContext& context, bool downward);

    /// Rows have been inserted: they are shown there in the stored order, else as the last ones.
    void insert(std::span<const RowRun> runs);
    /// Rows have been removed.
    void remove(std::span<const RowRun> runs);
    /// The rows with COUNT places from PLACE on left out; they keep their numbers.
    RowOrder without(std::size_t place, std::size_t count) const;

    /// The rows by place; empty in the stored order.
    std::span<const RowIndex> rows() const { return rows_; }
    RowIndex rowAt(std::size_t place) const { return rows_.empty() ? place : rows_[place]; }
    /// The place of a row that is shown.
    std::size_t placeOf(RowIndex row) const;
    std::size_t size() const { return size_; }

private:
    std::vector<double> textKeys(const Column& column, RowIndex rows, const TextContext& context);

    std::size_t size_ = 0;
    std::vector<RowIndex> rows_;              ///< by place; empty: the stored order
    mutable std::vector<std::size_t> places_; ///< by row; made when first asked for
    using Ranks = std::unordered_map<std::string, double>;
    std::shared_ptr<const Ranks> ranks_ = std::make_shared<Ranks>(); ///< of the texts that were sorted last
};

} // namespace quobrix
