#include "fixture.h"

#include "simulator/history.h"
#include "simulator/serial_number.h"

#include <array>
#include <chrono>
#include <ctime>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace quobrix::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::int32_t probe() {
    char serial[QUOBRIX_SERIAL_SIZE];
    std::int32_t time = 0;
    return QuobrixGetSerialNumberAndTime(serial, &time);
}

struct Values {
    std::array<double, 7> figures{};
    std::array<std::int32_t, 10> codes{};
    std::uint8_t flags = 0;

    std::int32_t get() {
        return std::apply(
            [&](auto&... f) {
                return std::apply([&](auto&... c) { return QuobrixGetConfiguration(&f..., &c..., &flags); }, codes);
            },
            figures);
    }
    std::int32_t set() const { return std::apply(QuobrixSetConfiguration, std::tuple_cat(figures, codes)); }
};

TEST_F(SimulatorTest, PortStatesHaveTheirCodes) {
    EXPECT_EQ(probe(), QUOBRIX_OK);
    change([](Port& port) { port.attached.reset(); });
    EXPECT_EQ(probe(), QUOBRIX_TIMEOUT);
    EXPECT_EQ(QuobrixEnableLED(1), QUOBRIX_TIMEOUT);
    EXPECT_EQ(QuobrixOpenPort(kPort), QUOBRIX_OK) << "an empty port opens";

    QuobrixClosePort();
    EXPECT_EQ(probe(), QUOBRIX_PORT_NOT_OPENED);
    EXPECT_EQ(QuobrixOpenPort("COM4"), QUOBRIX_PORT_DOES_NOT_EXIST);
    EXPECT_EQ(QuobrixOpenPort("../COM3"), QUOBRIX_PORT_DOES_NOT_EXIST);
    {
        const auto other = store_.open(kPort);
        ASSERT_TRUE(other);
        EXPECT_EQ(QuobrixOpenPort(kPort), QUOBRIX_PORT_IN_USE);
    }
    EXPECT_EQ(QuobrixOpenPort(kPort), QUOBRIX_OK);
    EXPECT_FALSE(store_.open(kPort)) << "the library holds the port";
    EXPECT_TRUE(store_.remove(kPort));
    EXPECT_EQ(probe(), QUOBRIX_PORT_DOES_NOT_EXIST);
}

TEST_F(SimulatorTest, EachFunctionCanBeMadeToFail) {
    constexpr std::int32_t kOrdered = -77;
    void* images[3] = {};
    ASSERT_EQ(QuobrixGetLogBuffer(0, &images[0], &images[1], &images[2]), QUOBRIX_OK);
    const Block owners[] = {Block(images[0]), Block(images[1]), Block(images[2])};
    QuobrixRecordSet *first = nullptr, *second = nullptr;
    const struct {
        const char* function;
        std::function<std::int32_t()> call;
    } cases[] = {
        {"OpenPort", [] { return QuobrixOpenPort(kPort); }},
        {"GetSerialNumberAndTime", [] { return probe(); }},
        {"GetLogRecords",
         [&] {
             const std::int32_t result = QuobrixGetLogRecords(images[0], &first, &second);
             const RecordSet freed[] = {RecordSet(std::exchange(first, nullptr)),
                                        RecordSet(std::exchange(second, nullptr))};
             return result;
         }},
        {"ClosePort",
         [] {
             QuobrixOpenPort(kPort);
             return QuobrixClosePort();
         }},
    };
    for (const auto& [function, call] : cases) {
        SCOPED_TRACE(function);
        const auto results = [&, &call = call](std::uint32_t after, bool once) {
            EXPECT_EQ(QuobrixOpenPort(kPort), QUOBRIX_OK);
            EXPECT_TRUE(store_.setFaults(kPort, {.failures = {{function, kOrdered, after, once}}}));
            std::vector<std::int32_t> all;
            for (int i = 0; i < 3; ++i)
                all.push_back(call());
            EXPECT_TRUE(store_.setFaults(kPort, {}));
            return all;
        };
        EXPECT_EQ(results(0, false), (std::vector<std::int32_t>{kOrdered, kOrdered, kOrdered}));
        EXPECT_EQ(results(1, true), (std::vector<std::int32_t>{QUOBRIX_OK, kOrdered, QUOBRIX_OK}));
    }
}

TEST_F(SimulatorTest, ConfigurationRoundTrips) {
    Values values;
    ASSERT_EQ(values.get(), QUOBRIX_OK);
    EXPECT_THAT(values.figures, ElementsAre(45, 60, 70, 2.745862, 4.707192, 2.745862, 4.707192));
    EXPECT_EQ(values.set(), QUOBRIX_OK);
    EXPECT_THAT(Download().activityCodes(), IsEmpty()) << "nothing changed";

    values.figures[2] = 75.5;
    values.figures[6] = 5;
    values.codes[4] = 0x42;
    EXPECT_EQ(values.set(), QUOBRIX_OK);
    Values read;
    ASSERT_EQ(read.get(), QUOBRIX_OK);
    EXPECT_EQ(read.figures, values.figures);
    EXPECT_EQ(read.codes, values.codes);
    EXPECT_THAT(Download().activityCodes(), ElementsAre(-1, -3, -4));
    values.codes[9] = 3;
    values.figures[3] = 2;
    EXPECT_EQ(values.set(), QUOBRIX_OK);
    EXPECT_THAT(Download().activityCodes(), ElementsAre(-1, -3, -4, -2, -5));
}

TEST_F(SimulatorTest, SettingTheClockClearsTheMemory) {
    change([](Port& port) { ASSERT_TRUE(generateHistory(*port.logger(), {.trips = 2, .end = 1700000000})); });
    ASSERT_EQ(recordsOf(Download().trips).size(), 2u);
    const auto wanted = static_cast<std::int32_t>(std::time(nullptr)) - 5000;
    EXPECT_EQ(QuobrixSetTime(wanted), QUOBRIX_OK);
    char serial[QUOBRIX_SERIAL_SIZE];
    std::int32_t time = 0;
    EXPECT_EQ(QuobrixGetSerialNumberAndTime(serial, &time), QUOBRIX_OK);
    EXPECT_NEAR(time, wanted, 2);
    EXPECT_STREQ(serial, "K-0042-B");
    EXPECT_THAT(recordsOf(Download().trips), IsEmpty());
    EXPECT_THAT(Download().activityCodes(), ElementsAre(4));
}

TEST_F(SimulatorTest, SavedLogsAreImportedAndOtherFilesRefused) {
    Logger logger;
    ASSERT_TRUE(generateHistory(logger, {.trips = 3, .end = 1700000000}));
    std::vector<ByteView> records;
    const auto split = splitRecords(logger.memory);
    ASSERT_TRUE(split);
    for (const EncodedRecord& record : *split)
        if (record.kind != RecordKind::Stop)
            records.push_back(record.bytes);
    Bytes image = makeImage("Z-9999-Z", records);
    const std::string path = utf8(folder_ / "log.txt");
    const auto write = [&] {
        std::ofstream(folder_ / "log.txt", std::ios::binary)
            .write(reinterpret_cast<const char*>(image.data()), image.size());
    };
    write();
    void* buffer = nullptr;
    ASSERT_EQ(QuobrixGetLogBufferFromFile(&buffer, path.c_str()), QUOBRIX_OK);
    const Block owner(buffer);
    QuobrixRecordSet* trips = nullptr;
    QuobrixRecordSet* events = nullptr;
    ASSERT_EQ(QuobrixGetLogRecords(buffer, &trips, &events), QUOBRIX_OK);
    const RecordSet ownTrips(trips);
    const RecordSet ownEvents(events);
    EXPECT_EQ(trips->recordCount, 3u);
    EXPECT_NE(QuobrixGetAccidentLogRecords(buffer, &trips, &events), QUOBRIX_OK);
    EXPECT_EQ(trips, nullptr);

    const auto refused = [&] { return QuobrixGetLogBufferFromFile(&buffer, path.c_str()) != QUOBRIX_OK && !buffer; };
    image[image.size() / 2] ^= 1;
    write();
    EXPECT_TRUE(refused());
    image.pop_back();
    write();
    EXPECT_TRUE(refused());
    image.resize(7);
    write();
    EXPECT_TRUE(refused());
    EXPECT_NE(QuobrixGetLogBufferFromFile(&buffer, utf8(folder_.path()).c_str()), QUOBRIX_OK);
    EXPECT_NE(QuobrixGetLogBufferFromFile(&buffer, std::string(261, 'a').c_str()), QUOBRIX_OK);
}

} // namespace
} // namespace quobrix::sim
