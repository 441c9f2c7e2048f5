#include "plots/plot_data.h"

#include "model/accident_report.h"
#include "model/logs.h"
#include "model/speed_bands.h"
#include "model/trip_report.h"
#include "model/trip_tables.h"
#include "texts/text.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <utility>

namespace quobrix {
namespace {

// States of a fuel system from open loop to closed loop, as they stand in the tables of a trip.
constexpr std::uint8_t kFuelSystemStates[] = {1, 4, 8, 2, 16};

std::vector<double> speedsOf(const SpeedSamplesColumn& column) {
    std::vector<double> speeds(column.values().size());
    for (RowIndex row = 0; row < speeds.size(); ++row)
        speeds[row] = column.speed(row);
    return speeds;
}

/// Files may say anything.
double intervalOf(std::uint32_t seconds) { return std::max(seconds, 1u); }

template <class From, class To, class Bands>
std::vector<PlotBand> bandsOf(const Bands* table, const TextContext& context) {
    std::vector<PlotBand> bands;
    if (!table)
        return bands;
    const auto& from = table->template column<From>();
    const auto& to = table->template column<To>();
    const auto end = [](const RealColumn& column, RowIndex band) {
        return column.has(band) && std::isfinite(column.at(band)) ? std::optional(column.at(band)) : std::nullopt;
    };
    for (RowIndex band = 0; band < table->rowCount(); ++band)
        bands.push_back({end(from, band), end(to, band), speedBandLabel(from, to, band, context)});
    return bands;
}

PlotPanel speedPanel(PlotSamples samples) {
    PlotPanel panel{kSpeedPanel, plainHeading(TTripLogSampleSpeedColumn::kSpec), UnitTypeId::Speed, true};
    panel.curves.push_back({0, std::move(samples)});
    return panel;
}

/// The states of fuel system SYSTEM (0 or 1), those that occur.
PlotPanel statePanel(const ParameterSeriesColumn& series, unsigned system) {
    std::vector<std::string_view> codes(series.sampleCount());
    for (std::size_t i = 0; i < codes.size(); ++i)
        if (series.series().has(i))
            codes[i] = fuelSystemStatusCode(static_cast<std::uint8_t>(series.series().raw(i) >> 8 * system));
    PlotPanel panel{"FuelSystem" + std::to_string(system + 1), seriesHeading(series), UnitTypeId::D0};
    if (series.twoValues())
        panel.title = text(TextId::SideBySide, text(kFuelSystemStatusName), system + 1);
    for (const std::uint8_t state : kFuelSystemStates)
        if (const std::string_view code = fuelSystemStatusCode(state); std::ranges::find(codes, code) != codes.end())
            panel.states.emplace_back(code);
    std::vector<double> values(codes.size(), kNoValue);
    for (std::size_t i = 0; i < codes.size(); ++i)
        if (!codes[i].empty())
            values[i] = static_cast<double>(std::ranges::find(panel.states, codes[i]) - panel.states.begin());
    panel.curves.push_back({0, PlotSamples(0, series.interval(), std::move(values))});
    return panel;
}

void addSeries(std::vector<PlotPanel>& panels, const ParameterSeriesColumn& series) {
    if (series.parameter() == kNoParameter || series.sampleCount() == 0)
        return;
    if (series.parameter() == kFuelSystemStatusParameter) {
        for (unsigned system = 0; system < (series.twoValues() ? 2u : 1u); ++system)
            if (PlotPanel panel = statePanel(series, system); !panel.states.empty())
                panels.push_back(std::move(panel));
        return;
    }
    std::vector<double> values(series.sampleCount());
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = series.base(i);
    const UnitTypeId unit = unitTypeOfParameter(series.parameter());
    PlotPanel panel{"Parameter" + std::to_string(series.parameter()), seriesHeading(series), unit,
                    unit == UnitTypeId::Speed};
    panel.curves.push_back({0, PlotSamples(0, series.interval(), std::move(values))});
    panels.push_back(std::move(panel));
}

/// What follows from the panels: what the axis covers, and that each can be told by its key.
void finish(PlotData& data) {
    std::set<std::string> keys;
    data.finest = HUGE_VAL;
    for (PlotPanel& panel : data.panels) {
        while (!keys.insert(panel.key).second)
            panel.key += '\'';
        for (const PlotCurve& curve : panel.curves) {
            data.whole.to = std::max(data.whole.to, curve.samples.at(curve.samples.size() - 1));
            data.finest = std::min(data.finest, curve.samples.step());
        }
    }
    if (data.panels.empty())
        data.finest = 1;
}

} // namespace

const PlotEventSpec& plotEventSpec(PlotEventKind kind) {
    static constexpr PlotEventSpec kSpecs[kPlotEventKinds] = {
        {TTripLogHardBrakeTimesColumnColumn::kSpec, MarkShape::TriangleDown, ColourRole::StepHigh, true},
        {TTripLogPanicBrakeTimesColumnColumn::kSpec, MarkShape::ArrowDown, ColourRole::StepTop, true},
        {TTripLogHardAccelerationTimesColumnColumn::kSpec, MarkShape::TriangleUp, ColourRole::StepHigh, false},
        {TTripLogPanicAccelerationTimesColumnColumn::kSpec, MarkShape::ArrowUp, ColourRole::StepTop, false},
    };
    return kSpecs[static_cast<std::size_t>(kind)];
}

ShownText plotEventName(PlotEventKind kind) { return plainHeading(plotEventSpec(kind).times); }

std::optional<std::size_t> bandOf(const PlotData& data, double speed) {
    for (std::size_t band = 0; band < data.bands.size(); ++band)
        if (!data.bands[band].to || speed <= *data.bands[band].to)
            return band;
    return {};
}

PlotData tripPlot(const TTripLogTable& trips, RowIndex row, const TextContext& context) {
    PlotData data;
    data.records.push_back(recordTitle(logSpec(LogId::Trips), trips, row, context));
    const auto& start = trips.column<TTripLogStartTimeColumn>();
    if (start.has(row))
        data.clock = start.at(row);
    if (const auto* samples = trips.column<TTripLogSampleTableColumn>().object(row)) {
        if (const SpeedSamplesColumn& speed = samples->speed(); !speed.values().empty())
            data.panels.push_back(speedPanel({0, intervalOf(speed.interval()), speedsOf(speed)}));
        for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
            addSeries(data.panels, samples->series(i));
    }
    if (data.panels.empty())
        data.emptyText = tripTables(&trips, row, context).front().emptyText;
    finish(data);
    data.bands = bandsOf<TTripLogSpeedBandFromColumn, TTripLogSpeedBandToColumn>(
        trips.column<TTripLogSpeedBandsTableColumn>().object(row), context);

    const auto collect = [&](const auto& lists, PlotEventKind kind) {
        if (const TTripLogTimesColumn* times = lists.object(row))
            for (const std::int32_t time : times->values())
                data.events.push_back({kind, static_cast<double>(time)});
    };
    collect(trips.column<TTripLogHardBrakeTimesColumnColumn>(), PlotEventKind::HardBrake);
    collect(trips.column<TTripLogPanicBrakeTimesColumnColumn>(), PlotEventKind::ExtremeBrake);
    collect(trips.column<TTripLogHardAccelerationTimesColumnColumn>(), PlotEventKind::HardAcceleration);
    collect(trips.column<TTripLogPanicAccelerationTimesColumnColumn>(), PlotEventKind::ExtremeAcceleration);
    // What was not sampled up to an event is shown empty, as long as the trip lasted.
    const Value duration = trips.column<TTripLogDurationColumn>().value(row);
    const auto* seconds = std::get_if<std::int64_t>(&duration);
    const double latest = std::max(data.whole.to, seconds ? static_cast<double>(*seconds) : 0);
    std::erase_if(data.events, [&](const PlotEvent& event) { return event.at < 0 || event.at > latest; });
    std::ranges::stable_sort(data.events, {}, &PlotEvent::at);
    if (!data.events.empty())
        data.whole.to = std::max(data.whole.to, data.events.back().at);
    return data;
}

PlotData stopPlot(const TAccidentLogTable& stops, RowIndex row, const TextContext& context) {
    PlotData data;
    data.records.push_back(recordTitle(logSpec(LogId::Accidents), stops, row, context));
    data.axis = PlotAxis::UntilStandstill;
    const auto& start = stops.column<TAccidentLogTableStartTimeColumn>();
    if (start.has(row))
        data.clock = start.at(row);
    data.whole = {-1, 0};
    const auto* speed = stops.column<TAccidentLogSpeedSamplesColumn>().object(row);
    if (speed && !speed->values().empty()) {
        const double step = intervalOf(speed->interval());
        const double first = -step * static_cast<double>(speed->values().size() - 1);
        data.panels.push_back(speedPanel({first, step, speedsOf(*speed)}));
        data.whole.from = std::min(first, -1.0);
    }
    if (data.panels.empty())
        data.emptyText = stopTables(&stops, row, context).front().emptyText;
    finish(data);
    data.bands = bandsOf<TAccidentLogSpeedBandFromColumn, TAccidentLogSpeedBandToColumn>(
        stops.column<TAccidentLogSpeedBandsTableColumn>().object(row), context);
    return data;
}

} // namespace quobrix
