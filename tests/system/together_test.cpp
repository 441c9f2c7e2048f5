/// Two programs at once.
#include "system/programs.h"

#include <algorithm>
#include <future>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

using Together = Programs;

TEST_F(Together, TwoDownloadsIntoOneNewFile) {
    constexpr int kRounds = 12;
    attachHistory("COM3", "K-0042-B", 6);
    attachHistory("COM4", "K-0043-B", 9);
    const auto trips = [&](const std::string& file, const std::string& serial) {
        const std::string list = cli({"list", "trips", file, "--format", "json"}).out;
        std::size_t count = 0;
        for (std::size_t at = list.find(serial); at != std::string::npos; at = list.find(serial, at + 1))
            ++count;
        return count;
    };
    ASSERT_EQ(download("One.car", "COM3").exitCode, 0);
    ASSERT_EQ(download("One.car", "COM4").exitCode, 0);
    const std::size_t first = trips("One.car", "K-0042-B"), second = trips("One.car", "K-0043-B");
    ASSERT_TRUE(first > 0 && second > 0);
    for (int round = 0; round < kRounds; ++round) {
        std::future<Outcome> other = std::async(std::launch::async, [&] { return download("New.car", "COM4"); });
        const Outcome outcomes[] = {download("New.car", "COM3"), other.get()};
        // One makes the file. The other one adds to it, or was so late that it found the first one still writing.
        bool refused = false;
        for (const Outcome& outcome : outcomes) {
            const bool inUse = outcome.error.find("another program is using it") != std::string::npos;
            EXPECT_EQ(outcome.exitCode, inUse ? 1 : 0) << outcome.out << outcome.error;
            EXPECT_FALSE(refused && inUse);
            refused |= inUse;
        }
        EXPECT_EQ(trips("New.car", "K-0042-B") + trips("New.car", "K-0043-B") == first + second, !refused);
        EXPECT_EQ(cli({"check", "New.car"}).exitCode, 0);
        for (const char* const made : {"New.car", "New.car.bak"})
            fs::remove(folder_ / made);
        EXPECT_EQ(files(), (std::vector<std::string>{"One.car", "One.car.bak"}));
    }
    // Each trip was counted once, however many documents it came into, and whoever had the database just then.
    const auto counted = jsonLeaves(cli({"statistics", "--format", "json"}).out);
    EXPECT_EQ(counted.at("figures.trips"), JsonValue(static_cast<double>(first + second)));
    EXPECT_EQ(counted.at("vehicles.0.figures.trips"), JsonValue(static_cast<double>(first + second)));
}

} // namespace
} // namespace quobrix
