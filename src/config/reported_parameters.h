#pragma once

#include "model/parameters.h"
#include "tables/table.h"

#include <array>
#include <cstddef>
#include <string>

namespace quobrix {

class TTripLogTable;

/// What the vehicle last driven with a logger does not report, as far as its trips tell: a parameter for which the
/// newest three of them that asked for it have no value. Read trip by trip, as DrivingHistory is.
class ReportedParameters {
public:
    static constexpr std::size_t kTripsPerParameter = 3;
    /// Trips of the vehicle that are looked at; what was asked longer ago is not known.
    static constexpr std::size_t kMostTrips = 200;

    /// SERIAL_TEXT: the logger's.
    explicit ReportedParameters(std::string serialText) : serialText_(std::move(serialText)) {}

    /// Looks at the next trip of TRIPS, newest first; false if there was none any more.
    bool readNext(const TTripLogTable& trips);

    /// Some trips have asked for PARAMETER (1 to 24), and none of the newest of them has a value.
    bool isUnsupported(std::int32_t parameter) const;

private:
    struct Evidence {
        std::size_t trips = 0; ///< that have asked
        bool reported = false;
    };

    const std::string serialText_;
    std::string vin_; ///< empty: of the logger no trip with a known vehicle was found yet
    std::size_t seen_ = 0;
    RowIndex read_ = 0; ///< rows, from the end
    std::array<Evidence, kParameterCount + 1> evidence_{};
};

} // namespace quobrix
