#include "texts/text.h"
#include "units/time_zone.h"

#include "platform/file_system.h"

#include <cstdlib>

namespace quobrix {
namespace {

Result<TimeZone> load(const std::filesystem::path& file) {
    constexpr std::uint64_t kMaxZoneFile = 1 << 20; // the largest real ones have a few kilobytes
    const Result<Bytes> bytes = readFile(file, kMaxZoneFile);
    return bytes ? TimeZone::parse(*bytes) : Result<TimeZone>(bytes.error());
}

} // namespace

Result<TimeZone> TimeZone::ofSystem(std::string_view name) {
    // A name never leads out of the folder of zone files.
    if (name.empty() || name.front() == '/' || name.find("..") != std::string_view::npos)
        return Error{ErrorKind::NotFound, text(TextId::NotAZoneName)};
    return load(std::filesystem::path("/usr/share/zoneinfo") / name);
}

TimeZone TimeZone::local() {
    Result<TimeZone> zone = TimeZone{};
    if (const char* variable = std::getenv("TZ")) {
        std::string_view name = variable;
        if (name.starts_with(':'))
            name.remove_prefix(1);
        zone = name.starts_with('/') ? load(name) : named(name);
    } else {
        zone = load("/etc/localtime");
    }
    return zone ? *std::move(zone) : TimeZone{};
}

} // namespace quobrix
