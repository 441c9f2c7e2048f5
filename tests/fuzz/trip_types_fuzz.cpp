#include "model/trip_types.h"

#include <cstdint>
#include <cstdlib>

using namespace quobrix;

/// Any text as a list of trip types: writing it again loses nothing.
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
    return 0;
}
