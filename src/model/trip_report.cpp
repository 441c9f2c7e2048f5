#include "model/trip_report.h"

#include "model/speed_bands.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace quobrix {
namespace {

using Blocks = std::vector<Block>;

/// A first column that names the rows, and figures under HEADINGS.
Grid gridOf(ShownText firstHeading, std::vector<ShownText> headings) {
    Grid grid{{{std::move(firstHeading), false}}, {}};
    for (ShownText& heading : headings)
        grid.columns.push_back({std::move(heading)});
    return grid;
}

/// Hard and extreme events of one kind: how many, from which threshold on, and when.
template <class HardCount, class ExtremeCount, class HardThreshold, class ExtremeThreshold, class HardTimes,
          class ExtremeTimes>
Blocks eventBlocks(const TTripLogTable& trips, RowIndex row, const TextContext& context) {
    const std::string hard = trips.column<HardThreshold>().text(row, context);
    const std::string extreme = trips.column<ExtremeThreshold>().text(row, context);
    ShownText ofHard = plainHeading(HardCount::kSpec), ofExtreme = plainHeading(ExtremeCount::kSpec);
    if (!hard.empty() && !extreme.empty())
        ofHard = text(TextId::EventsBetween, ofHard, hard, extreme);
    if (!extreme.empty())
        ofExtreme = text(TextId::EventsOver, ofExtreme, extreme);
    Blocks blocks{Facts{{{ofHard, trips.column<HardCount>().text(row, context)},
                         {ofExtreme, trips.column<ExtremeCount>().text(row, context)}}}};

    struct Event {
        std::int32_t time;
        ShownText label;
    };
    std::vector<Event> events;
    const auto collect = [&](const auto& lists) {
        if (const TTripLogTimesColumn* times = lists.object(row))
            for (const std::int32_t time : times->values())
                events.push_back({time, plainHeading(lists.spec())});
    };
    collect(trips.column<HardTimes>());
    collect(trips.column<ExtremeTimes>());
    std::stable_sort(events.begin(), events.end(), [](const Event& a, const Event& b) { return a.time < b.time; });
    Grid grid = gridOf(text(TextId::HeadingEvent), {plainHeading(TTripLogTimesColumn::kSpec)});
    for (Event& event : events) {
        grid.rows.push_back({std::move(event.label), durationText(event.time)});
        grid.marks.push_back({.place = event.time});
    }
    if (!events.empty())
        blocks.push_back(std::move(grid));
    return blocks;
}

constexpr SourceText kBandHeading("Time per Speed Band");

Blocks bandBlocks(const TTripLogSpeedBandsTable& bands, const TTripLogTimePerSpeedBandColumn* times,
                  const TextContext& context) {
    if (bands.rowCount() == 0)
        return {};
    const auto& from = bands.column<TTripLogSpeedBandFromColumn>();
    const auto& to = bands.column<TTripLogSpeedBandToColumn>();
    const RowIndex timed = times ? std::min(times->storedRows(), bands.rowCount()) : 0;
    const auto secondsIn = [&](RowIndex band) { return band < timed && times->has(band) ? times->at(band) : 0; };
    double whole = 0;
    for (RowIndex band = 0; band < timed; ++band)
        whole += secondsIn(band);
    Grid grid = gridOf(text(TextId::HeadingSpeedBand), {plainHeading(from.spec()), plainHeading(to.spec()),
                                                        plainHeading(TTripLogTimePerSpeedBandColumn::kSpec)});
    if (whole > 0)
        grid.columns.push_back({text(TextId::HeadingShare)});
    for (RowIndex band = 0; band < bands.rowCount(); ++band) {
        std::vector<std::string>& row = grid.rows.emplace_back();
        row = {speedBandLabel(from, to, band, context), from.text(band, context), to.text(band, context),
               band < timed ? times->text(band, context) : ""};
        grid.marks.push_back({.band = band});
        if (whole > 0) {
            grid.shares.push_back(secondsIn(band) / whole);
            row.push_back(shareText(grid.shares.back()));
        }
    }
    return {std::move(grid)};
}

/// Lowest, mean and highest of the samples that have a value, as a row of the parameter table.
std::vector<std::string> seriesRow(const ParameterSeriesColumn& series, const TextContext& context) {
    double least = HUGE_VAL, greatest = -HUGE_VAL, sum = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < series.sampleCount(); ++i)
        if (const double value = series.base(i); hasValue(value)) {
            least = std::min(least, value);
            greatest = std::max(greatest, value);
            sum += value;
            ++count;
        }
    std::vector<std::string> cells{seriesHeading(series),
                                   context.units.formatValueWithUnits(UnitTypeId::SamplingInterval, series.interval())};
    // Of a series of codes or of paired values there is neither a least nor a mean.
    if (count == 0 || series.twoValues() || series.parameter() == kFuelSystemStatusParameter) {
        cells.resize(5);
        return cells;
    }
    for (const double value : {least, sum / static_cast<double>(count), greatest})
        cells.push_back(context.units.formatValueWithUnits(unitTypeOfParameter(series.parameter()), value));
    return cells;
}

Blocks parameterBlocks(const TTripLogSampleTable& samples, const TextContext& context) {
    Grid grid = gridOf(text(TextId::HeadingParameter),
                       {plainHeading(TTripLogParameterSamplingIntervalColumn::kSpec), text(TextId::HeadingMinimum),
                        text(TextId::HeadingAverage), text(TextId::HeadingMaximum)});
    for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
        if (const ParameterSeriesColumn& series = samples.series(i); series.parameter() != 0)
            grid.rows.push_back(seriesRow(series, context));
    if (grid.rows.empty())
        return {};
    return {std::move(grid)};
}

} // namespace

ShownText seriesHeading(const ParameterSeriesColumn& series) {
    // The logger's list of parameters has no name for this one.
    if (series.parameter() == kFuelSystemStatusParameter)
        return text(TextId::TwoSeriesOf, text(kFuelSystemStatusName), series.name());
    return series.name();
}

std::vector<Block> tripSections(const TTripLogTable& trips, RowIndex row, const TextContext& context) {
    Blocks sections;
    const auto add = [&](ShownText heading, Blocks blocks) {
        if (blocks.empty())
            return;
        sections.push_back(Heading{std::move(heading)});
        std::ranges::move(blocks, std::back_inserter(sections));
    };
    if (const auto* bands = trips.column<TTripLogSpeedBandsTableColumn>().object(row))
        add(text(kBandHeading),
            bandBlocks(*bands, trips.column<TTripLogTimePerSpeedBandColumnColumn>().object(row), context));
    add(text(TextId::SectionBrakes),
        eventBlocks<TTripLogHardBrakesReportColumn, TTripLogPanicBrakesReportColumn, TTripLogHardBrakeThresholdColumn,
                    TTripLogPanicBrakeThresholdColumn, TTripLogHardBrakeTimesColumnColumn,
                    TTripLogPanicBrakeTimesColumnColumn>(trips, row, context));
    add(text(TextId::SectionAccelerations),
        eventBlocks<TTripLogHardAccelerationsReportColumn, TTripLogPanicAccelerationsReportColumn,
                    TTripLogHardAccelerationThresholdColumn, TTripLogPanicAccelerationThresholdColumn,
                    TTripLogHardAccelerationTimesColumnColumn, TTripLogPanicAccelerationTimesColumnColumn>(trips, row,
                                                                                                           context));
    if (const auto* samples = trips.column<TTripLogSampleTableColumn>().object(row))
        add(text(TextId::SectionParameters), parameterBlocks(*samples, context));
    return sections;
}

} // namespace quobrix
