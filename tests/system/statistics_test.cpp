/// How was driven, counted from loggers, is what a computation that shares nothing with the program says of them.
#include "system/programs.h"

#include "model/fuel_entries.h"
#include "model/quobrix_document.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace quobrix {
namespace {

using namespace test;

class StatisticsOfLoggers : public Programs {
protected:
    /// FUEL is what the script reads, and is true of DOCUMENT.
    void expectRecomputed(const std::vector<std::string>& ports, const Arguments& document = {},
                          const std::string& fuel = R"({"petrol": [], "fills": []})") {
        const auto keep = [&](const std::string& name, const Outcome& outcome) {
            ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
            std::ofstream(folder_ / name, std::ios::binary) << outcome.out;
        };
        Arguments statistics{"statistics", "--format", "json"};
        statistics.insert(statistics.end(), document.begin(), document.end());
        keep("said.json", cli(statistics));
        keep("fuel.json", {0, fuel, {}});
        Arguments arguments{QUOBRIX_RECOMPUTE, "said.json", "fuel.json"};
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

TEST_F(StatisticsOfLoggers, FuelThatWasMeasuredAndFilledInAgrees) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B", "--parameter", "7:5"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "60", "--seed", "7"}).exitCode, 0);
    ASSERT_EQ(download("Fuel.car").exitCode, 0);
    std::string fills;
    {
        TQuobrixDocument document;
        ASSERT_TRUE(document.open(folder_ / "Fuel.car", TDocument::Access::Edit));
        const std::string vin = document.trips().column<TTripLogVinColumn>().at(0);
        document.vehicles().addMissing(std::vector{vin});
        document.vehicles().column<TVehicleNamesFuelColumn>().set(0, static_cast<std::int32_t>(Fuel::Petrol));
        auto& entries = document.store().singleton<TFuelEntryTable>();
        entries.insertRows(0, 12);
        for (RowIndex row = 0; row < 12; ++row) { // between the trips, with one partial, one missed and one unpriced
            const auto time = document.trips().column<TTripLogStartTimeColumn>().at(row * 5) - 60;
            const auto n = static_cast<double>(row);
            const double odometer = 1e6 + n * 9e4 + n * n * 100, gallons = 2.5 + n / 8;
            const bool full = row != 3, missed = row == 7, priced = row != 9;
            entries.column<TFuelEntryVehicleColumn>().set(row, vin);
            entries.column<TFuelEntryTimeColumn>().set(row, time);
            entries.column<TFuelEntryOdometerColumn>().set(row, odometer);
            entries.column<TFuelEntryAmountColumn>().set(row, gallons);
            entries.column<TFuelEntryFullTankColumn>().set(row, full);
            entries.column<TFuelEntryMissedFillColumn>().set(row, missed);
            if (priced)
                entries.column<TFuelEntryTotalPriceColumn>().set(row, gallons * 3.5);
            fills += fmt::format(
                R"({}{{"vin": "{}", "time": {}, "odometer": {}, "gallons": {}, "full": {}, "missed": {}, "price": {}}})",
                row == 0 ? "" : ", ", vin, time, odometer, gallons, full, missed,
                priced ? std::to_string(gallons * 3.5) : "null");
        }
        ASSERT_TRUE(document.save());
        fills = R"({"petrol": [")" + vin + R"("], "fills": [)" + fills + "]}";
    }
    ASSERT_EQ(download("Fuel.car").exitCode, 0); // what is known now is counted
    expectRecomputed({"COM3"}, {"Fuel.car"}, fills);
    std::ifstream file(folder_ / "said.json");
    const std::string said{std::istreambuf_iterator<char>(file), {}};
    for (const char* figure : {"filledEfficiency", "fuelEfficiency", "fuelAgreement", "distancePrice", "fuelPrice"})
        EXPECT_NE(said.substr(said.find(figure)).find("\":null"), std::strlen(figure)) << "nothing was compared";
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
