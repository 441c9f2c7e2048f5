#include "model/trip_report.h"

#include "base/utf8.h"
#include "units/date_time.h"
#include "units/unit_system.h"

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

constexpr auto kGeneralColumns =
    kTypesOf<TTripLogVinColumn, TTripLogVehicleVinColumn, TTripLogDriverIDColumn, TTripLogQuobrixSerialNumberColumn,
             TTripLogStartTimeColumn, TTripLogEndTimeColumn, TTripLogDurationColumn, TTripLogDistanceColumn,
             TTripLogMaximumSpeedColumn, TTripLogAverageSpeedColumn, TTripLogTimeInTopSpeedBandColumn,
             TTripLogSamplingIntervalColumn>;

Report::Section generalSection(const TTripLogTable& trips, RowIndex row, const TextContext& context) {
    Report::Section section{"General", {}, {}, {}};
    for (const PersistentType* type : kGeneralColumns) {
        const Column& column = trips.columnOf(*type);
        section.rows.push_back({plainHeading(column.spec()), column.text(row, context)});
    }
    return section;
}

/// Hard and extreme events of one kind: how many, from which threshold on, and when.
template <class HardCount, class ExtremeCount, class HardThreshold, class ExtremeThreshold, class HardTimes,
          class ExtremeTimes>
Report::Section eventSection(std::string heading, const TTripLogTable& trips, RowIndex row,
                             const TextContext& context) {
    const std::string hard = trips.column<HardThreshold>().text(row, context);
    const std::string extreme = trips.column<ExtremeThreshold>().text(row, context);
    Report::Section section{std::move(heading), {}, {}, {}};
    const std::string between = hard.empty() || extreme.empty() ? "" : " (Between " + hard + " and " + extreme + ")";
    const std::string over = extreme.empty() ? "" : " (Over " + extreme + ")";
    section.rows.push_back({plainHeading(HardCount::kSpec) + between, trips.column<HardCount>().text(row, context)});
    section.rows.push_back({plainHeading(ExtremeCount::kSpec) + over, trips.column<ExtremeCount>().text(row, context)});

    struct Event {
        std::int32_t time;
        std::string label;
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
    if (!events.empty())
        section.grid.headings = {"Event", plainHeading(TTripLogTimesColumn::kSpec)};
    for (Event& event : events)
        section.grid.rows.push_back({std::move(event.label), durationText(event.time)});
    return section;
}

Report::Section bandSection(const TTripLogSpeedBandsTable& bands, const TTripLogTimePerSpeedBandColumn* times,
                            const TextContext& context) {
    const auto& from = bands.column<TTripLogSpeedBandFromColumn>();
    const auto& to = bands.column<TTripLogSpeedBandToColumn>();
    Report::Section section{"Time per Speed Band", {}, {}, {}};
    section.grid.headings = {"Speed Band", plainHeading(from.spec()), plainHeading(to.spec()),
                             plainHeading(TTripLogTimePerSpeedBandColumn::kSpec)};
    const RowIndex timed = times ? std::min(times->storedRows(), bands.rowCount()) : 0;
    double whole = 0;
    for (RowIndex band = 0; band < timed; ++band)
        whole += times->has(band) ? times->at(band) : 0;
    for (RowIndex band = 0; band < bands.rowCount(); ++band) {
        const std::string label = speedBandLabel(bands, band, context);
        const std::string time = band < timed ? times->text(band, context) : "";
        section.grid.rows.push_back({label, from.text(band, context), to.text(band, context), time});
        if (band < timed && times->has(band))
            section.bars.push_back({label, time, whole > 0 ? times->at(band) / whole : 0});
    }
    return section;
}

/// Lowest, highest and mean of the samples that have a value, as a row of the parameter table.
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
    for (const double value : {least, greatest, sum / static_cast<double>(count)})
        cells.push_back(context.units.formatValueWithUnits(unitTypeOfParameter(series.parameter()), value));
    return cells;
}

Report::Section parameterSection(const TTripLogSampleTable& samples, const TextContext& context) {
    Report::Section section{"Parameters", {}, {}, {}};
    for (std::size_t i = 0; i < TTripLogSampleTable::kSeriesCount; ++i)
        if (const ParameterSeriesColumn& series = samples.series(i); series.parameter() != 0)
            section.grid.rows.push_back(seriesRow(series, context));
    if (!section.grid.rows.empty())
        section.grid.headings = {"Parameter", plainHeading(TTripLogParameterSamplingIntervalColumn::kSpec), "Minimum",
                                 "Maximum", "Average"};
    return section;
}

void appendCell(std::string& line, std::string_view cell, std::size_t width, bool right) {
    const std::string text = oneLine(cell);
    const std::string padding(width - std::min(width, characterCount(text)), ' ');
    line += right ? padding : "";
    line += text;
    line += right ? "" : padding;
}

void appendLine(std::string& out, std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    out += line + '\n';
}

void appendGrid(std::string& out, const Report::Grid& grid) {
    std::vector<std::size_t> widths;
    for (const std::string& heading : grid.headings)
        widths.push_back(characterCount(oneLine(heading)));
    for (const auto& row : grid.rows)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], characterCount(oneLine(row[i])));
    const auto append = [&](const std::vector<std::string>& cells) {
        std::string line = "  ";
        for (std::size_t i = 0; i < widths.size(); ++i) {
            line += i == 0 ? "" : "  ";
            appendCell(line, cells[i], widths[i], i != 0);
        }
        appendLine(out, std::move(line));
    };
    append(grid.headings);
    for (const auto& row : grid.rows)
        append(row);
}

} // namespace

std::string tripTitle(const TTripLogTable& trips, RowIndex row, const TextContext& context) {
    return "Trip " + trips.column<TTripLogRecordColumn>().text(row, context);
}

std::string seriesHeading(const ParameterSeriesColumn& series) {
    // The logger's list of parameters has no name for this one, only for its two halves.
    if (series.parameter() == kFuelSystemStatusParameter)
        return "Fuel System Status" + series.name();
    return series.name();
}

std::string speedBandLabel(const TTripLogSpeedBandsTable& bands, RowIndex row, const TextContext& context) {
    const auto& from = bands.column<TTripLogSpeedBandFromColumn>();
    const auto& to = bands.column<TTripLogSpeedBandToColumn>();
    const auto standing = [&](RowIndex band) { return to.has(band) && from.at(band) == 0 && to.at(band) == 0; };
    if (standing(row))
        return "Idle";
    if (!to.has(row))
        return "Over " + from.text(row, context);
    return "Speed Band " + std::to_string(standing(0) ? row : row + 1);
}

Report tripReport(const TTripLogTable& trips, RowIndex row, const TextContext& context) {
    Report report{tripTitle(trips, row, context), {}};
    const auto add = [&](Report::Section section) {
        if (!section.rows.empty() || !section.grid.rows.empty())
            report.sections.push_back(std::move(section));
    };
    add(generalSection(trips, row, context));
    if (const auto* bands = trips.column<TTripLogSpeedBandsTableColumn>().object(row))
        add(bandSection(*bands, trips.column<TTripLogTimePerSpeedBandColumnColumn>().object(row), context));
    add(eventSection<TTripLogHardBrakesReportColumn, TTripLogPanicBrakesReportColumn, TTripLogHardBrakeThresholdColumn,
                     TTripLogPanicBrakeThresholdColumn, TTripLogHardBrakeTimesColumnColumn,
                     TTripLogPanicBrakeTimesColumnColumn>("Brakes", trips, row, context));
    add(eventSection<TTripLogHardAccelerationsReportColumn, TTripLogPanicAccelerationsReportColumn,
                     TTripLogHardAccelerationThresholdColumn, TTripLogPanicAccelerationThresholdColumn,
                     TTripLogHardAccelerationTimesColumnColumn, TTripLogPanicAccelerationTimesColumnColumn>(
        "Accelerations", trips, row, context));
    if (const auto* samples = trips.column<TTripLogSampleTableColumn>().object(row))
        add(parameterSection(*samples, context));
    if (const auto& comments = trips.column<TTripLogCommentsColumn>(); comments.has(row))
        add({plainHeading(comments.spec()), {{"", comments.at(row)}}, {}, {}});
    return report;
}

std::string renderText(const Report& report) {
    std::string out = report.title + '\n';
    for (const Report::Section& section : report.sections) {
        out += '\n' + section.heading + '\n';
        std::size_t width = 0;
        for (const Report::Row& row : section.rows)
            width = std::max(width, characterCount(oneLine(row.label)));
        for (const Report::Row& row : section.rows) {
            std::string line = "  ";
            if (!row.label.empty()) {
                appendCell(line, row.label, width, false);
                line += "  ";
            }
            appendLine(out, line + row.text);
        }
        if (!section.grid.headings.empty())
            appendGrid(out, section.grid);
    }
    return out;
}

} // namespace quobrix
