#include "tables/find_text.h"

#include "base/fold_case.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

namespace quobrix {
namespace {

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

/// The cells of some rows and columns that follow each other.
struct Block {
    std::size_t firstRow, endRow, firstColumn, endColumn;
};

class Search {
public:
    Search(std::span<const Column* const> columns, std::span<const RowIndex> shown, const TextContext& context,
           std::string_view needle, const FindOptions& options)
        : columns_(columns), shown_(shown), context_(context), backwards_(options.backwards),
          matcher_(needle, options) {}

    /// The first hit in BLOCK, row by row. It looks at the columns one after the other, since that is several times as
    /// fast, for twice as many rows each time, so that a hit nearby is found soon.
    std::optional<CellPlace> in(const Block& block) {
        const std::size_t rows = block.endRow - block.firstRow;
        std::size_t count = 1;
        for (std::size_t done = 0; done < rows; done += count, count *= 2) {
            std::optional<CellPlace> hit;
            std::size_t end = std::min(done + count, rows);
            for (std::size_t i = block.firstColumn; i < block.endColumn; ++i) {
                const std::size_t at = backwards_ ? block.endColumn - 1 - (i - block.firstColumn) : i;
                const Column& column = *columns_[at];
                const RowIndex filled = column.rowCount();          // a damaged one may have fewer rows
                for (std::size_t step = done; step < end; ++step) { // a hit in a further column counts if it is nearer
                    const std::size_t place = backwards_ ? block.endRow - 1 - step : block.firstRow + step;
                    const RowIndex row = shown_[place];
                    if (row < filled && matcher_.matches(column.textView(row, context_, buffer_))) {
                        hit = CellPlace{at, place};
                        end = step;
                    }
                }
            }
            if (hit)
                return hit;
        }
        return {};
    }

private:
    std::span<const Column* const> columns_;
    std::span<const RowIndex> shown_;
    const TextContext& context_;
    bool backwards_;
    Matcher matcher_;
    TextBuffer buffer_;
};

} // namespace

std::optional<CellPlace> findText(std::span<const Column* const> columns, std::span<const RowIndex> shown,
                                  const TextContext& context, std::string_view needle, const FindOptions& options,
                                  std::optional<CellPlace> from) {
    if (needle.empty() || columns.empty())
        return {};
    const std::size_t rows = shown.size();
    const std::size_t width = columns.size();
    Search search(columns, shown, context, needle, options);
    if (rows == 0 || !from)
        return search.in({0, rows, 0, width});
    const auto [column, row] = from->row < rows ? *from : CellPlace{width - 1, rows - 1};
    const Block above{0, row, 0, width};
    const Block below{row + 1, rows, 0, width};
    const std::array<Block, 4> forwards{
        {{row, row + 1, column + 1, width}, below, above, {row, row + 1, 0, column + 1}}};
    const std::array<Block, 4> backwards{{{row, row + 1, 0, column}, above, below, {row, row + 1, column, width}}};
    for (const Block& block : std::span(options.backwards ? backwards : forwards).first(options.wrap ? 4 : 2))
        if (const auto hit = search.in(block))
            return hit;
    return {};
}

std::vector<RowIndex> rowsReading(std::span<const Column* const> columns, std::vector<RowIndex> rows,
                                  const TextContext& context, std::string_view needle) {
    if (needle.empty())
        return rows;
    Matcher matcher(needle, {});
    TextBuffer buffer;
    std::vector<std::uint8_t> hits(rows.size());
    for (const Column* column : columns) {
        const RowIndex filled = column->rowCount(); // a damaged one may have fewer rows
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (!hits[i] && rows[i] < filled)
                hits[i] = matcher.matches(column->textView(rows[i], context, buffer));
    }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (hits[i])
            rows[kept++] = rows[i];
    rows.resize(kept);
    return rows;
}

} // namespace quobrix
