/// Records that are chosen out of one or several documents, listed or written to a file.
#include "cli/parsing.h"
#include "cli/program.h"
#include "support/document_streams.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

class SelectionOnTheCommandLine : public testing::Test {
protected:
    /// A.car: trips of three days from 14 November 2023, of Anna, of nobody and of driver 8. B.car: the last of them
    /// and one of the day after, of Anna's namesake in another car.
    SelectionOnTheCommandLine() {
        make("A.car", {0, 1, 2}, {7, Element<std::int32_t>::kNone, 8}, kVin, "Family wagon");
        make("B.car", {2, 3}, {8, 3}, kVin, "Pickup");
    }

    void make(const char* file, const std::vector<int>& days, std::vector<std::int32_t> drivers, const char* vin,
              const char* vehicle) {
        TQuobrixDocument document;
        for (const int day : days)
            addTrip(document, kStart + day * 86400);
        document.trips().column<TTripLogDriverIDColumn>().setAll(std::move(drivers));
        document.drivers().nameAll(document.drivers().addMissing(std::vector<std::string>{"3", "7"}), "Anna");
        document.vehicles().nameAll(std::vector<std::string>{vin}, vehicle);
        document.trips().column<TTripLogCommentsColumn>().set(0, "=to work");
        distance_ = document.trips().column<TTripLogDistanceColumn>().id();
        ASSERT_TRUE(document.saveAs(folder_ / file));
    }

    Outcome cli(const Arguments& arguments) { return runProgram(folder_.path(), QUOBRIX_CLI, arguments); }

    /// File, if there is such a column, and number of each record that is listed.
    static std::vector<std::string> numbersIn(const std::string& csv) {
        std::vector<std::string> numbers;
        const auto records = parseCsv(csv);
        for (std::size_t i = 1; i < records.size(); ++i)
            numbers.push_back(records[0][0] == "File" ? records[i][0] + " " + records[i][1] : records[i][0]);
        return numbers;
    }

    TemporaryFolder folder_;
    ObjectId distance_ = kNoObject;
};

TEST_F(SelectionOnTheCommandLine, ListsWhatMeetsEveryOption) {
    using Numbers = std::vector<std::string>;
    const struct {
        Arguments options;
        Numbers listed;
    } cases[] = {
        {{"A.car"}, {"1", "2", "3"}},
        {{"A.car", "--find", "TO WORK"}, {"1"}},
        {{"A.car", "--find", "11/15/2023"}, {"2"}},
        {{"A.car", "--find", "1GTEK19T"}, {}}, // the list shows the name
        {{"A.car", "--from", "2023-11-15"}, {"2", "3"}},
        {{"A.car", "--to", "11/15/2023"}, {"1", "2"}},
        {{"A.car", "--from", "2023-11-15", "--to", "2023-11-15"}, {"2"}},
        {{"A.car", "--from", "2023-11-15T22:14"}, {"3"}},
        {{"A.car", "--period", "last-12-months"}, {}},
        {{"A.car", "--vehicle", "family wagon"}, {"1", "2", "3"}},
        {{"A.car", "--driver", "8"}, {"3"}},
        {{"A.car", "--driver", ""}, {"2"}},
        {{"A.car", "B.car", "--driver", "anna"}, {"A.car 1", "B.car 2"}},
        {{"A.car", "B.car"}, {"A.car 1", "A.car 2", "A.car 3", "B.car 1", "B.car 2"}},
        {{"A.car", "B.car", "--once"}, {"A.car 1", "A.car 2", "A.car 3", "B.car 2"}},
        {{"B.car", "A.car", "--once", "--logger", "K-0042-B"}, {"B.car 1", "B.car 2", "A.car 1", "A.car 2"}},
    };
    for (const auto& c : cases) {
        Arguments arguments = {"list", "trips", "--format", "csv"};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        const Outcome outcome = cli(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_EQ(numbersIn(outcome.out), c.listed) << testing::PrintToString(c.options);
        // Whatever the format, the same records; numbers are found as they read for people.
        arguments[3] = "json";
        EXPECT_EQ(parseJson(cli(arguments).out).size(), c.listed.size());
    }
    const Outcome table = cli({"list", "trips", "A.car", "B.car", "--vehicle", "Pickup"});
    EXPECT_TRUE(table.out.starts_with("File   Trip  Start Time")) << table.out;
    EXPECT_EQ(std::ranges::count(table.out, '\n'), 3);
    EXPECT_EQ(parseJson(cli({"list", "trips", "A.car", "B.car", "--format", "json"}).out).at(4).at("file"),
              JsonValue(std::string("B.car")));
}

TEST_F(SelectionOnTheCommandLine, RefusesWhatItCannotMean) {
    std::ofstream(folder_ / "Notes.txt") << "notes";
    fs::create_hard_link(folder_ / "A.car", folder_ / "Link.csv");
    fs::create_directory(folder_ / "Folder.csv");
    const struct {
        Arguments arguments;
        int exitCode;
        const char* words;
    } cases[] = {
        {{"list", "trips", "A.car", "--from", "2023-13-01"}, 2, "\"2023-13-01\" is no date or time"},
        {{"list", "trips", "A.car", "--from", "2023-11-16", "--to", "2023-11-15"}, 2, "is behind"},
        {{"list", "trips", "A.car", "--from", "2023-11-16", "--period", "last-month"}, 2, "--period"},
        {{"list", "troubles", "A.car", "--driver", "Anna"}, 2, "the Vehicle Trouble Log names no drivers"},
        {{"list", "trips", "A.car", "B.car", "--driver", "Ana"}, 1, "there is no driver \"Ana\""},
        {{"list", "trips", "A.car", "--samples"}, 2, "only json"},
        {{"export", "trips", "A.car", "-o", "B.car"}, 2, "is a Quobrix data file"},
        {{"export", "trips", "A.car", "-o", "Link.csv"}, 2, "is a Quobrix data file"},
        {{"export", "trips", "A.car", "-o", "Trips"}, 2, "name it with --format"},
        {{"export", "trips", "A.car", "-o", ""}, 1, "without a name"},
        {{"export", "trips", "A.car", "-o", "Folder.csv"}, 1, "it is a folder"},
        {{"export", "trips", "A.car", "-o", "Nowhere/Trips.csv"}, 1, "its folder does not exist"},
        {{"export", "trips", "Missing.car", "Notes.txt", "-o", "Trips.csv"}, 1, "Missing.car cannot be opened"},
        {{"export", "trip", "4", "A.car", "-o", "Trips.csv"}, 1, "no trip 4; its trips are 1 to 3"},
        {{"export", "trip", "x", "A.car", "-o", "Trips.csv"}, 2, "\"x\" is no number"},
        {{"export", "trip", "A.car", "-o", "Trips.csv"}, 2, "export trip NUMBER FILE.car"},
        {{"export", "trip", "1", "A.car", "-o", "Trips.csv", "--find", "x"}, 2, "export trip NUMBER FILE.car"},
        {{"export", "trouble", "1", "A.car", "-o", "Trips.csv"}, 2, "have no samples"},
        {{"export", "activity", "1", "A.car", "-o", "Trips.csv"}, 2, "have no samples"},
    };
    const std::string before = textOf(folder_ / "A.car");
    for (const auto& c : cases) {
        const Outcome outcome = cli(c.arguments);
        EXPECT_EQ(outcome.exitCode, c.exitCode) << outcome.error;
        EXPECT_NE(outcome.error.find(c.words), std::string::npos) << outcome.error;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(textOf(folder_ / "A.car"), before);
    EXPECT_FALSE(fs::exists(folder_ / "Trips.csv"));
    EXPECT_EQ(folder_.names(),
              (std::vector<std::string>{"A.car", "B.car", "Folder.csv", "Link.csv", "Notes.txt", "home"}));
}

TEST_F(SelectionOnTheCommandLine, ExportsWhatAListShowsInOneStep) {
    const Arguments selection = {"trips", "A.car", "B.car", "--once", "--units", "Metric"};
    for (const char* format : {"csv", "json"}) {
        const std::string file = std::string("Trips.") + format;
        std::ofstream(folder_ / file) << std::string(100'000, '?');
        Arguments list = selection, write = selection;
        list.insert(list.begin(), "list");
        list.insert(list.end(), {"--format", format});
        write.insert(write.begin(), "export");
        write.insert(write.end(), {"-o", file});
        const Outcome written = cli(write);
        EXPECT_EQ(written.exitCode, 0) << written.error;
        EXPECT_EQ(written.out, file + ": 4 trips, 00:40:00, 48.0 km, 16 events\n");
        EXPECT_EQ(textOf(folder_ / file), cli(list).out);
    }
    const Outcome samples = cli({"export", "trip", "2", "A.car", "-o", "Samples.CSV", "--units", "Metric"});
    EXPECT_EQ(samples.out, "Samples.CSV: 61 samples\n") << samples.error;
    const auto rows = parseCsv(textOf(folder_ / "Samples.CSV"));
    ASSERT_EQ(rows.size(), 62u);
    EXPECT_EQ(rows[0], (std::vector<std::string>{"Sample", "Elapsed Time", "Speed (kph)", "Engine Speed (RPM)",
                                                 "Fuel System Status 1 / 2"}));
    EXPECT_EQ(rows[1], (std::vector<std::string>{"1", "00:00:00", "0", "800", "C / O"}));
    EXPECT_EQ(rows[6], (std::vector<std::string>{"6", "00:00:05", "5", "", "O / C"}));
}

TEST_F(SelectionOnTheCommandLine, NestsWhatARecordOwnsUnderTheKeysThatColumnsTells) {
    const std::string json = cli({"list", "trips", "A.car", "--format", "json", "--samples", "--driver", "Anna"}).out;
    const std::string columns = cli({"columns", "trips", "--format", "json"}).out;
    for (const char* words :
         {"\"TTripLogSampleSpeedColumn\":{\"interval\":1,\"values\":[0,0.2777777777777778,",
          "\"TTripLogParameter1Column\":{\"parameter\":2,\"interval\":2,\"twoValues\":false,\"values\":[13."
          "333333333333334,null,",
          "\"TTripLogParameter4Column\":{\"parameter\":0,\"interval\":1,\"twoValues\":false,\"values\":[]}",
          "\"TTripLogSpeedBandToColumn\":[0,20.1168,26.8224,31.2928,null]",
          "\"TTripLogHardBrakeTimesColumnColumn\":[30,500],\"TTripLogPanicBrakeTimesColumnColumn\":[61]"})
        EXPECT_NE(json.find(words), std::string::npos) << words << "\n" << json;
    for (const char* words :
         {"{\"key\":\"TTripLogStartTimeColumn\",\"heading\":\"Start Time\",\"kind\":\"datetime\",\"unit\":\"s since "
          "1970-01-01 00:00 UTC\"}",
          "\"TTripLogDistanceColumn\",\"heading\":\"Distance\",\"kind\":\"real\",\"unit\":\"m\"}",
          "\"TTripLogDurationColumn\",\"heading\":\"Duration\",\"kind\":\"integer\",\"unit\":\"s\"}",
          "\"TTripLogCommentsColumn\",\"heading\":\"Comments\",\"kind\":\"text\",\"unit\":null}",
          "\"kind\":\"table\",\"unit\":null,\"columns\":[{\"key\":\"TTripLogSampleSpeedColumn\","
          "\"heading\":\"Speed\",\"kind\":\"samples\",\"unit\":\"m/s\"}",
          "\"TTripLogPanicBrakeTimesColumnColumn\",\"heading\":\"Extreme Brake\",\"kind\":\"list\",\"unit\":\"s\"}"})
        EXPECT_NE(columns.find(words), std::string::npos) << words << "\n" << columns;
    const JsonRecord trip = parseJson(cli({"list", "trips", "A.car", "--format", "json"}).out).at(0);
    for (const auto& [key, value] : trip)
        EXPECT_NE(columns.find("\"" + key + "\""), std::string::npos) << key;
    EXPECT_TRUE(cli({"columns", "troubles"}).out.starts_with("Heading ")) << cli({"columns", "troubles"}).error;
}

TEST_F(SelectionOnTheCommandLine, IsNeverWholeWhereSomethingCouldNotBeRead) {
    tamper(folder_ / "B.car", [&](CompoundFile& file) { file.write(std::to_string(distance_), {1, 2, 3}); });
    const struct {
        Arguments files;
        const char* words;
        std::size_t listed;
    } cases[] = {{{"A.car", "Missing.car"}, "Missing.car cannot be opened", 3},
                 {{"A.car", "B.car"}, "parts of B.car cannot be read", 5}};
    for (const auto& c : cases) {
        Arguments list = {"list", "trips", "--format", "csv"}, write = {"export", "trips", "-o", "Trips.csv"};
        list.insert(list.end(), c.files.begin(), c.files.end());
        write.insert(write.end(), c.files.begin(), c.files.end());
        for (const Outcome& outcome : {cli(list), cli(write)}) {
            EXPECT_EQ(outcome.exitCode, 3);
            EXPECT_NE(outcome.error.find(c.words), std::string::npos) << outcome.error;
        }
        EXPECT_EQ(numbersIn(textOf(folder_ / "Trips.csv")).size(), c.listed);
    }
}

#ifndef _WIN32 // where the folder of the user's types follows no variable
TEST_F(SelectionOnTheCommandLine, TheTripTypeReportIsTheSumOfItsTrips) {
    fs::create_directories(folder_ / "home/.local/share/quobrix");
    std::ofstream(folder_ / "home/.local/share/quobrix/triptype.txt") << "Work\t0.3333\tkm\n";
    {
        TQuobrixDocument document; // of 12 km each
        ASSERT_TRUE(document.open(folder_ / "A.car", TDocument::Access::Edit));
        document.trips().column<TTripLogTripTypeColumn>().setAll({"work", "", "Work"});
        ASSERT_TRUE(document.save());
    }
    const Outcome report = cli({"trip-types", "A.car", "--type", "WORK", "--units", "Metric"});
    EXPECT_EQ(report.exitCode, 0) << report.error;
    EXPECT_NE(report.out.find("  Amount        8.00\n"), std::string::npos) << "twice 4.00, not 7.9992\n" << report.out;
    const auto trips = parseCsv(
        cli({"trip-types", "A.car", "B.car", "--once", "--format", "csv", "--from", "2023-11-15", "--units", "Metric"})
            .out);
    ASSERT_EQ(trips.size(), 4u);
    EXPECT_EQ(trips[0][5], "Amount");
    EXPECT_EQ(trips[1][5], "");
    EXPECT_EQ(trips[2][5], "4.00");
    EXPECT_EQ(cli({"trip-types", "A.car", "--type", ""}).out.find("Amount"), std::string::npos);
    EXPECT_NE(cli({"trip-types", "A.car", "--type", "Wrok"}).error.find("there are Work"), std::string::npos);
    EXPECT_EQ(cli({"trip-types", "A.car", "--format", "xlsx"}).exitCode, 2);
    EXPECT_EQ(cli({"trip-types", "A.car", "-o", "A.car", "--format", "csv"}).exitCode, 2) << "no document is replaced";
    EXPECT_EQ(cli({"trip-types", "A.car", "-o", "Trips.xlsx"}).exitCode, 0);
}
#endif

#ifdef _WIN32
TEST_F(SelectionOnTheCommandLine, SaysThatItCannotWriteSpreadsheets) {
    const Outcome outcome = cli({"export", "trips", "A.car", "-o", "Trips.xlsx"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_NE(outcome.error.find("cannot write spreadsheets"), std::string::npos) << outcome.error;
}
#else
TEST_F(SelectionOnTheCommandLine, WritesSpreadsheetsThatOthersRead) {
    const Outcome written = cli({"export", "trips", "A.car", "B.car", "-o", "Trips.xlsx", "--units", "Metric"});
    EXPECT_EQ(written.exitCode, 0) << written.error;
    if (std::system("/usr/bin/python3 -c 'import openpyxl' 2> /dev/null") != 0)
        GTEST_SKIP() << "python3-openpyxl is not installed";
    const Outcome read = runProgram(folder_.path(), "/usr/bin/python3", {QUOBRIX_READ_XLSX, "Trips.xlsx"});
    ASSERT_EQ(read.exitCode, 0) << read.error;
    for (const char* words : {
             "Trip Log, frozen at A2\n",
             "A1 str 'File' General bold\n",
             "Distance (km)",
             "A6 str 'B.car' General\n",
             "B6 int 2 General\n",
             "C2 str 'Family wagon' General\n",
             "G2 datetime 2023-11-14 22:13:20 dd/mm/yyyy hh:mm\n",
             "J2 timedelta 0:10:00 [hh]:mm:ss\n",
             "K2 int 12 #,##0.0\n",
             "X2 str '=to work' General\n",
         })
        EXPECT_NE(read.out.find(words), std::string::npos) << words << "\n" << read.out;

    TQuobrixDocument document;
    auto& stops = document.store().singleton<TAccidentLogTable>();
    stops.insertRows(0, 1);
    stops.column<TAccidentLogTableStartTimeColumn>().set(0, kStart);
    stops.column<TAccidentLogTableTimestampColumn>().set(0, kStart);
    ASSERT_TRUE(document.saveAs(folder_ / "Stop.car"));
    ASSERT_EQ(cli({"export", "accidents", "Stop.car", "-o", "Stop.xlsx"}).exitCode, 0);
    const std::string stop = runProgram(folder_.path(), "/usr/bin/python3", {QUOBRIX_READ_XLSX, "Stop.xlsx"}).out;
    EXPECT_NE(stop.find("B2 datetime 2023-11-14 22:13:20 mm/dd/yyyy hh:mm AM/PM\n"), std::string::npos) << stop;
    EXPECT_NE(stop.find("C2 str '202311142213' General\n"), std::string::npos) << "by the logger's clock: " << stop;

    ASSERT_EQ(cli({"export", "trip", "2", "A.car", "-o", "Samples.xlsx"}).exitCode, 0);
    const std::string samples = runProgram(folder_.path(), "/usr/bin/python3", {QUOBRIX_READ_XLSX, "Samples.xlsx"}).out;
    EXPECT_NE(samples.find("\nD2 int 800 "), std::string::npos) << samples;
    EXPECT_EQ(samples.find("\nD4 "), std::string::npos) << "the vehicle told no engine speed: " << samples;
}

TEST_F(SelectionOnTheCommandLine, NeverTakesHalfASpreadsheetForAWholeOne) {
    TQuobrixDocument document;
    document.activity().insertRows(0, 20'000);
    ASSERT_TRUE(document.saveAs(folder_ / "Long.car"));
    const std::string old = "what was there";
    std::ofstream(folder_ / "Long.xlsx") << old;
    const Outcome whole = cli({"export", "activity", "Long.car", "-o", "Whole.xlsx"});
    ASSERT_EQ(whole.exitCode, 0) << whole.error;
    // The archive has room within the limit, the texts that it is made of have not.
    const std::uintmax_t limit = 2 * fs::file_size(folder_ / "Whole.xlsx") / 512;
    const Outcome limited = runProgram(folder_.path(), "/bin/sh",
                                       {"-c", "ulimit -f $1 && exec \"$0\" export activity Long.car -o Long.xlsx",
                                        QUOBRIX_CLI, std::to_string(limit)});
    EXPECT_EQ(limited.exitCode, 1) << limited.out;
    EXPECT_NE(limited.error.find("the disk is full"), std::string::npos) << limited.error;
    EXPECT_TRUE(textOf(folder_ / "Long.xlsx") == old);
}
#endif

} // namespace
} // namespace quobrix
