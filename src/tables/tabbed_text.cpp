#include "tables/tabbed_text.h"

#include <algorithm>

namespace quobrix {
namespace {

bool endsCell(char c) { return c == '\t' || c == '\n' || c == '\r'; }

/// Takes cells and what parts them off the front of a text.
class Cells {
public:
    explicit Cells(std::string_view text) : text_(text) {}

    bool atEnd() const { return at_ == text_.size(); }

    std::string take() {
        if (!atEnd() && text_[at_] == '"' && mayBeQuoted_)
            if (std::string quoted; takeQuoted(quoted))
                return quoted;
        const std::size_t begin = at_;
        while (!atEnd() && !endsCell(text_[at_]))
            ++at_;
        return std::string(text_.substr(begin, at_ - begin));
    }
    bool takeTab() {
        const bool tab = !atEnd() && text_[at_] == '\t';
        at_ += tab;
        return tab;
    }
    void takeLineBreak() {
        if (!atEnd() && text_[at_] == '\r')
            ++at_;
        if (!atEnd() && text_[at_] == '\n')
            ++at_;
    }

private:
    /// A cell in quotation marks. A mark that does not close where the cell ends is none: other programs leave such
    /// texts as they are. Only the whole rest of the text without a closing mark is looked through, and only once.
    bool takeQuoted(std::string& cell) {
        for (std::size_t i = at_ + 1; i < text_.size(); ++i) {
            if (text_[i] != '"') {
                cell += text_[i];
            } else if (i + 1 < text_.size() && text_[i + 1] == '"') {
                cell += '"';
                ++i;
            } else if (i + 1 == text_.size() || endsCell(text_[i + 1])) {
                at_ = i + 1;
                return true;
            } else {
                return false;
            }
        }
        mayBeQuoted_ = false;
        return false;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    bool mayBeQuoted_ = true;
};

} // namespace

std::optional<TabbedText> TabbedText::parse(std::string_view text, std::size_t maxRows, std::size_t maxColumns) {
    if (text.empty() || text.size() > kMaxBytes)
        return {};
    Cells cells(text);
    TabbedText block(0);
    std::size_t rows = 0;
    while (!cells.atEnd()) {
        std::size_t columns = 0;
        do {
            if (++columns > maxColumns || block.cells_.size() == kMaxCells)
                return {};
            block.cells_.push_back(cells.take());
        } while (cells.takeTab());
        cells.takeLineBreak();
        if (++rows > maxRows || (rows > 1 && columns != block.columns_))
            return {};
        block.columns_ = columns;
    }
    return block;
}

std::string TabbedText::text() const {
    std::string result;
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        const std::string& cell = cells_[i];
        if (cell.find_first_of("\t\r\n\"") == std::string::npos) {
            result += cell;
        } else {
            result += '"';
            for (const char c : cell) {
                if (c == '"')
                    result += '"';
                result += c;
            }
            result += '"';
        }
        result += (i + 1) % columns_ == 0 ? '\n' : '\t';
    }
    return result;
}

} // namespace quobrix
