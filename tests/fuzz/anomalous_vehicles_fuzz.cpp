#include "device/anomalous_vehicles.h"

#include <cstdlib>

using namespace quobrix;

/// Any text as a list of anomalous vehicles: what is taken can be told apart and shown.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto vehicles = readAnomalousVehicles(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!vehicles)
        return 0;
    std::string written;
    for (const AnomalousVehicle& vehicle : *vehicles) {
        if (vehicle.carType <= kNormalVehicle || vehicle.carType >= kAnomalousVehicleDetected || vehicle.name.empty())
            std::abort();
        written += std::to_string(vehicle.carType) + "\t" + vehicle.name + "\n";
    }
    const auto again = readAnomalousVehicles(written);
    if (!again || *again != *vehicles)
        std::abort();
    return 0;
}
