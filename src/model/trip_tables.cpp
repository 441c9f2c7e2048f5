#include "model/trip_tables.h"

#include "model/trip_report.h"
#include "texts/text.h"

#include <utility>

namespace quobrix {
namespace {

std::vector<RecordTable::Shown> sampleColumns(const TTripLogSampleTable& samples) {
    std::vector<RecordTable::Shown> columns{{&samples.column<TTripLogSampleRecordColumn>()},
                                            {&samples.column<TTripLogSampleElapsedTimeColumn>()},
                                            {&samples.speed()}};
    for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
        if (const ParameterSeriesColumn& series = samples.series(i); series.parameter() != 0)
            columns.push_back({&series, seriesHeading(series)});
    return columns;
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
            samples.columns = sampleColumns(*owned);
        if (const auto* owned = trips->column<TTripLogSpeedBandsTableColumn>().object(*row)) {
            bands.columns = {{&owned->column<TTripLogSpeedBandFromColumn>()},
                             {&owned->column<TTripLogSpeedBandToColumn>()}};
            if (const auto* times = trips->column<TTripLogTimePerSpeedBandColumnColumn>().object(*row))
                bands.columns.push_back({times});
            bands.rowTitle = [owned, context](RowIndex band) { return speedBandLabel(*owned, band, context); };
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
