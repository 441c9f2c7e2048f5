#include "model/trip_tables.h"

#include "model/sample_columns.h"
#include "model/speed_bands.h"
#include "model/trip_report.h"
#include "texts/text.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace quobrix {
namespace {

/// When anything was sampled, in order: speed and parameters have intervals of their own.
SampleTimes timesOf(const TTripLogSampleTable& samples) {
    std::vector<std::int64_t> times;
    const auto add = [&](std::int64_t interval, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            times.push_back(static_cast<std::int64_t>(i) * interval);
    };
    add(samples.speed().interval(), samples.speed().values().size());
    for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
        add(samples.series(i).interval(), samples.series(i).sampleCount());
    std::ranges::sort(times);
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return std::make_shared<const std::vector<std::int64_t>>(std::move(times));
}

/// The series side by side, each sample in the row of its own time.
void addSamples(RecordTable& table, const TTripLogSampleTable& samples) {
    const SampleTimes times = timesOf(samples);
    table.add(std::make_shared<SampleNumberColumn>(TTripLogSampleRecordColumn::kSpec, times));
    table.add(std::make_shared<SampleTimeColumn>(TTripLogSampleElapsedTimeColumn::kSpec, times));
    table.add(std::make_shared<SpeedAtTimesColumn>(samples.speed(), times));
    for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
        if (const ParameterSeriesColumn& series = samples.series(i); series.parameter() != 0)
            table.add(std::make_shared<SeriesAtTimesColumn>(series, times), seriesHeading(series));
}

} // namespace

std::vector<RecordTable> tripTables(const TTripLogTable* trips, std::optional<RowIndex> row,
                                    const TextContext& context) {
    RecordTable samples{"TTripLogSampleTable", SourceText("Samples"),
                        text(SourceText("No samples were recorded during this trip."))};
    RecordTable bands{"TTripLogSpeedBandsTable", SourceText("Speed Bands"),
                      text(SourceText("No speed bands are known of this trip."))};
    RecordTable parameters{"TTripLogParametersTable", SourceText("Parameters"),
                           text(SourceText("No parameters were recorded during this trip."))};
    if (row) {
        if (const auto* owned = trips->column<TTripLogSampleTableColumn>().object(*row))
            addSamples(samples, *owned);
        if (const auto* owned = trips->column<TTripLogSpeedBandsTableColumn>().object(*row)) {
            const auto& from = owned->column<TTripLogSpeedBandFromColumn>();
            const auto& to = owned->column<TTripLogSpeedBandToColumn>();
            bands.columns = {{&from}, {&to}};
            if (const auto* times = trips->column<TTripLogTimePerSpeedBandColumnColumn>().object(*row))
                bands.columns.push_back({times});
            bands.rowTitle = [&from, &to, context](RowIndex band) { return speedBandLabel(from, to, band, context); };
        }
        if (const auto* owned = trips->column<TTripLogParametersTableColumn>().object(*row))
            parameters.columns = {{&owned->column<TTripLogParameterColumn>()},
                                  {&owned->column<TTripLogParameterSamplingIntervalColumn>()}};
        const auto explain = [&](RecordTable& table, const Column& cells, SourceText unreadable) {
            if (!cells.replaceable(*row)) // after it has been looked for
                table.emptyText = text(unreadable);
        };
        explain(samples, trips->column<TTripLogSampleTableColumn>(),
                SourceText("The samples of this trip cannot be read."));
        explain(bands, trips->column<TTripLogSpeedBandsTableColumn>(),
                SourceText("The speed bands of this trip cannot be read."));
        explain(parameters, trips->column<TTripLogParametersTableColumn>(),
                SourceText("The parameters of this trip cannot be read."));
    }
    return {std::move(samples), std::move(bands), std::move(parameters)};
}

} // namespace quobrix
