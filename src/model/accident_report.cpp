#include "model/accident_report.h"

#include "model/sample_columns.h"
#include "model/speed_bands.h"
#include "model/trip_log.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/fine_text.h"
#include "units/unit_system.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace quobrix {
namespace {

/// How long before the last of COUNT samples each of them was taken, INTERVAL (s) apart.
SampleTimes timesUntilStandstill(std::size_t count, std::uint32_t interval) {
    std::vector<std::int64_t> times;
    for (std::size_t after = count; after-- > 0;)
        times.push_back(static_cast<std::int64_t>(after) * interval);
    return std::make_shared<const std::vector<std::int64_t>>(std::move(times));
}

} // namespace

StopFigures stopFigures(std::span<const std::uint8_t> speeds, std::uint32_t interval) {
    if (speeds.size() < 2)
        return {};
    const double step = interval;
    StopFigures figures{step * static_cast<double>(speeds.size() - 1), 0, 0};
    for (std::size_t i = 1; i < speeds.size(); ++i) {
        const double before = toBaseFrom(UnitId::KilometrePerHour, speeds[i - 1]);
        const double after = toBaseFrom(UnitId::KilometrePerHour, speeds[i]);
        figures.distance += (before + after) / 2 * step;
        figures.largestDeceleration = std::max(figures.largestDeceleration, (before - after) / step);
    }
    const auto fastest = speeds.rend() - std::ranges::max_element(speeds.rbegin(), speeds.rend()) - 1;
    const auto standstill = std::find(speeds.begin() + fastest, speeds.end(), 0) - speeds.begin();
    if (fastest < standstill && standstill < std::ssize(speeds))
        figures.meanDeceleration = toBaseFrom(UnitId::KilometrePerHour, speeds[static_cast<std::size_t>(fastest)]) /
                                   (step * static_cast<double>(standstill - fastest));
    return figures;
}

std::vector<Block> stopSections(const TAccidentLogTable& stops, RowIndex row, const TextContext& context) {
    std::vector<Block> blocks;
    if (const auto* samples = stops.column<TAccidentLogSpeedSamplesColumn>().object(row)) {
        const StopFigures figures = stopFigures(samples->values(), samples->interval());
        const auto figure = [&](UnitTypeId unit, double value) {
            return hasValue(value) ? context.units.formatValueWithUnits(unit, value) : std::string();
        };
        blocks.push_back(Heading{text(TextId::SectionBraking)});
        blocks.push_back(Facts{
            {{text(TextId::FactDuration),
              hasValue(figures.duration) ? durationText(static_cast<std::int64_t>(figures.duration)) : std::string()},
             {text(TextId::FactDistance), lengthText(context.units, UnitTypeId::Distance, figures.distance)},
             {text(TextId::FactLargestDeceleration), figure(UnitTypeId::Acceleration, figures.largestDeceleration)},
             {text(TextId::FactMeanDeceleration), figure(UnitTypeId::Acceleration, figures.meanDeceleration)}}});
    }
    if (const auto* bands = stops.column<TAccidentLogSpeedBandsTableColumn>().object(row);
        bands && bands->rowCount() > 0) {
        const auto& from = bands->column<TAccidentLogSpeedBandFromColumn>();
        const auto& to = bands->column<TAccidentLogSpeedBandToColumn>();
        Grid grid{{{text(TextId::HeadingSpeedBand), false}, {plainHeading(from.spec())}, {plainHeading(to.spec())}},
                  {}};
        for (RowIndex band = 0; band < bands->rowCount(); ++band) {
            grid.rows.push_back(
                {speedBandLabel(from, to, band, context), from.text(band, context), to.text(band, context)});
            grid.marks.push_back({.band = band});
        }
        blocks.push_back(Heading{text(TextId::SectionSpeedBands)});
        blocks.push_back(std::move(grid));
    }
    return blocks;
}

std::vector<RecordTable> stopTables(const TAccidentLogTable* stops, std::optional<RowIndex> row,
                                    const TextContext& context) {
    RecordTable samples{"TAccidentLogSamplesColumn", SourceText("Samples"),
                        text(SourceText("No samples were recorded of this severe stop."))};
    RecordTable bands{"TAccidentLogSpeedBandsTable", SourceText("Speed Bands"),
                      text(SourceText("No speed bands are known of this severe stop."))};
    if (row) {
        const auto& sampleLists = stops->column<TAccidentLogSpeedSamplesColumn>();
        if (const auto* owned = sampleLists.object(*row)) {
            const SampleTimes times = timesUntilStandstill(owned->values().size(), owned->interval());
            // A table cannot do without headings, which the speeds do not have of their own.
            samples.add(std::make_shared<SampleNumberColumn>(TTripLogSampleRecordColumn::kSpec, times));
            samples.add(std::make_shared<SampleTimeColumn>(TAccidentLogSampleElapsedTimeColumn::kSpec, times));
            samples.columns.push_back({owned, plainHeading(TTripLogSampleSpeedColumn::kSpec)});
        } else if (!sampleLists.replaceable(*row)) {
            samples.emptyText = text(SourceText("The samples of this severe stop cannot be read."));
        }
        const auto& bandTables = stops->column<TAccidentLogSpeedBandsTableColumn>();
        if (const auto* owned = bandTables.object(*row)) {
            const auto& from = owned->column<TAccidentLogSpeedBandFromColumn>();
            const auto& to = owned->column<TAccidentLogSpeedBandToColumn>();
            bands.columns = {{&from}, {&to}};
            bands.rowTitle = [&from, &to, context](RowIndex band) { return speedBandLabel(from, to, band, context); };
        } else if (!bandTables.replaceable(*row)) {
            bands.emptyText = text(SourceText("The speed bands of this severe stop cannot be read."));
        }
    }
    return {std::move(samples), std::move(bands)};
}

} // namespace quobrix
