// The first byte says where the input is cut in two record sets; they are read as a main log's and as an accident
// log's.
#include "device/records.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const quobrix::ByteView input(data + 1, size - 1);
    const std::size_t cut = input.size() * data[0] / 255;
    quobrix::LogRecords records;
    quobrix::parseMainRecords(input.first(cut), input.subspan(cut), records);
    quobrix::parseAccidentRecords(input.first(cut), input.subspan(cut), records);
    // What was believed lies within its bounds.
    for (const quobrix::TripRecord& trip : records.trips) {
        const std::int64_t longest = std::int64_t{trip.endTime} - trip.startTime + 60; // with a last sample of a minute
        std::int64_t seconds = trip.idleSeconds;
        for (const std::uint32_t band : trip.bandSeconds)
            seconds += band;
        if (trip.endTime < trip.startTime || trip.origin.serialNumber.size() != 8 || seconds > longest ||
            !(trip.maximumSpeed < 256) || !(trip.distance <= static_cast<double>(longest) * 256 / 3.6))
            std::abort();
    }
    for (const quobrix::TroubleRecord& trouble : records.troubles)
        for (const char c : trouble.code)
            if (c < ' ' || c > '~' || trouble.code.size() > 8)
                std::abort();
    return 0;
}
