/// What the logger's bytes must stand: every cut and every flipped byte of an image, and drives that are none.
#include "simulator/drive.h"
#include "simulator/history.h"
#include "simulator/port_store.h"
#include "simulator/record_sets.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quobrix::sim {
namespace {

using testing::HasSubstr;

Logger loggerWithTrips(std::uint32_t trips, std::uint64_t seed) {
    Logger logger;
    EXPECT_TRUE(generateHistory(logger, {.trips = trips, .seed = seed, .end = 1700000000}));
    return logger;
}

TEST(LogRecords, EveryFieldComesBack) {
    Trip trip;
    trip.vin = "1HGCM82633A004352";
    trip.driver = -3;
    trip.start = std::numeric_limits<std::int32_t>::min();
    trip.disconnected = true;
    trip.distance = 0.1;
    trip.events[ExtremeBrake] = {0, 127, 128, 0xFFFFFFFFu};
    trip.speeds = {0, 255};
    trip.series[1] = {
        .parameter = 24, .interval = 60, .twoValues = true, .samples = {kNoValue, 12.345, -7, 1e6, kNoValue}};
    trip.series[3] = {.parameter = 2, .interval = 1, .twoValues = false, .samples = {1.0 / 3, kNoValue, 1e300, -0.0}};
    ByteWriter out;
    writeRecord(out, trip);
    const auto split = splitRecords(out.view());
    ASSERT_TRUE(split);
    const auto read = readRecord(split->at(0));
    ASSERT_TRUE(read);
    ByteWriter again;
    writeRecord(again, *read);
    EXPECT_EQ(again.view(), out.view());
    const Trip& back = std::get<Trip>(*read);
    EXPECT_EQ(back.events, trip.events);
    EXPECT_EQ(back.series[1].samples, trip.series[1].samples);
    EXPECT_EQ(back.series[3].samples, trip.series[3].samples);
    EXPECT_TRUE(std::signbit(back.series[3].samples[3]));
}

TEST(LogImage, EveryCutIsRefused) {
    const Logger logger = loggerWithTrips(1, 3);
    const Bytes image = makeImage(logger.serial, {logger.memory});
    ASSERT_TRUE(mainRecordSets(image));
    for (std::size_t size = 0; size < image.size(); ++size)
        ASSERT_FALSE(mainRecordSets(ByteView(image).first(size))) << size;
    // The same with a head that tells the truth about the cut, so that the records themselves are looked at.
    std::size_t accepted = 0;
    for (std::size_t size = 0; size < logger.memory.size(); ++size)
        accepted += bool(mainRecordSets(makeImage(logger.serial, {ByteView(logger.memory).first(size)})));
    EXPECT_LE(accepted, splitRecords(logger.memory)->size()) << "only cuts between two records can be whole";
}

TEST(PortFile, DamageIsNoticed) {
    Port port;
    port.attach("K-0042-B") = loggerWithTrips(1, 5);
    port.attach("A-0001-A");
    const Bytes bytes = encodePort(port);
    const auto read = decodePort(bytes, Memories::Read);
    ASSERT_TRUE(read);
    EXPECT_EQ(encodePort(*read), bytes);
    for (std::size_t size = 0; size < bytes.size(); ++size)
        ASSERT_FALSE(decodePort(ByteView(bytes).first(size), Memories::Read)) << size;
    Bytes flipped = bytes;
    for (std::size_t i = 0; i < bytes.size(); i += 7) {
        flipped[i] ^= 0x10;
        ASSERT_FALSE(decodePort(flipped, Memories::Read)) << i;
        flipped[i] ^= 0x10;
    }
}

TEST(DriveReader, RefusesWithTheLine) {
    const std::string head = "seconds,speed_kmh,engine_rpm\n";
    struct Case {
        std::string text;
        const char* message;
    };
    const Case cases[] = {
        {"", "line 1"},
        {"seconds,engine_rpm\n", "line 1: the columns"},
        {"seconds,speed_kmh,speed\n", "line 1: unknown column \"speed\""},
        {"seconds,speed_kmh,speed_kmh\n", "line 1: column \"speed_kmh\" stands twice"},
        {"seconds,speed_kmh,\n0,0,0\n", "line 1: unknown column \"\""},
        {head, "line 2: the drive is empty"},
        {head + "1,0,0\n", "line 2: seconds: the first is not 0"},
        {head + "0,0,\n0,0,\n", "line 3: seconds do not rise"},
        {head + "0,0\n", "line 2: 3 cells"},
        {head + "0,0,1,2\n", "line 2: 3 cells"},
        {head + "0,,1\n", "line 2: speed_kmh: not a number"},
        {head + "0,0,1\n1,0,1x\n", "line 3: engine_rpm: not a number: \"1x\""},
        {head + "0,nan,1\n", "line 2: speed_kmh"},
        {head + "0,-1,1\n", "line 2: speed_kmh: not from"},
        {head + "0,255.5,1\n", "line 2: speed_kmh: not from"},
        {head + "0,1,inf\n", "line 2: engine_rpm"},
        {head + "0,1,1\n604801,1,1\n", "line 3: the drive is longer"},
        {head + "0,1,1\n\n", "line 3"},
    };
    for (const Case& c : cases) {
        const auto drive = parseDrive(c.text);
        ASSERT_FALSE(drive) << c.text;
        EXPECT_THAT(drive.error().detail, HasSubstr(c.message)) << c.text;
    }
    EXPECT_FALSE(readDrive("/"));
    EXPECT_FALSE(readDrive("/no/such/drive.csv"));
}

} // namespace
} // namespace quobrix::sim
