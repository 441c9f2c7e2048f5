/// The reader of drives, and the recording of every drive that it lets through.
#include "simulator/recorder.h"

#include <cstdlib>

using namespace quobrix::sim;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto drive = parseDrive({reinterpret_cast<const char*>(data), size});
    if (!drive || drive->seconds.back() > 10000)
        return 0;
    const Recording recording = recordDrive(*drive, Configuration(), {});
    if (recording.trip.speeds.size() != static_cast<std::size_t>(drive->seconds.back()) + 1)
        std::abort();
    return 0;
}
