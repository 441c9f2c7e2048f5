#pragma once

#include "tables/table.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quobrix {

enum class Severity {
    Recommended, ///< a warning
    Required,    ///< an error
};

/// How a cell is marked whose worst finding is of SEVERITY.
ShownText cellMarkText(Severity severity);

/// One broken rule.
struct Finding {
    static constexpr RowIndex kNoRow = ~RowIndex{0};

    Severity severity = Severity::Required;
    ShownText text;
    ObjectId table = kNoObject;
    std::string title{};                ///< of the table ("Vehicle ID")
    const ColumnSpec* column = nullptr; ///< none: the table as a whole
    RowIndex row = kNoRow;              ///< kNoRow: the column or table as a whole
};

/// What VALUE breaks by itself, errors first: missing, not in the list, out of range, too long or too short, or doubted
/// for a reason of the column's own. Uniqueness is a matter of the table: see TableChecker.
std::vector<Finding> checkValue(const Column& column, const Value& value, const TextContext& context);
/// "This value must be unique (case sensitive)." and its likes.
ShownText uniquenessText(Severity severity, Uniqueness uniqueness);
/// What makes two values the same under UNIQUENESS, as one text; empty for no value, which is always unique.
std::string uniquenessKey(const Value& value, Uniqueness uniqueness);

/// Checks the cells of one table. Remembers which values there are how often until their column changes, so that a
/// window can ask for every cell that it paints. Must not outlive the table.
class TableChecker {
public:
    explicit TableChecker(const Table& table) : table_(table) {}

    /// What the cell breaks, errors first; usually nothing.
    std::vector<Finding> cell(std::size_t column, RowIndex row, const TextContext& context);
    /// What all cells and the number of rows break, row by row.
    std::vector<Finding> all(const TextContext& context);

private:
    struct Counts {
        std::uint32_t revision = 0;
        RowIndex rows = 0;
        std::unordered_map<std::string, std::uint32_t> byKey;
    };

    void append(const Column& column, std::size_t index, RowIndex row, const TextContext& context,
                std::vector<Finding>& findings);
    bool isUnique(const Column& column, std::size_t index, const Value& value, Uniqueness uniqueness);
    Finding finding(Severity severity, ShownText text, const ColumnSpec* column = nullptr,
                    RowIndex row = Finding::kNoRow) const;

    const Table& table_;
    std::unordered_map<std::size_t, Counts> counts_; ///< by column and uniqueness
};

} // namespace quobrix
