#include "tables/find_text.h"

#include "base/fold_case.h"

#include <algorithm>
#include <string>
#include <vector>

namespace quobrix {
namespace {

constexpr std::size_t kCellsBetweenStops = 4096;

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }
char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Whether the text of a cell reads the needle.
class Matcher {
public:
    Matcher(std::string_view needle, const FindOptions& options)
        : wholeCell_(options.wholeCell), needle_(options.matchCase ? std::string(needle) : foldCase(needle)) {
        if (!options.matchCase)
            way_ = std::ranges::all_of(needle, isAscii) ? Way::AsciiLetters : Way::AnyLetters;
    }

    bool matches(std::string_view text) {
        if (text.size() < needle_.size() || (wholeCell_ && text.size() != needle_.size())) // folding changes no length
            return false;
        switch (way_) {
        case Way::AsItIs:
            break;
        case Way::AsciiLetters:
            return holdsAnyCase(text);
        case Way::AnyLetters:
            foldCase(text, folded_);
            text = folded_;
        }
        return text.find(needle_) != std::string_view::npos;
    }

private:
    enum class Way { AsItIs, AsciiLetters, AnyLetters };

    /// Folding makes no ASCII letter of any other, so that a needle of them alone is found without folding the text.
    bool holdsAnyCase(std::string_view text) const {
        const char first = needle_.front();
        const std::string_view rest = std::string_view(needle_).substr(1);
        for (std::size_t last = text.size() - needle_.size(), at = 0; at <= last; ++at)
            if (lowerAscii(text[at]) == first &&
                std::equal(rest.begin(), rest.end(), text.data() + at + 1,
                           [](char wanted, char c) { return wanted == lowerAscii(c); }))
                return true;
        return false;
    }

    Way way_ = Way::AsItIs;
    bool wholeCell_;
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
