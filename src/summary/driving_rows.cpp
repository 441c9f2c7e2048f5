#include "summary/driving_rows.h"

#include "model/parameters.h"
#include "summary/driving_report.h"
#include "tables/columns.h"
#include "tables/declare.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <memory>
#include <optional>
#include <utility>

namespace quobrix {
namespace {

/// Cells that are texts already.
QUOBRIX_COLUMN_CLASS(DrivingColumn, TextColumn, "DrivingColumn", D0, "Statistics", "", Computed)

std::string change(std::optional<double> part) { return part ? std::to_string(wholePercent(*part)) : std::string(); }

} // namespace

DrivingRow drivingHeadings() {
    return {text(TextId::StatisticsOf),
            text(TextId::StatisticsName),
            text(TextId::StatisticsFigure),
            text(TextId::StatisticsValue),
            text(TextId::WithAside, text(TextId::StatisticsChange), "%"),
            text(TextId::StatisticsNumberOfTrips)};
}

std::vector<DrivingRow> drivingRows(const DrivingStatistics& statistics, const TUnitSystem& units) {
    std::vector<DrivingRow> rows;
    const auto add = [&](const ShownText& what, const std::string& name, const DrivingTotals& totals,
                         const DrivingTotals* before) {
        for (const DrivingFigure& figure : drivingFigures())
            if (!figure.leftOut(totals))
                rows.push_back({what, name, figureHeading(figure, units), figureCell(figure, totals, units),
                                change(before ? figureChange(figure, *before, totals, units) : std::nullopt),
                                std::to_string(figure.tripsOf(totals))});
    };
    add(text(TextId::StatisticsAll), {}, statistics.totals, statistics.before ? &*statistics.before : nullptr);
    for (const DrivingMonth& month : statistics.months)
        add(text(TextId::StatisticsMonth), nameOf(month), month.totals, nullptr);
    for (const DrivingGroup& vehicle : statistics.vehicles)
        add(text(TextId::FactVehicle), nameOf(vehicle), vehicle.totals, nullptr);
    for (const DrivingGroup& driver : statistics.drivers)
        add(text(TextId::StatisticsDriver), nameOf(driver), driver.totals, nullptr);
    for (const MonitoredParameter& parameter : statistics.parameters)
        for (const ParameterFigure& figure : parameterFigures())
            rows.push_back(
                {text(TextId::HeadingParameter), parameterChoiceName(parameter.parameter),
                 figure.time ? text(figure.title)
                             : text(TextId::WithAside, text(figure.title),
                                    text(unitRecord(units.unit(unitTypeOfParameter(parameter.parameter))).shownName)),
                 parameterText(figure, parameter, units, true), std::string(), std::to_string(parameter.trips)});
    return rows;
}

ExportContent drivingContent(const DrivingStatistics& statistics, ShownText title, const TUnitSystem& units) {
    const DrivingRow headings = drivingHeadings();
    const std::vector<DrivingRow> rows = drivingRows(statistics, units);
    ExportContent content{.title = std::move(title)};
    ExportRecords& records = content.records.emplace_back();
    for (std::size_t cell = 0; cell < kDrivingCells; ++cell) {
        auto column = std::make_shared<DrivingColumn>();
        std::vector<std::string> texts;
        for (const DrivingRow& row : rows)
            texts.push_back(row[cell]);
        column->setAll(std::move(texts));
        records.columns.push_back({column.get(), headings[cell]});
        content.made.push_back(std::move(column));
    }
    for (RowIndex row = 0; row < rows.size(); ++row)
        records.rows.push_back(row);
    return content;
}

} // namespace quobrix
