#pragma once

#include "base/shown_text.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quobrix {

// What a person fills in for a flow of the core: plain values, preset by the flow.

/// On which port the logger is. The person stays in the form while its functions try ports, ask and tell, and it is
/// filled in once one of PORTS has been accepted.
struct SerialPortForm {
    std::vector<std::string> ports;
    std::string port;                                    ///< the current one; a scan may change it
    std::function<bool(const std::string& port)> choose; ///< tries PORT; whether it is accepted
    std::function<ShownText()> scan;                     ///< looks on all ports; what came of it
};

/// How loud a logger's alarm is.
struct AlarmForm {
    std::int32_t volume = 0;  ///< 0 is off
    std::int32_t loudest = 1; ///< 1: it is on or off
};

/// A logger's clock. Times in s since 1970-01-01 00:00 UTC.
struct DateAndTimeForm {
    std::int32_t logger = 0;   ///< what it shows; what it is to show
    std::int32_t computer = 0; ///< what the computer's shows
    bool readOnly = false;
};

/// What is to be done about a logger's clock that differs from the computer's.
struct TimeDifferenceForm {
    std::string difference;   ///< in words
    std::string reason;       ///< what it may be due to, in words
    bool synchronize = false; ///< set the logger's clock after the download
    bool computer = false;    ///< show what was recorded in the computer's time
};

struct KnownVehicle {
    std::string vin;
    std::string name; ///< empty: it has none
};

/// In which vehicle trips were made that told no VIN.
struct UnidentifiedVehicleForm {
    std::string read;                ///< what the vehicle told instead, perhaps nothing
    std::size_t trips = 0;           ///< so many have told that
    std::string firstTrip;           ///< when the first of them began
    std::vector<KnownVehicle> known; ///< to choose from
    std::string vehicle;             ///< the answer: one of these VINs, or what was typed, a VIN or a known name
    bool more = false;               ///< there are trips that told something else
    bool forAll = false;             ///< the answer is that for these, too
};

} // namespace quobrix
