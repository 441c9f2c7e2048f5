#include "report/typeset.h"

#include "base/utf8.h"
#include "texts/text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <span>

namespace quobrix {
namespace {

// In sizes of the body's font.
constexpr double kColumnGap = 1.6;
constexpr double kTightColumnGap = 1; // where that makes columns fit
constexpr double kNarrowestTextColumn = 10;

constexpr double kHair = 0.01; // what nobody sees, in units of the drawing
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
constexpr double kMostOfPage = 0.65;

// Headings come back on every page of their section or table, so they must leave room for it.
constexpr std::size_t kMostHeadingLines = 4;

using Cells = SetRows::Cells;
using Lines = SetRows::Lines;

std::size_t mostLinesOf(const Lines& lines) {
    std::size_t most = 0;
    for (const std::vector<std::string>& cell : lines)
        most = std::max(most, cell.size());
    return most;
}

/// How wide the columns of a table are, and how wide the widest text of each is.
struct ColumnWidths {
    std::vector<double> widths, texts;
    double gap; ///< between columns

    /// The width of all side by side.
    double together() const {
        return std::accumulate(widths.begin(), widths.end(), gap * (static_cast<double>(widths.size()) - 1));
    }
};

/// Makes strips of the blocks of a report.
class Typesetter {
public:
    Typesetter(const Report& report, Size room, const TextMeasure& measure)
        : room_(room), measure_(measure), em_(measure.fontSize()) {
        addLines({{report.title, 0, room_.width, false, FontRole::Title}}, 0);
        titleStrips_ = galley_.strips.size();
        for (const Section& section : sections(report)) {
            if (section.heading)
                begin(*section.heading, section.blocks.empty());
            set(section.blocks);
        }
    }

    Galley galley() { return std::move(galley_); }

private:
    Typesetter(std::span<const Block> blocks, Size room, const TextMeasure& measure)
        : room_(room), measure_(measure), em_(measure.fontSize()) {
        set(blocks);
    }

    void set(std::span<const Block> blocks) {
        for (; !blocks.empty(); blocks = blocks.subspan(1)) {
            below_ = blocks.subspan(1);
            std::visit([this](const auto& what) { set(what); }, blocks.front());
        }
    }

    /// The height of all strips one below the other, under their headings.
    double height() const {
        double height = 0;
        for (const SetStrip& strip : galley_.strips)
            height += strip.gap + strip.height;
        for (const Strip& head : galley_.tableHeads)
            height += head.height;
        return height;
    }

    /// The room for a strip below any headings.
    double roomBelowHeadings() const {
        const auto most = [&](FontRole font) { return kMostHeadingLines * measure_.lineHeight(font); };
        return room_.height - most(FontRole::Heading) - most(FontRole::Body) - 2 * em_;
    }

    /// Takes GAP, or the larger one that is due, above STRIP.
    SetStrip& add(SetStrip strip, double gap, std::size_t tableHead = 0) {
        strip.section = galley_.headings.size();
        strip.tableHead = tableHead;
        strip.gap = std::max(gap, gap_);
        gap_ = 0;
        return galley_.strips.emplace_back(strip);
    }

    const SetRows& keep(SetRows rows) {
        return *galley_.rows.emplace_back(std::make_unique<const SetRows>(std::move(rows)));
    }

    /// The strips of a row of LINES.
    void addRow(const SetRows& rows, std::size_t row, std::size_t lines, double lineHeight, double gap,
                std::size_t tableHead = 0) {
        for (std::size_t line = 0; line < lines; line += rows.mostLines()) {
            SetStrip strip{static_cast<double>(std::min(rows.mostLines(), lines - line)) * lineHeight, &rows, row,
                           line};
            add(strip, gap, tableHead);
            gap = 0;
        }
    }

    /// CELLS, line by line wherever pages end. From line FIRST on.
    void addLines(Cells cells, double gap, std::size_t tableHead = 0, std::size_t first = 0) {
        const double height = measure_.lineHeight(cells.front().font);
        const SetRows& rows = keep(SetRows(measure_, 1, [cells = std::move(cells)](std::size_t) { return cells; }));
        const std::size_t count = rows.lineCount(0);
        for (std::size_t line = first; line < count; ++line) {
            add({height, &rows, 0, line}, gap, tableHead);
            gap = 0;
        }
    }

    /// The most lines of a row that stays together: a higher one would leave a page empty.
    std::size_t mostRowLines() const {
        const double most = kHighestRow * roomBelowHeadings() / measure_.lineHeight(FontRole::Body);
        return std::isfinite(most) ? static_cast<std::size_t>(std::max(1.0, std::floor(most))) : SIZE_MAX;
    }

    /// A row of headings. What is too long for one is shortened where it comes back, and goes on below it the first
    /// time.
    Strip head(const Cells& cells, double padding, bool shortened = true) const {
        Lines lines = SetRows::broken(cells, measure_);
        for (std::size_t i = 0; i < cells.size(); ++i)
            if (shortened && lines[i].size() > kMostHeadingLines) {
                lines[i].resize(kMostHeadingLines);
                lines[i].back() = elided(lines[i].back() + " \u2026", cells[i].font, cells[i].width, measure_);
            }
        Strip strip = SetRows::set(cells, lines, 0, kMostHeadingLines, measure_);
        if (shortened || mostLinesOf(lines) <= kMostHeadingLines)
            strip.height += padding;
        return strip;
    }

    void begin(const Heading& heading, bool empty) {
        const auto cells = [&](std::string text) {
            return Cells{{std::move(text), 0, room_.width, false, FontRole::Heading}};
        };
        const double padding = kHeadingPadding * em_;
        galley_.headings.push_back({head(cells(heading.text), padding, false),
                                    head(cells(text(TextId::HeadingContinued, heading.text)), padding)});
        gap_ = kSectionGap * em_;
        const std::size_t before = galley_.strips.size();
        addLines(cells(heading.text), 0, 0, kMostHeadingLines);
        if (galley_.strips.size() > before)
            galley_.strips.back().height += padding;
        else if (empty)
            add({}, 0);
    }

    void set(const Heading&) {} // sections() has taken them out

    void set(const Paragraph& paragraph) { addLines({{paragraph.text, 0, room_.width}}, kBlockGap * em_); }

    void set(const Facts& facts) {
        double labels = 0;
        for (const Facts::Fact& fact : facts.facts)
            labels = std::max(labels, measure_.width(fact.label, FontRole::Body));
        labels = std::min(labels, kWidestLabel * room_.width);
        const double left = labels + kColumnGap * em_;
        const SetRows& rows =
            keep(SetRows(measure_, mostRowLines(), [&facts, labels, left, width = room_.width](std::size_t row) {
                return Cells{
                    {facts.facts[row].label, 0, labels, false, FontRole::Body, ColourRole::SecondaryText},
                    {facts.facts[row].text, left, width - left},
                };
            }));
        double gap = kBlockGap * em_;
        for (std::size_t row = 0; row < facts.facts.size(); ++row) {
            addRow(rows, row, rows.lineCount(row), measure_.lineHeight(FontRole::Body), gap);
            gap = kRowPadding * em_;
        }
    }

    /// A picture may take all of a page. The one that a report begins with leaves room for the title, and for what it
    /// stands above where that leaves it most of the page.
    void set(const Picture& picture) {
        double height = room_.height;
        if (!galley_.headings.empty())
            height -= std::max(galley_.headings.back().first.height, galley_.headings.back().continued.height);
        else if (galley_.strips.size() == titleStrips_) {
            const double below = Typesetter(below_, room_, measure_).height();
            height -= this->height() + kBlockGap * em_;
            if (height - below >= kMostOfPage * room_.height)
                height -= below;
        }
        const Size given{room_.width, std::floor(height - kHair)};
        const Drawing& drawing =
            *galley_.drawings.emplace_back(std::make_unique<const Drawing>(picture.draw(given, measure_)));
        if (drawing.size.width > given.width + kHair || drawing.size.height > given.height + kHair)
            galley_.crowded = true;
        add({drawing.size.height, nullptr, 0, 0, &drawing}, kBlockGap * em_);
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

    /// Where columns do not fit side by side headings are broken between words, then texts.
    ColumnWidths columnWidths(const Grid& grid) const {
        const std::size_t count = grid.columns.size();
        std::vector<double> texts, headings, words;
        for (std::size_t i = 0; i < count; ++i) {
            double width = 0;
            for (const std::vector<std::string>& row : grid.rows)
                width = std::max(width, measure_.width(oneLine(row[i]), FontRole::Body));
            if (i + 1 == count && !grid.shares.empty())
                width += (kShareTrack + kShareGap) * em_;
            texts.push_back(width);
            headings.push_back(measure_.width(grid.columns[i].heading, FontRole::Body));
            words.push_back(widestWord(grid.columns[i].heading));
        }
        const auto wider = [&](const std::vector<double>& a, const std::vector<double>& b) {
            std::vector<double> result(count);
            std::ranges::transform(a, b, result.begin(), [](double x, double y) { return std::max(x, y); });
            return result;
        };
        for (const std::vector<double>& heads : {headings, words})
            if (ColumnWidths all{wider(texts, heads), texts, kColumnGap * em_}; all.together() <= room_.width)
                return all;
        if (ColumnWidths close{wider(texts, words), texts, kTightColumnGap * em_}; narrow(grid, words, close))
            return close;
        ColumnWidths bands{wider(texts, words), texts, kColumnGap * em_};
        for (std::size_t i = 0; i < count; ++i) {
            if (!grid.columns[i].figures)
                bands.widths[i] = std::max(std::min(texts[i], kWidestTextColumn * room_.width), words[i]);
            // Two fit side by side, whatever they are.
            bands.widths[i] = std::min(bands.widths[i], (room_.width - bands.gap) / 2);
        }
        return bands;
    }

    /// Makes the widest columns of texts narrower until all COLUMNS fit side by side; false if they would get too
    /// narrow to be read. None gets narrower than the words of its heading.
    bool narrow(const Grid& grid, const std::vector<double>& words, ColumnWidths& columns) const {
        for (;;) {
            const double excess = columns.together() - room_.width;
            if (excess < kHair)
                return true;
            std::vector<std::size_t> widest;
            double width = 0, next = 0; // of those, and of the next narrower ones
            for (std::size_t i = 0; i < columns.widths.size(); ++i) {
                const double least = std::max(words[i], kNarrowestTextColumn * em_);
                if (grid.columns[i].figures || i == 0 || columns.widths[i] <= least)
                    continue;
                if (columns.widths[i] > width) {
                    next = width;
                    width = columns.widths[i];
                    widest.clear();
                } else if (columns.widths[i] < width) {
                    next = std::max(next, columns.widths[i]);
                }
                if (columns.widths[i] == width)
                    widest.push_back(i);
            }
            if (widest.empty())
                return false;
            const double target = std::max(next, width - excess / static_cast<double>(widest.size()));
            for (const std::size_t i : widest)
                columns.widths[i] = std::max({target, words[i], kNarrowestTextColumn * em_});
        }
    }

    void set(const Grid& grid) {
        if (grid.columns.empty())
            return;
        const ColumnWidths columns = columnWidths(grid);
        std::size_t column = 1;
        bool first = true;
        do { // a band of columns, with the first one before the others
            std::vector<std::size_t> band{0};
            double used = columns.widths[0];
            for (; column < columns.widths.size(); ++column) {
                const double more = columns.gap + columns.widths[column];
                if (used + more > room_.width && band.size() > 1)
                    break;
                used += more;
                band.push_back(column);
            }
            setBand(grid, columns, band, used, !first);
            first = false;
        } while (column < columns.widths.size());
    }

    void setBand(const Grid& grid, const ColumnWidths& columns, const std::vector<std::size_t>& band, double width,
                 bool newPage) {
        Cells places;
        double left = 0;
        bool oneLineEach = true;
        for (const std::size_t i : band) {
            places.push_back({{}, left, columns.widths[i], grid.columns[i].figures});
            left += columns.widths[i] + columns.gap;
            oneLineEach = oneLineEach && columns.texts[i] <= columns.widths[i];
        }
        const std::size_t begin = galley_.strips.size();
        const std::size_t tableHead = addTableHead(grid, band, places, width);
        std::function<std::vector<DrawingCommand>(std::size_t)> bars;
        if (!grid.shares.empty() && band.back() + 1 == grid.columns.size())
            bars = [&grid, &measure = measure_, left = width - columns.widths.back(),
                    track = kShareTrack * em_](std::size_t row) {
                std::vector<DrawingCommand> commands;
                for (DrawingCommand& command : drawShare(grid.rows[row][0], grid.shares[row], track, measure).commands)
                    commands.push_back(moved(std::move(command), {left, 0}));
                return commands;
            };
        const SetRows& rows = keep(SetRows(
            measure_, mostRowLines(),
            [&grid, band, places](std::size_t row) {
                Cells cells = places;
                for (std::size_t i = 0; i < cells.size(); ++i)
                    cells[i].text = oneLine(grid.rows[row][band[i]]);
                return cells;
            },
            std::move(bars)));
        double gap = galley_.strips.size() > begin ? 0 : kBlockGap * em_;
        if (grid.rows.empty())
            add({}, gap, tableHead);
        for (std::size_t row = 0; row < grid.rows.size(); ++row) {
            addRow(rows, row, oneLineEach ? 1 : rows.lineCount(row), measure_.lineHeight(FontRole::Body), gap,
                   tableHead);
            galley_.strips.back().height += kRowPadding * em_;
            gap = 0;
        }
        galley_.strips[begin].newPage = newPage;
    }

    /// The headings of BAND in PLACES; their number. What is too long for them stands below them once.
    std::size_t addTableHead(const Grid& grid, const std::vector<std::size_t>& band, const Cells& places,
                             double width) {
        Cells cells = places;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            cells[i].text = grid.columns[band[i]].heading;
            cells[i].colour = ColourRole::SecondaryText;
        }
        const double padding = kRowPadding * em_;
        Strip top = head(cells, 2 * padding);
        top.commands.push_back(Line{{0, top.height - padding}, {width, top.height - padding}, {ColourRole::Rule, 0.5}});
        galley_.tableHeads.push_back(std::move(top));
        const std::size_t number = galley_.tableHeads.size();
        std::erase_if(cells, [&](const SetCell& cell) {
            return wrapped(cell.text, cell.font, cell.width, measure_).size() <= kMostHeadingLines;
        });
        if (!cells.empty())
            addLines(std::move(cells), kBlockGap * em_, number, kMostHeadingLines - 1);
        return number;
    }

    Size room_;
    const TextMeasure& measure_;
    double em_;
    double gap_ = 0; ///< above what comes next, if it is more than its own
    std::size_t titleStrips_ = 0;
    std::span<const Block> below_{}; ///< what is being set, in its section
    Galley galley_;
};

} // namespace

SetRows::Lines SetRows::broken(const Cells& cells, const TextMeasure& measure) {
    Lines lines;
    for (const SetCell& cell : cells)
        lines.push_back(wrapped(cell.text, cell.font, cell.width, measure));
    return lines;
}

Strip SetRows::set(const Cells& cells, const Lines& lines, std::size_t first, std::size_t last,
                   const TextMeasure& measure) {
    Strip strip;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const SetCell& cell = cells[i];
        double top = 0;
        for (std::size_t line = first; line < std::min(last, lines[i].size()); ++line) {
            if (!lines[i][line].empty())
                strip.commands.push_back(
                    Text{{cell.left + (cell.figure ? cell.width : 0), top + measure.ascent(cell.font)},
                         lines[i][line],
                         cell.figure ? Anchor::End : Anchor::Start,
                         cell.font,
                         cell.colour});
            top += measure.lineHeight(cell.font);
        }
        strip.height = std::max(strip.height, top);
    }
    return strip;
}

void SetRows::take(std::size_t row) const {
    if (row_ == row)
        return;
    cells_ = cellsOf_(row);
    lines_ = broken(cells_, measure_);
    row_ = row;
}

std::size_t SetRows::lineCount(std::size_t row) const {
    take(row);
    return mostLinesOf(lines_);
}

Strip SetRows::strip(std::size_t row, std::size_t first) const {
    take(row);
    Strip strip = set(cells_, lines_, first, first + mostLines_, measure_);
    if (beside_ && first == 0)
        std::ranges::move(beside_(row), std::back_inserter(strip.commands));
    return strip;
}

std::vector<DrawingCommand> SetStrip::commands() const {
    if (drawing)
        return drawing->commands;
    return rows ? rows->strip(row, line).commands : std::vector<DrawingCommand>();
}

Galley typeset(const Report& report, Size room, const TextMeasure& measure) {
    return Typesetter(report, room, measure).galley();
}

} // namespace quobrix
