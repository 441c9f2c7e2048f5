#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// A rectangular block of cell texts, as it goes through the clipboard: cells are parted by tabs, rows by line breaks,
/// and a cell with tabs, line breaks or a quotation mark in it stands in quotation marks, with its own ones doubled.
class TabbedText {
public:
    /// Larger clipboards are not for a spreadsheet.
    static constexpr std::size_t kMaxBytes = 8'000'000;
    static constexpr std::size_t kMaxCells = 1'000'000;

    explicit TabbedText(std::size_t columns) : columns_(columns) {}
    /// Reads what this or another spreadsheet program wrote, with any kind of line break and one at the end or none.
    /// Nothing if rows differ in length, if it is empty, or larger than the limits or than MAX_ROWS by MAX_COLUMNS.
    static std::optional<TabbedText> parse(std::string_view text, std::size_t maxRows = kMaxCells,
                                           std::size_t maxColumns = kMaxCells);

    std::size_t columns() const { return columns_; }
    std::size_t rows() const { return columns_ == 0 ? 0 : cells_.size() / columns_; }
    const std::string& cell(std::size_t row, std::size_t column) const { return cells_[row * columns_ + column]; }
    /// Cells are added row by row.
    void add(std::string text) { cells_.push_back(std::move(text)); }

    /// Every row ends with a line break.
    std::string text() const;

private:
    std::size_t columns_;
    std::vector<std::string> cells_;
};

} // namespace quobrix
