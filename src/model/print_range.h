#pragma once

#include "tables/columns.h"
#include "tables/table.h"

#include <cstdint>
#include <utility>

namespace quobrix {

/// The number of a record of the log that a PrintRangeTable is about.
class PrintRangeColumn : public IntegerColumn {
public:
    Parsed parse(std::string_view text, const TextContext& context) const override;
};

/// Which records of a log are printed: one row, kept nowhere.
class PrintRangeTable final : public Table {
public:
    static constexpr PersistentType kType{"PrintRangeTable"};

    /// All of RECORDS, of which there is one at least.
    explicit PrintRangeTable(std::size_t records);

    const TableSpec& spec() const override;
    std::size_t records() const { return records_; }
    /// The numbers of the first and the last one, in their order.
    std::pair<std::int64_t, std::int64_t> range() const;

private:
    std::size_t records_;
};

} // namespace quobrix
