#pragma once

#include "report/report.h"

#include <functional>
#include <memory>
#include <optional>

namespace quobrix {

/// What stays together on a page, from its own top left corner.
struct Strip {
    double height = 0;
    std::vector<DrawingCommand> commands{};
};

/// A text in a row.
struct SetCell {
    std::string text;
    double left = 0, width = 0;
    bool figure = false; ///< on the right
    FontRole font = FontRole::Body;
    ColourRole colour = ColourRole::Text;
};

/// Rows of texts side by side, which are set when a page shows them: a table may have a hundred thousand.
class SetRows {
public:
    using Cells = std::vector<SetCell>;
    using CellsOf = std::function<Cells(std::size_t row)>;
    using Lines = std::vector<std::vector<std::string>>; ///< of each cell

    /// Strips have MOST_LINES each. BESIDE, if given, is what a row has besides its texts.
    SetRows(const TextMeasure& measure, std::size_t mostLines, CellsOf cellsOf,
            std::function<std::vector<DrawingCommand>(std::size_t row)> beside = {})
        : measure_(measure), mostLines_(mostLines), cellsOf_(std::move(cellsOf)), beside_(std::move(beside)) {}

    static Lines broken(const Cells& cells, const TextMeasure& measure);
    /// LINES of CELLS from FIRST up to LAST.
    static Strip set(const Cells& cells, const Lines& lines, std::size_t first, std::size_t last,
                     const TextMeasure& measure);

    std::size_t mostLines() const { return mostLines_; }
    /// How many lines ROW has.
    std::size_t lineCount(std::size_t row) const;
    /// The strip of ROW that begins with its line FIRST.
    Strip strip(std::size_t row, std::size_t first) const;

private:
    void take(std::size_t row) const;

    const TextMeasure& measure_;
    std::size_t mostLines_;
    CellsOf cellsOf_;
    std::function<std::vector<DrawingCommand>(std::size_t row)> beside_;
    // The row that was taken last: one that is split is asked for strip by strip.
    mutable std::optional<std::size_t> row_;
    mutable Cells cells_;
    mutable Lines lines_;
};

/// A strip and what must stand above it on its page. Headings are no strips of their own: so none is ever the last
/// thing on a page.
struct SetStrip {
    double height = 0;
    const SetRows* rows = nullptr; ///< it is one of
    std::size_t row = 0, line = 0;
    const Drawing* drawing = nullptr; ///< it is
    std::size_t section = 0;          ///< whose heading it stands under, from 1; 0: before the first one
    std::size_t tableHead = 0;        ///< which headings of a table, from 1; 0: none
    double gap = 0;                   ///< above it, but at the top of a page
    bool newPage = false;             ///< begins one

    std::vector<DrawingCommand> commands() const;
};

struct SetHeading {
    Strip first, continued; ///< on the page where its section begins, and on later ones
};

/// A report before it is divided into pages.
struct Galley {
    std::vector<SetStrip> strips{};
    std::vector<SetHeading> headings{}; ///< of the sections, from 1
    std::vector<Strip> tableHeads{};    ///< from 1
    std::vector<std::unique_ptr<const SetRows>> rows{};
    std::vector<std::unique_ptr<const Drawing>> drawings{};
    bool crowded = false; ///< a picture is larger than the room that it was given
};

/// Sets REPORT in texts as they are measured; both must live as long as what is returned. No strip is higher than fits
/// into ROOM together with its headings, but a picture that cannot be so small.
Galley typeset(const Report& report, Size room, const TextMeasure& measure);

} // namespace quobrix
