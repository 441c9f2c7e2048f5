#pragma once

#include "plots/plot_layout.h"
#include "report/report.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quobrix {

/// "Trip 7, 11/14/2023 10:13 PM", or what is compared.
ShownText plotTitle(const PlotData& data, const TextContext& context);

/// The value of a curve as it reads; empty where there is none.
std::string valueText(const PlotPanel& panel, double value, const TextContext& context);

/// The sample of CURVE that is read at PLACE: the last one there or before, if that has a value and its record goes on.
std::optional<std::size_t> sampleReadAt(const PlotData& data, const PlotCurve& curve, double place);

/// What a plot tells at one place of its axis, as texts. What a person has hidden is left out here as below, and the
/// rest comes in the order of the panels.
struct PlotReading {
    struct Value {
        std::size_t panel = 0, record = 0;
        ShownText title;  ///< of the panel, with the record's where several are compared
        std::string text; ///< of sampleReadAt(); empty without one
    };
    std::string place; ///< "00:12:30"
    std::string clock; ///< "10:25:50 PM"; empty where the axis has none
    std::vector<Value> values;
    std::optional<std::size_t> band; ///< that the speed is in
    ShownText bandLabel;
    std::optional<std::size_t> event; ///< at that very moment
};
PlotReading readPlot(const PlotData& data, double place, const TextContext& context,
                     std::span<const PanelChoice> choices = {});
/// A reading in one line, for who hears it.
ShownText spokenReading(const PlotData& data, const PlotReading& reading);

/// The nearest place at which the speed (or else the first quantity) of any record was sampled.
double nearestSample(const PlotData& data, double place);
/// The place of the sample behind the one nearest to PLACE, or before it if DIRECTION is negative, as far as there is
/// one.
double sampleBeside(const PlotData& data, double place, int direction);

/// What the raw samples of one curve come to. A curve of states has neither.
struct CurveFigures {
    std::size_t panel = 0, record = 0;
    ShownText title;
    std::size_t count = 0;                                         ///< of samples with a value
    double least = kNoValue, mean = kNoValue, greatest = kNoValue; ///< base units
    std::string leastText, meanText, greatestText;
};
struct RangeFigures {
    PlotRange range;            ///< its ends are on samples
    std::string length;         ///< along the axis
    double distance = kNoValue; ///< m, of the first record; the speed is taken to change evenly between two samples
    std::string distanceText;
    std::vector<CurveFigures> curves; ///< in the order of the panels
};
RangeFigures figuresOf(const PlotData& data, PlotRange range, const TextContext& context,
                       std::span<const PanelChoice> choices = {});

/// What they are figures of: "Shown: 00:00:00 to 00:25:10 (00:25:10, 12.3 Miles)".
ShownText rangeText(const PlotData& data, const RangeFigures& figures, bool selected, const TextContext& context);
/// The figures of each curve that has any.
Grid figuresGrid(const RangeFigures& figures);

/// What each curve of PANEL does in RANGE, a sentence each: its least, mean and greatest value and its trend.
std::vector<ShownText> sentencesOf(const PlotData& data, const PlotPanel& panel, PlotRange range,
                                   const TextContext& context);

} // namespace quobrix
