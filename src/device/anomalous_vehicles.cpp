#include "device/anomalous_vehicles.h"

#include "base/utf8.h"
#include "platform/file_system.h"
#include "texts/text.h"

#include <algorithm>
#include <charconv>

namespace quobrix {
namespace {

constexpr std::size_t kLargestFile = 64 * 1024;

std::string_view lineOf(std::string_view& rest) {
    const std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

/// Nothing for a line of another form.
AnomalousVehicle vehicleOf(std::string_view line) {
    const std::size_t tab = line.find('\t');
    AnomalousVehicle vehicle;
    if (tab == std::string_view::npos)
        return vehicle;
    std::int32_t carType = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + tab, carType);
    const std::string_view name = line.substr(tab + 1);
    const bool printable = std::ranges::none_of(name, [](char c) { return static_cast<unsigned char>(c) < 0x20; });
    if (error == std::errc() && end == line.data() + tab && carType > kNormalVehicle &&
        carType < kAnomalousVehicleDetected && printable && name.find_first_not_of(' ') != std::string_view::npos)
        vehicle = {carType, std::string(name)};
    return vehicle;
}

} // namespace

Result<std::vector<AnomalousVehicle>> readAnomalousVehicles(std::string_view text) {
    std::vector<AnomalousVehicle> vehicles;
    for (int number = 1; !text.empty(); ++number) {
        const std::string_view line = lineOf(text);
        if (line.empty())
            continue;
        AnomalousVehicle vehicle = vehicleOf(line);
        const bool known = std::ranges::any_of(vehicles, [&](const AnomalousVehicle& other) {
            return other.carType == vehicle.carType || other.name == vehicle.name;
        });
        if (vehicle.name.empty() || known || validUtf8(line) != line)
            return Error{ErrorKind::Corrupt, quobrix::text(TextId::AnomalousVehicleLine, number)};
        vehicles.push_back(std::move(vehicle));
    }
    if (vehicles.empty())
        return Error{ErrorKind::Corrupt, quobrix::text(TextId::AnomalousVehiclesNone)};
    return vehicles;
}

Result<std::vector<AnomalousVehicle>> loadAnomalousVehicles(const std::filesystem::path& file) {
    const Result<Bytes> bytes = readFile(file, kLargestFile);
    if (!bytes)
        return Error{bytes.error().kind, bytes.error().kind == ErrorKind::Unsupported
                                             ? text(TextId::AnomalousVehiclesMany)
                                             : text(TextId::AnomalousVehiclesMissing)};
    return readAnomalousVehicles({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

} // namespace quobrix
