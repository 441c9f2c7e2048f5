#pragma once

#include "drawing/drawing.h"
#include "model/accident_log.h"
#include "model/trip_log.h"
#include "plots/plot_samples.h"
#include "units/unit_catalogue.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quobrix {

/// What a plot is drawn along.
enum class PlotAxis {
    Elapsed,         ///< s from the start
    UntilStandstill, ///< s, negative, up to 0 at the standstill
    Distance,        ///< m from the start
};

/// A part of the axis.
struct PlotRange {
    double from = 0, to = 1;

    double length() const { return to - from; }
    bool operator==(const PlotRange&) const = default;
};

enum class PlotEventKind { HardBrake, ExtremeBrake, HardAcceleration, ExtremeAcceleration };
inline constexpr std::size_t kPlotEventKinds = 4;

/// How the events of a kind are called and marked: braking points down, accelerating up, and what is extreme has a
/// shaft.
struct PlotEventSpec {
    const ColumnSpec& times; ///< of the column that lists them, whose heading names one
    MarkShape shape;
    ColourRole colour;
    bool braking;
};
const PlotEventSpec& plotEventSpec(PlotEventKind kind);
ShownText plotEventName(PlotEventKind kind);

struct PlotEvent {
    PlotEventKind kind;
    double at; ///< on the axis
    bool operator==(const PlotEvent&) const = default;
};

struct PlotBand {
    std::optional<double> from, to; ///< m/s; none at an open end
    ShownText label;
};

/// The key of the panel of the speed samples.
inline constexpr const char* kSpeedPanel = "Speed";

/// One line of a panel.
struct PlotCurve {
    std::size_t record = 0; ///< which of the compared ones it is of
    PlotSamples samples;
};

/// One quantity over the axis.
struct PlotPanel {
    std::string key; ///< the same for the same quantity of any record: for what is remembered of it
    ShownText title; ///< without its unit
    UnitTypeId unit{};
    bool speed = false;                ///< bands and the common maximum of the vertical axes are for it
    std::vector<std::string> states{}; ///< not empty: values are places in this list, and hold up to the next one
    std::vector<PlotCurve> curves{};
};

/// What a plot of one record or of several shows, with its texts in the units that were current when it was made: made
/// anew when they change.
struct PlotData {
    std::vector<ShownText> records{};    ///< how they are called: one, or those that are compared
    std::optional<std::int32_t> clock{}; ///< at the beginning of the axis, s since 1970 UTC; not of distances
    PlotAxis axis = PlotAxis::Elapsed;
    PlotRange whole{};
    double finest = 1; ///< between the closest samples
    std::vector<PlotPanel> panels{};
    std::vector<PlotEvent> events{}; ///< of the first record, in their order along the axis
    std::vector<PlotBand> bands{};   ///< of the first record, from the lowest upward
    ShownText emptyText{};           ///< said where there are no panels

    bool compares() const { return records.size() > 1; }
};

/// The lowest band that SPEED (m/s) is in.
std::optional<std::size_t> bandOf(const PlotData& data, double speed);

/// The speed first, then each parameter series; of the fuel systems' status one panel a system. Parts of the trip that
/// the document does not have, or that cannot be read, are left out.
PlotData tripPlot(const TTripLogTable& trips, RowIndex row, const TextContext& context);
PlotData stopPlot(const TAccidentLogTable& stops, RowIndex row, const TextContext& context);

} // namespace quobrix
