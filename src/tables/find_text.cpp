#include "tables/find_text.h"

#include "base/fold_case.h"

#include <algorithm>
#include <string>
#include <vector>

namespace quobrix {
namespace {

constexpr std::size_t kCellsBetweenStops = 4096;

/// Whether the text of a cell reads the needle.
class Matcher {
public:
    Matcher(std::string_view needle, const FindOptions& options)
        : options_(options), needle_(options.matchCase ? std::string(needle) : foldCase(needle)),
          asItIs_(options.matchCase || std::ranges::none_of(needle, hasCase)) {}

    bool matches(std::string_view text) {
        if (text.size() < needle_.size()) // folding changes no length
            return false;
        if (!asItIs_) {
            if (!mayBegin(text))
                return false;
            foldCase(text, folded_);
            text = folded_;
        }
        return options_.wholeCell ? text == needle_ : text.find(needle_) != std::string_view::npos;
    }

private:
    /// C may be of a letter that has two cases.
    static bool hasCase(char c) {
        return static_cast<unsigned char>(c) >= 0x80 || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    }

    /// TEXT holds the needle's first letter in one of its cases, if that can be told at a glance.
    bool mayBegin(std::string_view text) const {
        const char lower = needle_.front();
        if (static_cast<unsigned char>(lower) >= 0x80)
            return true;
        const char upper = lower >= 'a' && lower <= 'z' ? static_cast<char>(lower - 32) : lower;
        return std::ranges::any_of(text, [=](char c) { return c == lower || c == upper; });
    }

    FindOptions options_;
    std::string needle_;
    bool asItIs_; ///< texts need not be folded to be compared
    std::string folded_;
};

} // namespace

std::optional<CellPlace> findText(std::span<const Column* const> columns, std::span<const RowIndex> order,
                                  const TextContext& context, std::string_view needle, const FindOptions& options,
                                  std::optional<CellPlace> from, const std::function<bool()>& stop) {
    if (needle.empty() || columns.empty())
        return {};
    const std::size_t rows = order.empty() ? columns.front()->rowCount() : order.size();
    const std::size_t cells = rows * columns.size();
    if (cells == 0)
        return {};
    std::vector<RowIndex> filled; // rows of each column: those of a damaged one may be fewer
    for (const Column* column : columns)
        filled.push_back(column->rowCount());
    Matcher matcher(needle, options);
    // Cells are counted row by row, from the one behind FROM in the direction of the search.
    const std::size_t last = cells - 1;
    const std::size_t origin =
        from ? std::min(from->row * columns.size() + from->column, last) : (options.backwards ? 0 : last);
    const std::size_t ahead = options.backwards ? origin : last - origin;
    const std::size_t count = from && !options.wrap ? ahead : cells;
    CellPlace cell{origin % columns.size(), origin / columns.size()};
    const auto advance = [&] {
        if (options.backwards) {
            if (cell.column-- == 0) {
                cell.column = columns.size() - 1;
                cell.row = (cell.row == 0 ? rows : cell.row) - 1;
            }
        } else if (++cell.column == columns.size()) {
            cell.column = 0;
            cell.row = cell.row + 1 == rows ? 0 : cell.row + 1;
        }
    };
    for (std::size_t step = 1; step <= count; ++step) {
        advance();
        const RowIndex row = order.empty() ? cell.row : order[cell.row];
        if (row < filled[cell.column] && matcher.matches(columns[cell.column]->text(row, context)))
            return cell;
        if (stop && step % kCellsBetweenStops == 0 && stop())
            return {};
    }
    return {};
}

} // namespace quobrix
