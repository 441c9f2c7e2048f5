/// What the home page shows of 50,000 counted trips: read from the database, summed up, and made a report and charts
/// of; the sums beside SQLite's over the same trips in memory.
#include "ratios.h"

#include "summary/driving_charts.h"
#include "summary/driving_report.h"
#include "summary/summary_database.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace quobrix::bench {
namespace {

constexpr int kTrips = 50'000;
constexpr std::int32_t kNow = 1'790'000'000;
const TimeZone kZone;

void require(bool condition) {
    if (!condition)
        std::abort();
}

/// Ten years of a fleet: 40 vehicles, 60 drivers.
std::vector<SummaryRecord> trips() {
    std::vector<SummaryRecord> records;
    for (int i = 0; i < kTrips; ++i) {
        const int any = static_cast<int>(i * 7919LL % 50'021);
        SummaryRecord& record = records.emplace_back();
        record.vin = SummaryText(fmt::format("1HGCM82633A{:06}", any % 40));
        record.vehicleName = SummaryText(fmt::format("Van {}", any % 40));
        record.logger = SummaryText(fmt::format("K-{:04}-B", any % 45));
        record.driver = SummaryText(std::to_string(any % 60 + 1));
        record.driverName = SummaryText(fmt::format("Driver {}", any % 60 + 1));
        record.start = record.recordedStart = kNow - 6300 * i;
        record.end = record.start + any % 7200;
        record.distance = static_cast<float>(any);
        record.topSpeed = static_cast<float>(any % 50);
        record.idleTime = static_cast<float>(any % 600);
        record.bandTimes = {static_cast<float>(any % 900), static_cast<float>(any % 500), static_cast<float>(any % 90)};
        record.topBandTime = static_cast<float>(any % 60);
        for (std::size_t kind = 0; kind < record.events.size(); ++kind)
            record.events[kind].count = static_cast<std::uint16_t>(any % (3 + static_cast<int>(kind)));
        record.parameters[SummaryRecord::kSpeedSlot] = {1, 1, 31, 35, 0, 30, 600};
        record.mark = SummaryRecord::kOurs;
    }
    return records;
}

class SqlSums {
public:
    explicit SqlSums(const std::vector<SummaryRecord>& records) {
        require(sqlite3_open(":memory:", &database_) == SQLITE_OK);
        run("CREATE TABLE trip(vehicle TEXT, driver TEXT, start INT, seconds INT, distance REAL, top REAL, hard INT, "
            "extreme INT, accelerations INT, extremes INT, idle REAL, one REAL, two REAL, three REAL, four REAL); "
            "BEGIN");
        sqlite3_stmt* insert = nullptr;
        require(sqlite3_prepare_v2(database_, "INSERT INTO trip VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)", -1, &insert,
                                   nullptr) == SQLITE_OK);
        for (const SummaryRecord& record : records) {
            const std::string vin(record.vin.view()), driver(record.driver.view());
            sqlite3_bind_text(insert, 1, vin.c_str(), -1, SQLITE_TRANSIENT);
            sqlite3_bind_text(insert, 2, driver.c_str(), -1, SQLITE_TRANSIENT);
            sqlite3_bind_int64(insert, 3, record.start);
            sqlite3_bind_int64(insert, 4, record.duration());
            int place = 5;
            for (const double value : {double(record.distance), double(record.topSpeed)})
                sqlite3_bind_double(insert, place++, value);
            for (const SummaryRecord::Events& events : record.events)
                sqlite3_bind_int64(insert, place++, events.count);
            for (const float value :
                 {record.idleTime, record.bandTimes[0], record.bandTimes[1], record.bandTimes[2], record.topBandTime})
                sqlite3_bind_double(insert, place++, value);
            require(sqlite3_step(insert) == SQLITE_DONE);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        run("COMMIT");
    }
    ~SqlSums() { sqlite3_close(database_); }
    SqlSums(const SqlSums&) = delete;
    SqlSums& operator=(const SqlSums&) = delete;

    /// Over all, and by vehicle, driver and month.
    int rows() {
        constexpr const char* kSums =
            "SELECT {}, count(*), sum(distance), sum(seconds), max(top), sum(hard), sum(extreme), sum(accelerations), "
            "sum(extremes), sum(idle), sum(one), sum(two), sum(three), sum(four) FROM trip {}";
        int rows = 0;
        for (const auto& [what, by] :
             {std::pair("0", ""), std::pair("vehicle", "GROUP BY vehicle"), std::pair("driver", "GROUP BY driver"),
              std::pair("strftime('%Y-%m', start, 'unixepoch') AS month", "WHERE start > 1760000000 GROUP BY month")}) {
            sqlite3_stmt* sums = nullptr;
            const std::string text = fmt::format(fmt::runtime(kSums), what, by);
            require(sqlite3_prepare_v2(database_, text.c_str(), -1, &sums, nullptr) == SQLITE_OK);
            while (sqlite3_step(sums) == SQLITE_ROW)
                ++rows;
            sqlite3_finalize(sums);
        }
        return rows;
    }

private:
    void run(const char* text) { require(sqlite3_exec(database_, text, nullptr, nullptr, nullptr) == SQLITE_OK); }

    sqlite3* database_ = nullptr;
};

int main(int argc, char** argv) {
    const test::TemporaryFolder folder;
    const std::filesystem::path path = folder / "Quobrix.cdb";
    const std::vector<SummaryRecord> records = trips();
    {
        SummaryDatabase database;
        require(static_cast<bool>(database.open(path, SummaryDatabase::Access::Write)));
        require(static_cast<bool>(database.append(records)));
    }
    SqlSums sql(records);
    const TUnitSystem units;
    const auto add = [](const char* name, const auto& work) {
        benchmark::RegisterBenchmark(name, [work](benchmark::State& state) {
            for (auto run : state)
                benchmark::DoNotOptimize(work());
        })->Unit(benchmark::kMillisecond);
    };
    add("Read", [&] {
        SummaryDatabase database;
        require(static_cast<bool>(database.open(path, SummaryDatabase::Access::Read)));
        return database.readAll()->size();
    });
    add("Sums", [&] { return drivingStatistics(records, {}, kNow, kZone).totals.distance; });
    add("SQLite", [&] { return sql.rows(); });
    add("Page", [&] {
        const DrivingStatistics all = drivingStatistics(records, {}, kNow, kZone);
        std::size_t size = drivingReport(all, drivingTitle(all, {}), units).blocks.size();
        for (const DrivingChart& chart : drivingCharts())
            size += drawMonths(chart, all.months, units, {900, 400}, TableTextMeasure(12)).drawing.commands.size();
        return size;
    });
    return runAndCompare(argc, argv, {{"Sums by month, vehicle and driver, beside SQLite", "Sums", "SQLite", 1}});
}

} // namespace
} // namespace quobrix::bench

int main(int argc, char** argv) { return quobrix::bench::main(argc, argv); }
