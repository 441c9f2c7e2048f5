#include "report/typeset.h"

#include "base/utf8.h"
#include "texts/text.h"

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

// In sizes of the body's font.
constexpr double kColumnGap = 1.6;
constexpr double kBlockGap = 0.8;
constexpr double kSectionGap = 1.6;
constexpr double kRowPadding = 0.25;
constexpr double kHeadingPadding = 0.4;
constexpr double kShareTrack = 12;
constexpr double kShareGap = 0.8;

// In parts of the page's width.
constexpr double kWidestLabel = 0.45;
constexpr double kWidestTextColumn = 0.3;

// In parts of its height.
constexpr double kHighestRow = 0.25;

// Headings come back on every page of their section or table, so they must leave room for it.
constexpr std::size_t kMostHeadingLines = 4;

/// A text in a row.
struct Cell {
    std::string text;
    double left = 0, width = 0;
    bool figure = false; ///< on the right
    FontRole font = FontRole::Body;
    ColourRole colour = ColourRole::Text;
};

/// Makes strips of the blocks of a report.
class Typesetter {
public:
    Typesetter(const Report& report, Size room, const TextMeasure& measure)
        : room_(room), measure_(measure), em_(measure.fontSize()) {
        add(split({{report.title, 0, room_.width, false, FontRole::Title}}, 1), 0);
        for (const Section& section : sections(report)) {
            if (section.heading) {
                galley_.headings.push_back({heading(section.heading->text),
                                            heading(quobrix::text(TextId::HeadingContinued, section.heading->text))});
                gap_ = kSectionGap * em_;
                if (section.blocks.empty())
                    add({Strip{}}, 0);
            }
            for (const Block& block : section.blocks)
                std::visit([this](const auto& what) { set(what); }, block);
        }
    }

    Galley galley() { return std::move(galley_); }

private:
    /// The room for a strip below any headings.
    double roomBelowHeadings() const {
        const auto most = [&](FontRole font) { return kMostHeadingLines * measure_.lineHeight(font); };
        return room_.height - most(FontRole::Heading) - most(FontRole::Body) - 2 * em_;
    }

    void add(std::vector<Strip> strips, double gap, std::optional<std::size_t> tableHead = {}) {
        for (Strip& strip : strips) {
            galley_.strips.push_back({std::move(strip), galley_.headings.size(), tableHead, std::max(gap, gap_)});
            gap = gap_ = 0;
        }
    }

    /// The lines of CELLS, side by side, from line FIRST up to line LAST.
    Strip lines(const std::vector<Cell>& cells, const std::vector<std::vector<std::string>>& texts, std::size_t first,
                std::size_t last) const {
        Strip strip;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const Cell& cell = cells[i];
            double top = 0;
            for (std::size_t line = first; line < std::min(last, texts[i].size()); ++line) {
                if (!texts[i][line].empty())
                    strip.commands.push_back(
                        Text{{cell.left + (cell.figure ? cell.width : 0), top + measure_.ascent(cell.font)},
                             texts[i][line],
                             cell.figure ? Anchor::End : Anchor::Start,
                             cell.font,
                             cell.colour});
                top += measure_.lineHeight(cell.font);
            }
            strip.height = std::max(strip.height, top);
        }
        return strip;
    }

    std::vector<std::vector<std::string>> broken(const std::vector<Cell>& cells) const {
        std::vector<std::vector<std::string>> texts;
        for (const Cell& cell : cells)
            texts.push_back(wrapped(cell.text, cell.font, cell.width, measure_));
        return texts;
    }

    /// A row of cells as strips of MOST lines.
    std::vector<Strip> split(const std::vector<Cell>& cells, std::size_t most) const {
        const auto texts = broken(cells);
        std::size_t count = 0;
        for (const std::vector<std::string>& text : texts)
            count = std::max(count, text.size());
        std::vector<Strip> strips;
        for (std::size_t line = 0; line < count; line += most)
            strips.push_back(lines(cells, texts, line, line + most));
        return strips;
    }
    /// A row that stays together, unless it is so high that a page would be left empty for it.
    std::vector<Strip> row(const std::vector<Cell>& cells) const {
        const double most = kHighestRow * roomBelowHeadings() / measure_.lineHeight(FontRole::Body);
        return split(cells, static_cast<std::size_t>(std::max(1.0, std::floor(most))));
    }

    /// A row of headings.
    Strip head(const std::vector<Cell>& cells, double padding) const {
        auto texts = broken(cells);
        for (std::size_t i = 0; i < cells.size(); ++i)
            if (texts[i].size() > kMostHeadingLines) {
                texts[i].resize(kMostHeadingLines);
                texts[i].back() = elided(texts[i].back() + " \u2026", cells[i].font, cells[i].width, measure_);
            }
        Strip strip = lines(cells, texts, 0, kMostHeadingLines);
        strip.height += padding;
        return strip;
    }

    Strip heading(const std::string& text) const {
        return head({{text, 0, room_.width, false, FontRole::Heading}}, kHeadingPadding * em_);
    }

    void set(const Heading&) {} // sections() has taken them out

    void set(const Paragraph& paragraph) { add(split({{paragraph.text, 0, room_.width}}, 1), kBlockGap * em_); }

    void set(const Facts& facts) {
        double labels = 0;
        for (const Facts::Fact& fact : facts.facts)
            labels = std::max(labels, measure_.width(fact.label, FontRole::Body));
        labels = std::min(labels, kWidestLabel * room_.width);
        const double left = labels + kColumnGap * em_;
        double gap = kBlockGap * em_;
        for (const Facts::Fact& fact : facts.facts) {
            add(row({{fact.label, 0, labels, false, FontRole::Body, ColourRole::SecondaryText},
                     {fact.text, left, room_.width - left}}),
                gap);
            gap = kRowPadding * em_;
        }
    }

    void set(const Picture& picture) { addDrawing(picture.draw({room_.width, roomBelowHeadings()}, measure_)); }
    void addDrawing(Drawing drawing) {
        std::vector<Strip> strip;
        strip.push_back({drawing.size.height, std::move(drawing.commands)});
        add(std::move(strip), kBlockGap * em_);
    }

    double widestWord(std::string_view text) const {
        double width = 0;
        while (!text.empty()) {
            const std::size_t end = std::min(text.find(' '), text.size());
            width = std::max(width, measure_.width(text.substr(0, end), FontRole::Body));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return width;
    }

    /// How wide the columns of GRID should be. Where they do not fit side by side headings are broken between words,
    /// then texts.
    std::vector<double> columnWidths(const Grid& grid) const {
        std::vector<double> cells, headings;
        for (std::size_t i = 0; i < grid.columns.size(); ++i) {
            double width = 0;
            for (const std::vector<std::string>& row : grid.rows)
                width = std::max(width, measure_.width(oneLine(row[i]), FontRole::Body));
            if (i + 1 == grid.columns.size() && !grid.shares.empty())
                width += (kShareTrack + kShareGap) * em_;
            cells.push_back(width);
            headings.push_back(measure_.width(grid.columns[i].heading, FontRole::Body));
        }
        std::vector<double> widths(cells.size());
        const auto fits = [&] {
            double all = -kColumnGap * em_;
            for (std::size_t i = 0; i < widths.size(); ++i) {
                widths[i] = std::max(cells[i], headings[i]);
                all += widths[i] + kColumnGap * em_;
            }
            return all <= room_.width;
        };
        if (fits())
            return widths;
        for (std::size_t i = 0; i < headings.size(); ++i)
            headings[i] = widestWord(grid.columns[i].heading);
        if (fits())
            return widths;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (!grid.columns[i].figures)
                cells[i] = std::min(cells[i], kWidestTextColumn * room_.width);
            // Two fit side by side, whatever they are.
            widths[i] = std::min(std::max(cells[i], headings[i]), (room_.width - kColumnGap * em_) / 2);
        }
        return widths;
    }

    void set(const Grid& grid) {
        if (grid.columns.empty())
            return;
        const std::vector<double> widths = columnWidths(grid);
        std::size_t column = 1;
        bool first = true;
        do { // a band of columns, with the first one before the others
            std::vector<std::size_t> band{0};
            double used = widths[0];
            for (; column < widths.size(); ++column) {
                const double more = kColumnGap * em_ + widths[column];
                if (used + more > room_.width && band.size() > 1)
                    break;
                used += more;
                band.push_back(column);
            }
            setBand(grid, widths, band, used, !first);
            first = false;
        } while (column < widths.size());
    }

    void setBand(const Grid& grid, const std::vector<double>& widths, const std::vector<std::size_t>& band,
                 double width, bool newPage) {
        const auto cells = [&](const auto& textOf, ColourRole colour) {
            std::vector<Cell> result;
            double left = 0;
            for (const std::size_t i : band) {
                result.push_back({textOf(i), left, widths[i], grid.columns[i].figures, FontRole::Body, colour});
                left += widths[i] + kColumnGap * em_;
            }
            return result;
        };
        const double padding = kRowPadding * em_;
        Strip top =
            head(cells([&](std::size_t i) { return grid.columns[i].heading; }, ColourRole::SecondaryText), 2 * padding);
        top.commands.push_back(Line{{0, top.height - padding}, {width, top.height - padding}, {ColourRole::Rule, 0.5}});
        galley_.tableHeads.push_back(std::move(top));
        double gap = kBlockGap * em_;
        if (grid.rows.empty())
            add({Strip{}}, gap, galley_.tableHeads.size() - 1);
        for (std::size_t line = 0; line < grid.rows.size(); ++line) {
            const std::vector<std::string>& texts = grid.rows[line];
            std::vector<Strip> strips = row(cells([&](std::size_t i) { return oneLine(texts[i]); }, ColourRole::Text));
            strips.back().height += padding;
            if (!grid.shares.empty() && band.back() + 1 == grid.columns.size()) {
                const Drawing bar = drawShare(texts[0], grid.shares[line], kShareTrack * em_, measure_);
                for (const DrawingCommand& command : bar.commands)
                    strips.front().commands.push_back(moved(command, {width - widths.back(), 0}));
            }
            const std::size_t begin = galley_.strips.size();
            add(std::move(strips), gap, galley_.tableHeads.size() - 1);
            galley_.strips[begin].newPage = newPage;
            newPage = false;
            gap = 0;
        }
    }

    Size room_;
    const TextMeasure& measure_;
    double em_;
    double gap_ = 0; ///< above what comes next, if it is more than its own
    Galley galley_;
};

} // namespace

Galley typeset(const Report& report, Size room, const TextMeasure& measure) {
    return Typesetter(report, room, measure).galley();
}

} // namespace quobrix
