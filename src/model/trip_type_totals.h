#pragma once

#include "model/record_filter.h"
#include "model/trip_types.h"
#include "tables/table.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quobrix {

// What trips come to by what they were made for. Rows are those of trip tables; what a damaged column may hold counts
// for nothing.

/// What a person has read from the odometer of a vehicle.
struct OdometerReading {
    std::string vehicle;   ///< VIN
    std::int64_t time = 0; ///< s since 1970-01-01 00:00 UTC
    double odometer = 0;   ///< m
};

/// What is paid for the trip in ROW, in hundredths of the currency: its distance in miles or kilometers, as the rate
/// says that holds on its local day, times that rate, rounded half up. So sums of trips are sums of what each one
/// shows. Nothing without distance or rate.
std::optional<std::int64_t> amountOf(const Table& trips, RowIndex row, const std::vector<TripType>& types,
                                     const TimeZone& zone);

/// The same of every row of a table of trips, for lists and exports. It belongs to no table; that of the trips outlives
/// it.
class TripAmountColumn final : public DerivedColumn {
public:
    TripAmountColumn(const Table& trips, std::vector<TripType> types, const TimeZone& zone)
        : trips_(trips), types_(std::move(types)), zone_(zone) {}

    const ColumnSpec& spec() const override;
    ColumnKind kind() const override { return ColumnKind::Real; }
    std::size_t storedRows() const override { return trips_.rowCount(); }
    Value value(RowIndex row) const override;
    std::string_view textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const override;

private:
    const Table& trips_;
    const std::vector<TripType> types_;
    const TimeZone& zone_;
};

struct TripTypeTotals {
    std::size_t trips = 0;
    double distance = 0;     ///< m
    std::int64_t time = 0;   ///< s
    std::int64_t amount = 0; ///< hundredths of the currency, of the trips that a rate holds for
    std::size_t paid = 0;    ///< how many these are
    std::size_t unpaid = 0;  ///< of a type that has rates, of which none holds

    void add(const Table& trips, RowIndex row, const std::vector<TripType>& types, const TimeZone& zone);
};
TripTypeTotals tripTypeTotals(std::span<const TableRows> trips, const std::vector<TripType>& types,
                              const TimeZone& zone);

/// The totals of the trips that have something in common.
struct TripTypeGroup {
    std::string name; ///< empty: that they have none
    TripTypeTotals totals;
    std::string key{}; ///< as Column::namedKey() of vehicles and drivers
};
enum class TripTypeGrouping { Type, Month, Vehicle, Driver };
/// Types in the order of TYPES, those that are none of these behind them; months of the local calendar in their order;
/// vehicles and drivers, which have their keys behind names that read the same, with the longest distances first. Those
/// without come last.
std::vector<TripTypeGroup> groupTrips(std::span<const TableRows> trips, TripTypeGrouping by,
                                      const std::vector<TripType>& types, const TextContext& context);

/// Leaves out of ROWS the trips that are not of TYPE, in any case; an empty one is that of trips without.
void keepType(std::vector<RowIndex>& rows, const Table& trips, std::string_view type);
/// The types that there are: names of TYPES, and what trips of TRIPS have besides.
std::vector<std::string> occurringTypes(std::span<const TableRows> trips, const std::vector<TripType>& types);

/// The odometer of VEHICLE at TIME (s since 1970-01-01 00:00 UTC), in m: the last reading by then, and the distances of
/// the TRIPS that started since; where there is none yet, the first reading later, less those. Nothing without
/// readings.
std::optional<double> odometerAt(std::span<const OdometerReading> readings, std::span<const TableRows> trips,
                                 std::string_view vehicle, std::int64_t time);

} // namespace quobrix
