#include "tables/find_text.h"

#include "base/fold_case.h"

#include <algorithm>
#include <string>

namespace quobrix {
namespace {

constexpr std::size_t kCellsBetweenStops = 4096;

/// Whether the text of a cell reads the needle.
class Matcher {
public:
    Matcher(std::string_view needle, const FindOptions& options)
        : options_(options), needle_(options.matchCase ? std::string(needle) : foldCase(needle)) {}

    bool matches(std::string_view text) {
        if (text.size() < needle_.size() && options_.matchCase)
            return false;
        if (!options_.matchCase) {
            foldCase(text, folded_);
            text = folded_;
        }
        return options_.wholeCell ? text == needle_ : text.find(needle_) != std::string_view::npos;
    }

private:
    FindOptions options_;
    std::string needle_;
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
    Matcher matcher(needle, options);
    // Cells are counted row by row, from the one behind FROM in the direction of the search.
    const std::size_t last = cells - 1;
    const std::size_t origin =
        from ? std::min(from->row * columns.size() + from->column, last) : (options.backwards ? 0 : last);
    const std::size_t ahead = options.backwards ? origin : last - origin;
    const std::size_t count = from && !options.wrap ? ahead : cells;
    for (std::size_t step = 1; step <= count; ++step) {
        const std::size_t place = (options.backwards ? origin + cells - step : origin + step) % cells;
        const CellPlace cell{place % columns.size(), place / columns.size()};
        const RowIndex row = order.empty() ? cell.row : order[cell.row];
        const Column& column = *columns[cell.column];
        if (row < column.rowCount() && matcher.matches(column.text(row, context)))
            return cell;
        if (stop && step % kCellsBetweenStops == 0 && stop())
            return {};
    }
    return {};
}

} // namespace quobrix
