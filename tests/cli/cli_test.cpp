#include "cli/command_line.h"
#include "cli/parsing.h"
#include "summary/summary_database.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

TEST_F(CommandLine, JsonHoldsEveryColumnInBaseValues) {
    makeDocument();
    const Outcome outcome = cli({"list", "trips", "Test.car", "--format", "json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    const std::vector<JsonRecord> records = parseJson(outcome.out);
    ASSERT_EQ(records.size(), 2u);

    const TTripLogTable table;
    std::size_t columns = 0;
    for (std::size_t i = 0; i < table.columnCount(); ++i) {
        const bool expected = table.column(i).kind() != ColumnKind::Table;
        columns += expected;
        EXPECT_EQ(records[0].contains(std::string(table.column(i).spec().key)), expected) << i;
    }
    EXPECT_EQ(records[0].size(), columns);

    const auto& [first, second] = std::tie(records[0], records[1]);
    EXPECT_EQ(first.at("TTripLogStartTimeColumn"), JsonValue(1.0 * kStart));
    EXPECT_EQ(first.at("TTripLogVinColumn"), JsonValue(std::string(kVin)));
    EXPECT_EQ(first.at("TTripLogDriverIDColumn"), JsonValue());
    EXPECT_EQ(second.at("TTripLogDriverIDColumn"), JsonValue(7.0));
    EXPECT_EQ(second.at("TTripLogDistanceColumn"), JsonValue(1234567.891));
    EXPECT_EQ(second.at("TTripLogMaximumSpeedColumn"), JsonValue(75 * kMph)); // to the last bit
    EXPECT_EQ(second.at("TTripLogDurationColumn"), JsonValue(600.0));
    EXPECT_EQ(second.at("TTripLogDisconnectedDuringTripColumn"), JsonValue(false));
    EXPECT_EQ(second.at("TTripLogCommentsColumn"), JsonValue(kComment));

    const auto troubles = parseJson(cli({"list", "troubles", "Test.car", "--format", "json"}).out);
    ASSERT_EQ(troubles.size(), 1u);
    EXPECT_EQ(troubles[0].at("TTroubleLogEngineSpeedColumn"), JsonValue());
    EXPECT_EQ(troubles[0].at("TTroubleLogCommentsColumn"),
              JsonValue(std::string("broken \xEF\xBF\xBD\xEF\xBF\xBD end")));
    EXPECT_TRUE(parseJson(cli({"list", "activity", "Test.car", "--format", "json"}).out).empty());
    EXPECT_TRUE(parseJson(cli({"list", "accidents", "Test.car", "--format", "json"}).out).empty());
}

TEST_F(CommandLine, CsvHoldsCurrentUnitsWithoutGrouping) {
    makeDocument();
    const Outcome outcome = cli({"list", "trips", "Test.car", "--format", "csv", "--units", "Metric"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    const auto records = parseCsv(outcome.out);
    ASSERT_EQ(records.size(), 3u);
    const auto cell = [&](const std::string& heading, std::size_t row) {
        const auto found = std::ranges::find(records[0], heading);
        return found == records[0].end() ? "no column " + heading
                                         : records[row].at(static_cast<std::size_t>(found - records[0].begin()));
    };
    for (const auto& record : records)
        EXPECT_EQ(record.size(), records[0].size());
    EXPECT_EQ(cell("Trip", 2), "2");
    EXPECT_EQ(cell("Distance (km)", 2), "1234.6");
    EXPECT_EQ(cell("Hard Brakes", 2), "2");
    EXPECT_EQ(cell("Duration", 2), "00:10:00");
    EXPECT_EQ(cell("Start Time", 2), "14/11/2023 23:13");
    EXPECT_EQ(cell("Comments", 2), "'-He said \"stop\",\nthen \\  [2J  2J  caf\xC3\xA9"); // harmless to all readers
    EXPECT_EQ(cell("Driver", 2), "'=1+1");
    EXPECT_EQ(cell("Comments", 1), "");
    EXPECT_EQ(std::ranges::count(records[0], "Duration"), 1);
    // Without a choice of the user's the units are those of the United States.
    EXPECT_NE(cli({"list", "trips", "Test.car", "--format", "csv"}).out.find("Distance (Miles)"), std::string::npos);
}

TEST_F(CommandLine, TableAndReportAreForPeople) {
    makeDocument();
    const Outcome table = cli({"list", "trips", "Test.car"});
    ASSERT_EQ(table.exitCode, 0) << table.error;
    EXPECT_EQ(std::ranges::count(table.out, '\n'), 3); // the comment's line break is none of the table's
    EXPECT_NE(table.out.find("767.1 Miles"), std::string::npos) << table.out;
    EXPECT_NE(table.out.find("11/14/2023 10:13 PM"), std::string::npos) << table.out;

    const Outcome report = cli({"report", "trip", "2", "Test.car", "--units", "Metric"});
    ASSERT_EQ(report.exitCode, 0) << report.error;
    EXPECT_TRUE(report.out.starts_with("Trip 2\n"));
    EXPECT_NE(report.out.find("1,234.6 km"), std::string::npos) << report.out;

    const Outcome page = cli({"report", "trip", "2", "Test.car", "--units", "Metric", "--format", "html"});
    ASSERT_EQ(page.exitCode, 0) << page.error;
    EXPECT_TRUE(page.out.starts_with("<!DOCTYPE html>\n")) << page.out;
    EXPECT_NE(page.out.find("<dt>Distance</dt><dd>1,234.6 km</dd>"), std::string::npos) << page.out;
    const Outcome trouble = cli({"report", "trouble", "1", "Test.car"});
    EXPECT_TRUE(trouble.out.starts_with("Problem 1\n")) << trouble.out << trouble.error;
    EXPECT_NE(trouble.out.find("Random/Multiple Cylinder Misfire Detected"), std::string::npos) << trouble.out;
    for (const std::string& text : {table.out, report.out, page.out, trouble.out})
        EXPECT_EQ(text.find_first_of("\x1B\x9B\r"), std::string::npos) << text;
}

TEST_F(CommandLine, DescribesTroubleCodes) {
    const Outcome outcome = cli({"describe", "P0300", "P3500", "p0300", "P030"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.out, "P0300  Random/Multiple Cylinder Misfire Detected\n"
                           "P3500  Unknown Powertrain DTC (SAE Controlled; Reserved)\n"
                           "p0300  Unknown DTC\n"
                           "P030  Invalid DTC\n");
}

TEST_F(CommandLine, StatisticsAreThoseOfTheSummaryDatabase) {
    std::vector<SummaryRecord> records(4);
    for (std::size_t i = 0; i < records.size(); ++i) {
        SummaryRecord& each = records[i];
        each.mark = SummaryRecord::kOurs;
        each.vin = SummaryText(i < 3 ? kVin : "V2");
        each.vehicleName = SummaryText(i < 3 ? "=Wagon" : "Pickup");
        each.driver = SummaryText("7");
        each.start = kStart;
        each.end = kStart + 3600;
        each.distance = 50'000;
        each.events[SummaryRecord::HardBrakes] = {2, 9};
        each.idleTime = each.topBandTime = 1800;
    }
    records[3].parameters[1] = {1, 4, 368.15, 378.15, kNoValue, 65, 0};
    SummaryDatabase database;
    ASSERT_TRUE(database.open(folder_ / "Quobrix.cdb", SummaryDatabase::Access::Write));
    ASSERT_TRUE(database.append(records));
    database.close();
    const std::string before = textOf(folder_ / "Quobrix.cdb");
    const auto statistics = [&](std::vector<std::string> more) {
        std::vector<std::string> arguments{"statistics", "--database", "Quobrix.cdb", "--units", "Metric"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return cli(arguments);
    };
    Outcome outcome = statistics({});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    const std::string out = std::regex_replace(outcome.out, std::regex(" +"), " ");
    for (const char* line : {" Distance 200.0 km\n", " Hard Brakes per 100 km 4.0\n", " Share of Top Speed Band 50%\n",
                             " =Wagon 150.0 km 3 ", " Coolant Temperature 95 °C 00:01:05 00:00:00 105 °C"})
        EXPECT_NE(out.find(line), std::string::npos) << line << "\n" << out;
    outcome = statistics({"--vehicle", "pickup", "--format", "json"});
    const auto values = jsonLeaves(outcome.out);
    EXPECT_EQ(values.at("figures.distance"), JsonValue(50'000.0));
    EXPECT_EQ(values.at("figures.hardBrakes"), JsonValue(2 / 50'000.0));
    EXPECT_EQ(values.at("figures.fewTrips"), JsonValue(true));
    EXPECT_EQ(values.at("vehicles.0.key"), JsonValue("V2"));
    EXPECT_EQ(values.at("parameters.0.timeOver"), JsonValue(65.0));
    EXPECT_EQ(values.at("parameters.0.lowest"), JsonValue());
    EXPECT_NE(statistics({"--vehicle", "pickup"}).out.find("4.0 (fewer than three trips)"), std::string::npos);
    const auto lines = parseCsv(statistics({"--format", "csv", "--driver", "7"}).out);
    EXPECT_EQ(lines.at(1), (std::vector<std::string>{"All", "", "Distance (km)", "200.0", "", "4"}));
    EXPECT_TRUE(std::ranges::any_of(lines, [](const auto& line) { return line[1] == "'=Wagon"; }));
    for (const std::vector<std::string>& line :
         {std::vector<std::string>{"Vehicle", "Pickup", "Share of Idle Time (%)", "50.0", "", "1"},
          {"Parameter", "Coolant Temperature", "High Above Thresh (°C)", "105", "", "1"}})
        EXPECT_NE(std::ranges::find(lines, line), lines.end()) << line[2];
    TQuobrixDocument document;
    document.vehicles().insertRows(0, 1);
    document.vehicles().column<TVehicleNamesVinColumn>().set(0, "V2");
    document.vehicles().column<TVehicleNamesNameColumn>().set(0, "Lorry");
    auto& entries = document.store().singleton<TFuelEntryTable>();
    entries.insertRows(0, 2);
    for (const RowIndex row : {RowIndex{0}, RowIndex{1}}) {
        entries.column<TFuelEntryVehicleColumn>().set(row, "V2");
        entries.column<TFuelEntryTimeColumn>().set(row, kStart + static_cast<std::int32_t>(row) * 86'400);
        entries.column<TFuelEntryOdometerColumn>().set(row, 1e6 + 500e3 * static_cast<double>(row));
        entries.column<TFuelEntryAmountColumn>().set(row, 10);
        entries.column<TFuelEntryFullTankColumn>().set(row, 1);
        entries.column<TFuelEntryTotalPriceColumn>().set(row, 70);
    }
    ASSERT_TRUE(document.saveAs(folder_ / "Fuel.car"));
    outcome = statistics({"--vehicle", "lorry", "--format", "json", "Fuel.car"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(jsonLeaves(outcome.out).at("figures.filledEfficiency"), JsonValue(50'000.0));
    EXPECT_EQ(jsonLeaves(outcome.out).at("figures.fuelPrice"), JsonValue(140.0));
    EXPECT_EQ(jsonLeaves(statistics({"--format", "json"}).out).at("figures.fuelPrice"), JsonValue());
    EXPECT_EQ(statistics({"Missing.car"}).exitCode, 1);
    outcome = cli({"export", "fuel", "Fuel.car", "-o", "fuel.csv", "--units", "Metric"});
    EXPECT_EQ(outcome.out, "fuel.csv: 2 fuel entries\n") << outcome.error;
    const auto written = parseCsv(textOf(folder_ / "fuel.csv"));
    ASSERT_EQ(written.size(), 3u);
    EXPECT_EQ(written[0][7], "Economy (L/100 km)");
    EXPECT_EQ(written[2][0], "Lorry");
    EXPECT_EQ(written[2][7], "7.6");
    EXPECT_EQ(cli({"export", "fuel", "Test.car", "-o", "none.csv"}).exitCode, 1);
    EXPECT_EQ(cli({"export", "fuel", "Fuel.car", "Fuel.car", "-o", "none.csv"}).exitCode, 2);
    EXPECT_FALSE(fs::exists(folder_ / "none.csv"));
    EXPECT_NE(statistics({"--period", "last-month"}).out.find("No trip"), std::string::npos);
    EXPECT_EQ(statistics({"--vehicle", "Tractor"}).exitCode, 1);
    EXPECT_EQ(cli({"statistics"}).exitCode, 1); // there is none, and none is made
    EXPECT_EQ(textOf(folder_ / "Quobrix.cdb"), before);
    EXPECT_FALSE(fs::exists(folder_ / "home" / ".local"));
}

TEST_F(CommandLine, WhatPaintsPagesIsNeededForThemOnly) {
    makeDocument();
    fs::path alone = folder_.path() / fs::path(QUOBRIX_CLI).filename();
    fs::copy_file(QUOBRIX_CLI, alone);
    const auto run = [&](std::vector<std::string> arguments) {
        return runProgram(folder_.path(), alone.string(), arguments);
    };
    const Outcome pdf = run({"print", "trips", "Test.car", "-o", "Trips.pdf"});
    EXPECT_EQ(pdf.exitCode, 2);
    EXPECT_NE(pdf.error.find("cannot make pdf files"), std::string::npos) << pdf.error;
    EXPECT_FALSE(fs::exists(folder_ / "Trips.pdf"));
    EXPECT_EQ(run({"report", "trip", "1", "Test.car", "--format", "pdf"}).exitCode, 2);
    const Outcome html = run({"print", "trips", "Test.car", "-o", "Trips.html"});
    EXPECT_EQ(html.exitCode, 0) << html.error;
    EXPECT_NE(html.out.find("Trips.html: 2 trips, "), std::string::npos) << html.out;
    EXPECT_NE(textOf(folder_ / "Trips.html").find(">1,234,567.89 m</td>"), std::string::npos);
    EXPECT_EQ(run({"report", "trip", "1", "Test.car", "-o", "Trip.txt"}).exitCode, 0);
    EXPECT_TRUE(textOf(folder_ / "Trip.txt").starts_with("Trip 1\n"));
}

TEST_F(CommandLine, ReadingTouchesNothing) {
    makeDocument();
    const std::string before = textOf(file_);
    const auto old = fs::last_write_time(file_) - std::chrono::hours(1);
    fs::last_write_time(file_, old);
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"list", "trips", "Test.car"},
                                                      {"report", "trip", "1", "Test.car"},
                                                      {"check", "Test.car"},
                                                      {"list", "accidents", "Test.car", "--format", "json"},
                                                      {"list", "activity", "Test.car", "--units", "S.I."}})
        EXPECT_EQ(cli(arguments).exitCode, 0);
    EXPECT_EQ(textOf(file_), before);
    EXPECT_EQ(fs::last_write_time(file_), old);
    EXPECT_TRUE(std::ranges::none_of(fs::recursive_directory_iterator(folder_ / "home"),
                                     [](const fs::directory_entry& entry) { return entry.is_regular_file(); }));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()), 2);
}

TEST_F(CommandLine, EveryFailureIsOneClearLine) {
    makeDocument();
    std::ofstream(folder_ / "Garbage.car") << "These are notes about a car.";
    std::ofstream(folder_ / "Empty.car");
    std::ofstream(folder_ / "Short.car", std::ios::binary) << textOf(file_).substr(0, 3000);
    fs::create_directory(folder_ / "Folder.car");
    struct Case {
        std::vector<std::string> arguments;
        int exitCode;
        std::string words;
    };
    const Case cases[] = {
        {{"list", "trips", "Missing.car"}, 1, "Missing.car cannot be opened because it does not exist"},
        {{"check", ""}, 1, "No file can be opened without a name"},
        {{"check", "Garbage.car"}, 1, "not a Quobrix data file"},
        {{"list", "trips", "Empty.car"}, 1, "not a Quobrix data file"},
        {{"report", "trip", "1", "Short.car"}, 1, "it is damaged"},
        {{"check", "Folder.car"}, 1, "it is a folder"},
        {{"report", "trip", "3", "Test.car"}, 1, "no trip 3; its trips are 1 to 2"},
        {{"report", "trip", "0", "Test.car"}, 1, "no trip 0"},
        {{"report", "accident", "1", "Test.car"}, 1, "Test.car holds no severe stops"},
        {{"report", "trip", "-1", "Test.car"}, 1, "no trip -1"},
        {{"report", "trip", "010", "Test.car"}, 1, "no trip 10"},
        {{"report", "trip", "0x1", "Test.car"}, 2, "\"0x1\" is no number of a record"},
        {{"report", "trip", "1.0", "Test.car"}, 2, "\"1.0\" is no number of a record"},
        {{"report", "trip", "99999999999999999999", "Test.car"}, 2, "is no number of a record"},
        {{"print", "trips", "Test.car", "--records", "2-9", "-o", "x.html"}, 1, "Record (9) doesn't exist!"},
        {{"print", "trips", "Test.car", "--records", "0", "-o", "x.html"}, 1, "Record (0) doesn't exist!"},
        {{"print", "trips", "Test.car", "--records", "1-x", "-o", "x.html"}, 2, "'x' is not a valid record"},
        {{"print", "trips", "Test.car", "--records", "2-1", "-o", "x.html"}, 2, "begins behind its end"},
        {{"print", "trips", "Test.car", "-o", "x.docx"},
         2,
         "let its name end in .pdf, .html, or name it with --format"},
        {{"print", "trips", "Test.car", "-o", "./Test.car"}, 2, "is a Quobrix data file"},
        {{"report", "trip", "1", "Test.car", "-o", "Test.car"}, 2, "is a Quobrix data file"},
        {{"list", "trips", "Test.car", "--units", "Nautical"}, 2, "there are Metric, S.I., U.S."},
        {{"list", "journeys", "Test.car"}, 2, "journeys not in"},
        {{"list", "trips"}, 2, "--help"},
        {{}, 2, "--help"},
        {{"journeys", "Test.car"}, 2, "no command \"journeys\""},
        {{"download", "--port", "COM99", "--into", "New.car"}, 1, "This port does not exist"},
        {{"download", "--port", "COM3", "--into", "New.car"}, 1, ""},
        {{"download", "--port", "COM99", "--into", ""}, 1, "No file can be saved without a name"},
        {{"download", "--port", "COM3", "--into", "Garbage.car"}, 1, "not a Quobrix data file"},
        {{"download", "--port", "COM3", "--into", "Folder.car"}, 1, "it is a folder"},
        {{"download", "--port", "COM3", "--into", "Nowhere/New.car"}, 1, "folder does not exist"},
        {{"download", "--port", "COM3", "--into", "Example.car"}, 1, "takes no downloads"},
        {{"compact", "Missing.car"}, 1, "it does not exist"},
        {{"compact", "Garbage.car"}, 1, "not a Quobrix data file"},
    };
    for (const Case& c : cases) {
        const Outcome outcome = cli(c.arguments);
        EXPECT_EQ(outcome.exitCode, c.exitCode) << outcome.error;
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.error.starts_with("quobrix-cli: ")) << outcome.error;
        EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1) << outcome.error;
        EXPECT_NE(outcome.error.find(c.words), std::string::npos) << outcome.error;
    }
    EXPECT_EQ(textOf(folder_ / "Garbage.car"), "These are notes about a car.");
    EXPECT_FALSE(fs::exists(folder_ / "New.car"));
}

TEST_F(CommandLine, AReaderThatGoesAwayIsNoCrash) {
    TQuobrixDocument document;
    document.activity().insertRows(0, 20000);
    ASSERT_TRUE(document.saveAs(file_));
    const Outcome piped = cli({"list", "activity", "Test.car", "--format", "csv"}, StandardOutput::Abandoned);
    EXPECT_EQ(piped.error, "");
    EXPECT_EQ(piped.exitCode, 1);
    EXPECT_EQ(cli({"list", "activity", "Test.car"}, StandardOutput::Refusing).exitCode, 1);
}

TEST_F(CommandLine, WithTooLittleMemoryItSaysSo) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need an address space without limits";
#elif defined(_WIN32)
    GTEST_SKIP() << "Wine keeps no program to the limit of memory that a job has";
#endif
    TQuobrixDocument document;
    document.activity().insertRows(0, 300'000);
    ASSERT_TRUE(document.saveAs(file_));
    document.newDocument(); // lets go of it
    std::set<int> codes;
    const auto whole = static_cast<int>(std::filesystem::file_size(QUOBRIX_CLI) >> 20); // less cannot be begun at all
    for (int megabytes = std::max(8, whole); megabytes <= 200 && !codes.contains(0); megabytes += 2) {
        const Outcome limited = runProgram(
            folder_.path(), "/bin/sh",
            {"-c", "ulimit -v $1 && exec \"$0\" compact Test.car", QUOBRIX_CLI, std::to_string(megabytes * 1024)});
        codes.insert(limited.exitCode);
        if (limited.exitCode == 1) {
            EXPECT_EQ(limited.error, "quobrix-cli: there is not enough memory; close other programs and try again\n");
        }
        EXPECT_EQ(cli({"check", "Test.car"}).exitCode, 0) << megabytes;
    }
    codes.erase(127); // too little to load the program
    EXPECT_EQ(codes, (std::set<int>{0, 1}));
}

TEST_F(CommandLine, SpeaksTheUsersLanguageWhereThereIsATranslation) {
    const fs::path home = folder_ / "data", translations = home / "quobrix" / "translations";
    fs::create_directories(translations);
    fs::copy_file(pathFromUtf8(QUOBRIX_POLISH), translations / "pl.mo");
    const auto error = [&](const char* languages) {
        const std::map<std::string, std::string> environment{
            {"LANGUAGE", languages}, {"XDG_DATA_HOME", utf8(home)}, {"LOCALAPPDATA", utf8(home)}};
        return runProgram(folder_.path(), QUOBRIX_CLI, {"check", "Missing.car"}, {.environment = environment}).error;
    };
    const std::string english = "quobrix-cli: Missing.car cannot be opened because it does not exist.\n";
    EXPECT_EQ(error("de:pl_PL.UTF-8"), "quobrix-cli: Missing.car nie istnieje, więc nie zostanie otwarty.\n");
    EXPECT_EQ(error("en"), english);
    std::ofstream(translations / "pl.mo", std::ios::binary) << "damaged";
    EXPECT_EQ(error("pl"), english);
}

} // namespace
} // namespace quobrix
