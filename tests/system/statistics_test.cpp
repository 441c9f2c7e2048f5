/// How was driven, counted from loggers, is what a computation that shares nothing with the program says of them.
#include "system/programs.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace quobrix {
namespace {

using namespace test;

class StatisticsOfLoggers : public Programs {
protected:
    void expectRecomputed(const std::vector<std::string>& ports) {
        const auto keep = [&](const std::string& name, const Outcome& outcome) {
            ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
            std::ofstream(folder_ / name, std::ios::binary) << outcome.out;
        };
        keep("said.json", cli({"statistics", "--format", "json"}));
        Arguments arguments{QUOBRIX_RECOMPUTE, "said.json"};
        for (const std::string& port : ports)
            keep(arguments.emplace_back(port + ".json"), sim({"dump", port}));
        const Outcome compared = runProgram(folder_.path(), "/usr/bin/python3", arguments);
        EXPECT_EQ(compared.exitCode, 0) << compared.out << compared.error;
    }
};

TEST_F(StatisticsOfLoggers, GeneratedTripsAgree) {
    attachHistory("COM3", "K-0042-B", 60);
    attachHistory("COM4", "K-0043-C", 25);
    for (const char* port : {"COM3", "COM4", "COM3"}) // twice: it counts once, and so it does
        ASSERT_EQ(download("Fleet.car", port).exitCode, 0);
    ASSERT_EQ(download("Other.car").exitCode, 0);                 // in another document
    ASSERT_EQ(sim({"export", "COM4", "Drives.txt"}).exitCode, 0); // and by another way
    ASSERT_EQ(cli({"import", "Drives.txt", "--into", "Imported.car"}).exitCode, 0);
    expectRecomputed({"COM3", "COM4"});
}

TEST_F(StatisticsOfLoggers, RealDrivesAgree) {
    const char* const given = std::getenv("QUOBRIX_DRIVES");
    if (!given || !std::filesystem::is_directory(given))
        GTEST_SKIP() << "QUOBRIX_DRIVES names no folder of drives";
    std::vector<std::filesystem::path> drives;
    for (const auto& entry : std::filesystem::directory_iterator(given))
        if (entry.path().extension() == ".csv")
            drives.push_back(std::filesystem::absolute(entry.path()));
    std::ranges::sort(drives);
    ASSERT_FALSE(drives.empty());
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    for (std::size_t i = 0; i < drives.size(); ++i) {
        const std::string day = "2024-03-0" + std::to_string(i % 9 + 1) + " 08:00:00";
        const Outcome recorded =
            sim({"record", "COM3", drives[i].string(), "--start", day, "--driver", std::to_string(i % 3), "--vin",
                 i % 2 ? "1HGCM82633A004352" : "WVWZZZ1KZAW000327"});
        ASSERT_EQ(recorded.exitCode, 0) << recorded.error;
    }
    ASSERT_EQ(download("Drives.car").exitCode, 0);
    expectRecomputed({"COM3"});
}

} // namespace
} // namespace quobrix
