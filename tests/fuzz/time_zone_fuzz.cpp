#include "units/time_zone.h"

#include <cstdlib>
#include <string_view>

namespace {

/// Any zone that was read gives proper local times.
void check(const quobrix::TimeZone& zone) {
    for (std::int32_t utc = 86400; utc < 2145916800 - 86400 * 40; utc += 86400 * 37 + 1801) {
        const quobrix::DateTime local = zone.toLocal(utc);
        if (local.month < 1 || local.month > 12 || local.day < 1 || local.day > 31 || local.second > 59)
            std::abort();
        (void)zone.toUtc(local);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quobrix;
    if (const Result<TimeZone> zone = TimeZone::parse({data, size}))
        check(*zone);
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const std::optional<ZoneRule> rule = ZoneRule::parse(text))
        (void)rule->offsetAt(1'000'000'000);
    return 0;
}
