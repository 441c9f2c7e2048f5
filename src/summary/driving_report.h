#pragma once

#include "report/report.h"
#include "summary/driving_figures.h"
#include "tables/column.h"

#include <optional>
#include <span>

namespace quobrix {

/// A figure of a parameter that is compared with a threshold.
struct ParameterFigure {
    std::string_view key; ///< names it for programs
    SourceText title;
    double MonitoredParameter::*value;
    bool time; ///< s; else in the parameter's unit
};
std::span<const ParameterFigure> parameterFigures();
/// As the user reads it, with its unit unless it is a CELL below one; empty where there is no value.
std::string parameterText(const ParameterFigure& figure, const MonitoredParameter& parameter, const TUnitSystem& units,
                          bool cell = false);

/// What a vehicle or driver, or a month, is called.
ShownText nameOf(const DrivingGroup& group);
ShownText nameOf(const DrivingMonth& month);
/// "+12%"; empty where it cannot be said.
ShownText changeText(std::optional<double> change);

/// What STATISTICS of a CHOICE are about: "Last 3 Months", "This Month (so far)".
ShownText drivingTitle(const DrivingStatistics& statistics, const DrivingChoice& choice);
/// The same for paper, which is read elsewhere and later: with the days, and the vehicle and driver of CHOICE.
ShownText drivingTitle(const DrivingStatistics& statistics, const DrivingChoice& choice, const TextContext& context);
/// All of STATISTICS in the user's units.
Report drivingReport(const DrivingStatistics& statistics, ShownText title, const TUnitSystem& units);

} // namespace quobrix
