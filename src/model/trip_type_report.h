#pragma once

#include "model/trip_type_totals.h"
#include "report/report.h"

namespace quobrix {

/// What the trip type report is made of.
struct TripTypeReport {
    std::vector<TableRows> trips{}; ///< as they were chosen, from trip tables
    TimeRange time{};               ///< that they were chosen by
    ShownText period{};             ///< what that is called; may be empty
    std::vector<TripType> types{};
    std::vector<OdometerReading> readings{}; ///< what odometers showed; without any, they are left out
    bool eachTrip = true;                    ///< else only what they come to
};

/// What trips come to by type, month, vehicle and driver, the odometers at both ends of the time, and the trips one by
/// one, as a driver's log. Amounts are sums of those of the trips.
Report tripTypeReport(const TripTypeReport& of, const TextContext& context);

/// An amount as the user reads it, with two decimals.
std::string amountText(std::int64_t hundredths, const TextContext& context);

} // namespace quobrix
