#include "units/time_zone.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace quobrix {
namespace {

constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";

TimeZone zone(std::string_view rule) {
    Result<TimeZone> result = TimeZone::named(rule);
    EXPECT_TRUE(result) << rule;
    return result ? *result : TimeZone{};
}

std::int32_t utc(const DateTime& fields) { return static_cast<std::int32_t>(secondsFromFields(fields)); }

TEST(TimeZone, BerlinAcrossTheYear) {
    const TimeZone berlin = zone(kBerlin);
    EXPECT_EQ(berlin.toLocal(utc({2026, 3, 29, 0, 59, 59})), (DateTime{2026, 3, 29, 1, 59, 59}));
    EXPECT_EQ(berlin.toLocal(utc({2026, 3, 29, 1, 0, 0})), (DateTime{2026, 3, 29, 3, 0, 0}));
    EXPECT_EQ(berlin.toLocal(utc({2026, 10, 25, 0, 59, 59})), (DateTime{2026, 10, 25, 2, 59, 59}));
    EXPECT_EQ(berlin.toLocal(utc({2026, 10, 25, 1, 0, 0})), (DateTime{2026, 10, 25, 2, 0, 0}));

    EXPECT_EQ(berlin.toUtc({2026, 3, 29, 2, 30}), utc({2026, 3, 29, 1, 30})) << "skipped: half past three";
    EXPECT_EQ(berlin.toUtc({2026, 10, 25, 2, 30}), utc({2026, 10, 25, 0, 30})) << "came twice: the first";
    EXPECT_EQ(berlin.toUtc({2026, 2, 31, 12, 0}), utc({2026, 3, 3, 11, 0}));
}

TEST(TimeZone, EveryHourComesBack) {
    for (const char* rule : {kBerlin, kNewYork, "NZST-12NZDT,M9.5.0,M4.1.0/3", "<-03>3<-02>,M3.5.0/-1,M10.5.0/0",
                             "IST-5:30", "AAA4BBB,J60/0,300/1:30:15"}) {
        const TimeZone place = zone(rule);
        int repeated = 0;
        for (std::int64_t s = utc({2019, 1, 1}); s < utc({2025, 1, 1}); s += 1800) {
            const auto time = static_cast<std::int32_t>(s);
            const std::int32_t back = place.toUtc(place.toLocal(time));
            if (back != time) {
                ASSERT_EQ(place.toLocal(back), place.toLocal(time)) << rule;
                ++repeated;
            }
        }
        EXPECT_EQ(repeated, std::string_view(rule).find(',') == std::string_view::npos ? 0 : 6 * 2) << rule;
    }
}

/// A TZif file of version 2 as RFC 8536 lays it out.
struct ZoneFile {
    struct Type {
        std::int32_t offset;
        std::uint8_t daylight, name;
    };
    std::vector<std::int64_t> times;
    std::vector<std::uint8_t> indexes;
    std::vector<Type> types;
    std::string footer;

    Bytes bytes(char version = '2') const {
        Bytes out;
        const auto number = [&](std::int64_t value, int width) {
            for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
                out.push_back(static_cast<std::uint8_t>(value >> shift));
        };
        const auto block = [&](bool filled, int width) {
            for (const char c : std::string("TZif") + version + std::string(15, '\0'))
                out.push_back(static_cast<std::uint8_t>(c));
            const std::size_t count = filled ? times.size() : 0;
            for (const std::size_t value : {0, 0, 0})
                number(static_cast<std::int64_t>(value), 4);
            number(static_cast<std::int64_t>(count), 4);
            number(static_cast<std::int64_t>(filled ? types.size() : 1), 4);
            number(4, 4);
            for (std::size_t i = 0; i < count; ++i)
                number(times[i], width);
            out.insert(out.end(), indexes.begin(), indexes.begin() + static_cast<std::ptrdiff_t>(count));
            for (const Type& type : filled ? types : std::vector<Type>{{0, 0, 0}}) {
                number(type.offset, 4);
                out.push_back(type.daylight);
                out.push_back(type.name);
            }
            for (const char c : {'X', 'Y', 'Z', '\0'})
                out.push_back(static_cast<std::uint8_t>(c));
        };
        block(version < '2', 4);
        if (version >= '2') {
            block(true, 8);
            for (const char c : "\n" + footer + "\n")
                out.push_back(static_cast<std::uint8_t>(c));
        }
        return out;
    }
};

TEST(TimeZone, ReadsZoneFiles) {
    // Half an hour east until 1980, then an hour; Berlin's rule from 1990 on.
    const std::int64_t in1980 = secondsFromFields({1980, 1, 1});
    const std::int64_t in1990 = secondsFromFields({1990, 1, 1});
    ZoneFile file{{in1980, in1990}, {1, 1}, {{1800, 0, 0}, {3600, 0, 0}}, kBerlin};
    const Result<TimeZone> read = TimeZone::parse(file.bytes());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->offsetAt(in1980 - 1), 1800);
    EXPECT_EQ(read->offsetAt(in1980), 3600);
    EXPECT_EQ(read->offsetAt(utc({1985, 7, 1})), 3600);
    EXPECT_EQ(read->offsetAt(utc({1995, 7, 1})), 7200);

    const Result<TimeZone> old = TimeZone::parse(file.bytes('\0'));
    ASSERT_TRUE(old);
    EXPECT_EQ(old->offsetAt(utc({1995, 7, 1})), 3600) << "no rule in the first version";
}

TEST(TimeZone, DamagedFilesAreErrors) {
    const ZoneFile good{{0, 1000}, {0, 1}, {{3600, 0, 0}, {7200, 1, 0}}, kBerlin};
    const Bytes whole = good.bytes();
    for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_FALSE(TimeZone::parse(ByteView(whole).first(size))) << size;

    ZoneFile file = good;
    file.indexes = {0, 2};
    EXPECT_EQ(TimeZone::parse(file.bytes()).error().kind, ErrorKind::Corrupt);
    file = good;
    file.times = {1000, 1000};
    EXPECT_FALSE(TimeZone::parse(file.bytes()));
    file = good;
    file.types[0].offset = 1 << 30;
    EXPECT_FALSE(TimeZone::parse(file.bytes()));
    file = good;
    file.footer = "nonsense";
    EXPECT_FALSE(TimeZone::parse(file.bytes()));
    Bytes huge = whole; // counts beyond what is there
    huge[huge.size() - 1 - good.footer.size() - 1 - 4 - 12 - 2 - 16 - 12] = 0xFF;
    EXPECT_FALSE(TimeZone::parse(huge));
}

} // namespace
} // namespace quobrix
