#pragma once

#include "drawing/text_measure.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace quobrix {

// What a report is made of. All texts are UTF-8 in the user's units already: who builds a report says what it tells,
// the renderers only how it looks.

/// Begins a section, which goes on to the next heading.
struct Heading {
    std::string text;
};

/// A record that is told about elsewhere.
struct RecordLink {
    int page = 0; ///< of its log
    std::size_t row = 0;
    bool operator==(const RecordLink&) const = default;
};

/// Values by name: "Distance", "77.4 Miles".
struct Facts {
    struct Fact {
        std::string label, text;
        std::optional<RecordLink> link{}; ///< where the text leads to, on a screen
    };
    std::vector<Fact> facts;
};

/// A part of the plot of the record that is told about.
struct PlotMark {
    std::optional<double> place{};     ///< on its axis, s
    std::optional<std::size_t> band{}; ///< of its speed bands
    bool operator==(const PlotMark&) const = default;
};

/// A table. Every row has as many cells as there are columns; the first cell says what the row is about.
struct Grid {
    struct Column {
        std::string heading;
        bool figures = true; ///< on the right
    };
    std::vector<Column> columns;
    std::vector<std::vector<std::string>> rows;
    /// How a whole divides among the rows: the part of each, 0 to 1. The last cell says it, and beside that it is drawn
    /// as a bar. Empty: there is no such whole.
    std::vector<double> shares{};
    /// Where in the plot what each row tells of is seen; on a screen its first cell leads there. Empty: nowhere.
    std::vector<PlotMark> marks{};
};

/// Any other picture, made for the medium that shows it. Plain text has its description.
struct Picture {
    DrawingMaker draw;
};

/// Text as somebody wrote it; it may have line breaks.
struct Paragraph {
    std::string text;
};

using Block = std::variant<Heading, Facts, Grid, Picture, Paragraph>;

/// What is told about something, to be shown in the window, printed, written to a file or copied.
struct Report {
    std::string title;
    std::vector<Block> blocks;
    bool wide = false; ///< reads better on paper that is wider than high
};

/// The blocks of a report under one heading.
struct Section {
    const Heading* heading = nullptr; ///< none: what stands before the first one
    std::span<const Block> blocks;    ///< without the heading
};
std::vector<Section> sections(const Report& report);

/// SHARE, 0 to 1, as it is read: "40%". What is above nothing is never shown as nothing: "<1%".
std::string shareText(double share);
/// The bar of a SHARE, one line high, of the part that is called LABEL.
Drawing drawShare(const std::string& label, double share, double width, const TextMeasure& measure);

} // namespace quobrix
