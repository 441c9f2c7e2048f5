#include "model/trip_rules.h"

#include <cstdint>
#include <cstdlib>

using namespace quobrix;

/// Any text as a list of trip types, and as a rule: writing it again loses nothing, and any trip can be asked about.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TripTypes types = readTripTypes(std::string_view(reinterpret_cast<const char*>(data), size));
    const TripTypes again = readTripTypes(tripTypesText(types));
    if (again.types != types.types || again.unread.size() != types.unread.size())
        std::abort();
    for (std::size_t i = 0; i < types.unread.size(); ++i)
        if (again.unread[i].text != types.unread[i].text)
            std::abort();
    for (const TripType& type : types.types)
        if (type.name.empty() || (type.rate && !(*type.rate >= 0 && *type.rate <= kHighestTripRate)))
            std::abort();
    if (const auto rule = readTripRule(std::string_view(reinterpret_cast<const char*>(data), size))) {
        if (readTripRule(tripRuleText(*rule)) != rule)
            std::abort();
        fits(*rule, {.year = 2026, .month = 11, .day = 23, .hour = 12}, rule->vehicle);
    }
    return 0;
}
