#include "model/monitor_codes.h"
#include "model/readiness.h"

#include "base/no_value.h"

#include <algorithm>
#include <cstdlib>

using namespace quobrix;

/// Any text as a list of monitors, and any bytes as the speeds of a trip: what is read is within its bounds, and no
/// trip has more of anything than time.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto monitors = readMonitors(std::string_view(reinterpret_cast<const char*>(data), size)))
        for (const Monitor& monitor : *monitors)
            for (const std::int64_t need : monitor.needs)
                if (monitor.name.empty() || need < 0 || need > kMostOfANeed)
                    std::abort();
    const DriveSamples samples{.speeds = {data, size}, .interval = 2, .coolant = {20, kNoValue, 90}, .brakes = {3, 40}};
    const auto most = static_cast<std::int64_t>(size) * 2;
    for (const auto& amount : evidenceOf(samples).amounts)
        if (amount && (*amount < 0 || *amount > std::max<std::int64_t>(most, 1)))
            std::abort();
    return 0;
}
