#pragma once

#include "base/shown_text.h"

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

} // namespace quobrix
