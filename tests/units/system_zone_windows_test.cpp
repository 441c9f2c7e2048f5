#include "platform/wide_text.h"
#include "units/time_zone.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace quobrix {
namespace {

/// The local time that Windows itself computes.
DateTime localByWindows(const DYNAMIC_TIME_ZONE_INFORMATION& zone, std::int64_t utc) {
    const DateTime fields = fieldsFromSeconds(utc);
    const auto word = [](int value) { return static_cast<WORD>(value); };
    const SYSTEMTIME from{word(fields.year),   word(fields.month),  0, word(fields.day), word(fields.hour),
                          word(fields.minute), word(fields.second), 0};
    SYSTEMTIME to{};
    DYNAMIC_TIME_ZONE_INFORMATION asked = zone;
    TIME_ZONE_INFORMATION rules{};
    EXPECT_TRUE(GetTimeZoneInformationForYear(from.wYear, &asked, &rules));
    EXPECT_TRUE(SystemTimeToTzSpecificLocalTime(&rules, &from, &to)); // Wine lacks the call for DYNAMIC_…
    return {to.wYear, to.wMonth, to.wDay, to.wHour, to.wMinute, to.wSecond};
}

TEST(SystemZone, ZonesAreReadAsWindowsReadsThem) {
    DYNAMIC_TIME_ZONE_INFORMATION information{};
    int zones = 0;
    for (DWORD i = 0; EnumDynamicTimeZoneInformation(i, &information) == ERROR_SUCCESS; ++i) {
        if (i % 12 != 0) // each call reads the registry, which takes its time
            continue;
        ++zones;
        const std::string name = narrow(information.TimeZoneKeyName);
        const auto zone = TimeZone::named(name);
        ASSERT_TRUE(zone) << name;
        int differences = 0;
        std::string first;
        for (std::int64_t utc = secondsFromFields({1980, 1, 5, 12}); utc < secondsFromFields({2037, 12, 1});
             utc += 211 * kSecondsPerDay)
            if (zone->toLocal(static_cast<std::int32_t>(utc)) != localByWindows(information, utc) && ++differences == 1)
                first = std::to_string(utc);
        EXPECT_EQ(differences, 0) << name << ", first at " << first;
    }
    EXPECT_GT(zones, 8);
}

TEST(SystemZone, ChangesToTheSecond) {
    const auto zone = TimeZone::named("W. Europe Standard Time");
    ASSERT_TRUE(zone);
    const auto berlin = TimeZone::named("CET-1CEST,M3.5.0,M10.5.0/3");
    for (std::int64_t hour = secondsFromFields({1997, 1, 1}); hour < secondsFromFields({2037, 12, 1}); hour += 3600)
        for (const std::int64_t utc : {hour - 1, hour})
            ASSERT_EQ(zone->offsetAt(utc), berlin->offsetAt(utc)) << utc;
}

TEST(SystemZone, ATimeZoneOfAnotherSystemDoesNotCount) {
    SetEnvironmentVariableA("TZ", "America/Nowhere");
    SYSTEMTIME now{}, local{};
    GetSystemTime(&now);
    EXPECT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &now, &local));
    const auto utc = static_cast<std::int32_t>(
        secondsFromFields({now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond}));
    EXPECT_EQ(TimeZone::local().toLocal(utc),
              (DateTime{local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond}));
    SetEnvironmentVariableA("TZ", "EST5");
    EXPECT_EQ(TimeZone::local().offsetAt(utc), -5 * 3600);
    SetEnvironmentVariableA("TZ", nullptr);
}

} // namespace
} // namespace quobrix
