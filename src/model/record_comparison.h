#pragma once

#include "model/logs.h"
#include "tables/table.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace quobrix {

/// How a record, of the logger or of another document, and a row of its log compare. Both may be parts of one whole:
/// what the one holds is then the beginning, or a part, of what the other holds.
struct Comparison {
    bool differs = false; ///< they contradict each other
    bool recordHasMore = false, rowHasMore = false;
    std::uint64_t common = 0; ///< how much they hold in common; of two rows the closer one has more

    /// One of them is the whole of the other, or they are equal.
    bool same() const { return !differs && !(recordHasMore && rowHasMore); }
    bool equal() const { return !differs && !recordHasMore && !rowHasMore; }
    /// The record can take the row's place, and nothing is lost.
    bool fuller() const { return same() && recordHasMore; }

    void require(bool agrees) { differs = differs || !agrees; }
    /// A vehicle that does not tell its VIN, or something else instead, may be any.
    void vin(std::string_view row, std::string_view record);
    /// What only grows while recording goes on.
    void growing(std::uint64_t row, std::uint64_t record);
    /// What both hold must be the same, but for the last bit in which computers may differ.
    void figure(double row, double record);
    void code(std::int32_t row, std::int32_t record);
    /// The shorter one must be the beginning of the longer one.
    template <class T>
    void sequence(const std::vector<T>& row, const std::vector<T>& record) {
        const auto length = static_cast<std::ptrdiff_t>(std::min(row.size(), record.size()));
        require(std::equal(row.begin(), row.begin() + length, record.begin()));
        growing(row.size(), record.size());
    }
};

/// Leaves of every record of LOG that stands in several of PARTS one row: the fullest, of equal ones the first. A
/// record is known again by its logger, its time as recorded, its code or event and by what it holds, as by a download:
/// of two that are the same one continues the other, and whatever differs stays. Rows of one table are records of their
/// own. Loads the lists of records that may be the same.
void dropRepeated(const LogSpec& log, std::span<TableRows> parts);

} // namespace quobrix
