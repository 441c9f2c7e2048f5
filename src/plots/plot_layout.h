#pragma once

#include "drawing/text_measure.h"
#include "plots/plot_data.h"
#include "plots/plot_options.h"
#include "plots/scales.h"
#include "plots/speed_band_walk.h"
#include "tables/column.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quobrix {

/// What a person has made of a panel; of any record, by the panel's key.
struct PanelChoice {
    std::string key;
    bool hidden = false;
    double height = 1; ///< in proportion to the others
    bool operator==(const PanelChoice&) const = default;
};
/// Whether PANEL is not to be shown by CHOICES.
bool hides(std::span<const PanelChoice> choices, const PlotPanel& panel);
/// The panels of DATA that are shown, from the upper one down.
std::vector<std::size_t> shownPanels(const PlotData& data, std::span<const PanelChoice> choices);

/// What of a plot is shown, and how.
struct PlotView {
    PlotOptions options{};
    std::optional<PlotRange> range{};  ///< none: the whole
    std::vector<PanelChoice> panels{}; ///< in this order; those that are not named follow in their own
    bool named = true;                 ///< it says what it is of
};

/// A place on a scale, and what stands at it.
struct PlotTick {
    double value; ///< in base units, or on the axis
    double at;    ///< row, or x
    std::string label;
};

struct PanelLayout {
    std::size_t panel; ///< of the data
    Box area;          ///< with whole edges
    ValueScale scale;
    double baseline = 0; ///< where areas end: zero, or the edge nearest to it; in base units
    Text title;
    Box grip{}; ///< around the title, by which the panel can be moved
    std::vector<PlotTick> ticks;
    std::vector<BandRows> bands;
    std::vector<Text> bandLabels;  ///< from the lowest band up; they do not touch
    std::optional<double> marksAt; ///< the middle of the row above the area in which events are marked
};

/// Of a record, of a kind of events, or of the speed bands.
struct LegendEntry {
    std::optional<PlotEventKind> event{};
    bool bands = false;
    std::size_t record = 0;
    Point sample{}; ///< the middle of its mark, or of its line
    Text label{};
};

/// Where everything of a plot is, in units of the drawing.
struct PlotLayout {
    Size size;
    double fontSize = 0;
    PlaceScale axis;  ///< of all panels
    double pixel = 1; ///< the width of the columns of pixels that curves are reduced to
    std::vector<Text> headings;
    std::vector<LegendEntry> legend;
    std::vector<PanelLayout> panels;
    std::vector<PlotTick> ticks; ///< of the axis, below the last panel
    double tickBaseline = 0;
    Text axisTitle; ///< may be empty

    PlotRange range() const { return {axis.from, axis.to}; }
    double width() const { return axis.right - axis.left; }
    /// Which of the panels' areas POINT is in.
    std::optional<std::size_t> panelAt(Point point) const;
    /// The panel whose title POINT is at.
    std::optional<std::size_t> titleAt(Point point) const;
    /// Above which of the panels one that is dragged to Y comes to stand; their number: below the last.
    std::size_t placeOfPanel(double y) const;
    /// The panel whose lower border POINT is at, to be drawn up or down.
    std::optional<std::size_t> borderAt(Point point) const;
    /// The place of the axis under X, if that is within the panels.
    std::optional<double> placeAt(double x) const;
    /// The event whose mark is nearest to POINT, if it touches one.
    std::optional<std::size_t> eventAt(const PlotData& data, const PlotOptions& options, Point point) const;
    /// The speed band that POINT is in, where bands are drawn.
    std::optional<std::size_t> bandAt(const PlotData& data, Point point) const;
};

inline constexpr double kPlotMarkSize = 9; ///< of an event's mark

/// Whether events of KIND are drawn.
bool shows(const PlotOptions& options, PlotEventKind kind);

/// Lays DATA out in ROOM, or in more where that is too small for what is shown, though panels that show nothing are
/// then left out, and so is the title of an axis of elapsed times. PIXEL is the width of a pixel of the device, in
/// units of the drawing. The part of the axis is moved by less than half a pixel, so that columns of pixels begin at
/// multiples of their width.
PlotLayout layOutPlot(const PlotData& data, const PlotView& view, const TextContext& context, Size room,
                      const TextMeasure& measure, double pixel = 1);

/// The second that has begun at PLACE (s), within rounding.
std::int64_t wholeSecond(double place);
/// How a place of the axis reads: "00:12:30", or "3.2 Miles".
std::string placeText(const PlotData& data, double place, const TextContext& context);

} // namespace quobrix
