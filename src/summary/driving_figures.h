#pragma once

#include "summary/driving_statistics.h"
#include "texts/source_text.h"
#include "units/unit_catalogue.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quobrix {

class TUnitSystem;

/// How a figure reads.
enum class FigureKind {
    Count,
    Time,     ///< s, as HH:MM:SS
    Quantity, ///< in the user's unit
    Rate,     ///< a metre; shown for 100 miles or kilometres
    Share,    ///< 0 to 1, as percent
    Economy,  ///< m a US gallon; see units/economy.h
    Money,    ///< in whatever money a person counts
    Price,    ///< money a metre; shown for 100 miles or kilometres
};

/// What figures are made of.
enum class FigureSource {
    Trips,
    WatchedTrips, ///< in which events and bands were counted
    KnownFuel,    ///< the trips whose fuel is known
    FuelEntries,  ///< where there are none, nothing is missing
};

/// Fewer trips than that say little about how somebody drives: rates and shares of them are shown with a remark.
inline constexpr std::size_t kFewTrips = 3;

/// A figure of the statistics, one row of driving_figures.def each.
struct DrivingFigure {
    std::string_view key; ///< "hardBrakes"; names it for programs
    SourceText title;     ///< "Hard Brakes"
    FigureKind kind;
    FigureSource source;
    UnitTypeId unit;                                      ///< of quantities
    std::optional<double> (*value)(const DrivingTotals&); ///< nothing where there is nothing to make it of

    /// There is nothing of it, and nobody misses it, as an estimate of what is known for sure: it is not shown.
    bool leftOut(const DrivingTotals& totals) const {
        const bool wanted = totals.trips > 0 && source != FigureSource::FuelEntries &&
                            (source != FigureSource::KnownFuel || totals.filledFuel == 0);
        return !wanted && !value(totals);
    }
    /// Whether it is made of so few trips that whoever shows it says so.
    bool ofFewTrips(const DrivingTotals& totals) const {
        if (source == FigureSource::FuelEntries && kind != FigureKind::Share)
            return false; // one stretch between full tanks is long
        return (kind == FigureKind::Rate || kind == FigureKind::Share || kind == FigureKind::Economy) &&
               tripsOf(totals) < kFewTrips;
    }
    /// How many trips it is made of; of entries all, but for their share, which is that of the estimate.
    std::size_t tripsOf(const DrivingTotals& totals) const {
        return source == FigureSource::WatchedTrips                               ? totals.watchedTrips
               : source == FigureSource::KnownFuel                                ? totals.fuelTrips
               : source == FigureSource::FuelEntries && kind == FigureKind::Share ? totals.comparedTrips
                                                                                  : totals.trips;
    }
};
std::span<const DrivingFigure> drivingFigures();
/// The one with KEY; nothing if there is none.
const DrivingFigure* drivingFigure(std::string_view key);

/// WHAT for 100 miles or kilometres, as rates are shown.
ShownText rateTitle(const ShownText& what, const TUnitSystem& units);
/// "Hard Brakes per 100 Miles": miles where distances are shown in miles or feet, else kilometres.
ShownText figureTitle(const DrivingFigure& figure, const TUnitSystem& units);
/// As the user reads it, with its unit; empty where there is no value.
ShownText figureText(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units);
/// What has to be known beside it: "fewer than three trips"; empty if nothing has, or there is no value.
ShownText figureRemark(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units);
/// The text with the remark: "3% (fewer than three trips)".
ShownText remarkedFigure(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units);
/// Whether any figure has a value: prices can be known without a trip.
bool tellsAnything(const DrivingTotals& totals);
/// VALUE of FIGURE as a number of what it is shown in: the user's unit, events for 100 of them, percent, s.
double shownFigure(const DrivingFigure& figure, double value, const TUnitSystem& units);
/// The same for a table: "Distance (km)" above the figure alone.
ShownText figureHeading(const DrivingFigure& figure, const TUnitSystem& units);
ShownText figureCell(const DrivingFigure& figure, const DrivingTotals& totals, const TUnitSystem& units);
/// The part by which what is shown of it changed, 0.1 being a tenth more; nothing where either value is missing, or the
/// older one is 0 or made of few trips.
std::optional<double> figureChange(const DrivingFigure& figure, const DrivingTotals& before, const DrivingTotals& now,
                                   const TUnitSystem& units);

/// A change of PART in whole percent; beyond a million of them it is the same to everybody.
std::int64_t wholePercent(double part);

} // namespace quobrix
