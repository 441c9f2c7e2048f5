#include "cli/parsing.h"
#include "cli/program.h"
#include "summary/summary_database.h"
#include "support/document_streams.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <regex>
#include <set>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

// Terminals obey the escape sequence, the single character (U+009B) that stands for its beginning, and the mark
// (U+202E) from which on they write from right to left.
const std::string kComment = "-He said \"stop\",\r\nthen \\ \x1B[2J \xC2\x9B"
                             "2J\xE2\x80\xAE caf\xC3\xA9";

class CommandLine : public testing::Test {
protected:
    Outcome cli(const std::vector<std::string>& arguments, StandardOutput output = StandardOutput::Captured) {
        return runProgram(folder_.path(), QUOBRIX_CLI, arguments, {.environment = {}, .output = output});
    }
    Outcome sim(const std::vector<std::string>& arguments) {
        return runProgram(folder_.path(), QUOBRIX_SIM, arguments);
    }

    /// Test.car: two trips, the second with a comment, a driver and a long way; one trouble code; no accident log.
    void makeDocument() {
        TQuobrixDocument document;
        addTrip(document, kStart);
        addTrip(document, kStart + 3600);
        TTripLogTable& trips = document.trips();
        trips.column<TTripLogCommentsColumn>().set(1, kComment);
        trips.column<TTripLogDriverIDColumn>().set(1, 7);
        document.drivers().nameAll(document.drivers().addMissing(std::vector<std::string>{"7"}), "=1+1");
        trips.column<TTripLogDistanceColumn>().set(1, 1234567.891);
        document.troubles().insertRows(0, 1);
        document.troubles().column<TTroubleLogTroubleCodeColumn>().set(0, "P0300");
        document.troubles().column<TTroubleLogCommentsColumn>().set(0, "broken \xFF\xC3 end");
        distanceId_ = trips.column<TTripLogDistanceColumn>().id();
        ASSERT_TRUE(document.saveAs(file_));
    }

    TemporaryFolder folder_;
    const fs::path file_ = folder_ / "Test.car";
    ObjectId distanceId_ = kNoObject;
};

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
        {{"print", "trips", "Test.car", "-o", "x.docx"}, 2, "let its name end in one of pdf, html"},
        {{"print", "trips", "Test.car", "-o", "./Test.car"}, 2, "is a document"},
        {{"report", "trip", "1", "Test.car", "-o", "Test.car"}, 2, "is a document"},
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

TEST_F(CommandLine, CheckSaysWhatItCannotTellOfASoundFile) {
    makeDocument();
    tamper(
        file_, [&](CompoundFile& file) { // the serial numbers of the trips are gone, as in a document older than they
            TQuobrixDocument document;
            ASSERT_TRUE(document.open(file_, TDocument::Access::Read));
            const std::string table = std::to_string(document.trips().id());
            Bytes content = *file.read(table);
            for (std::size_t at = 13; at < content.size(); at += 8)
                if (ByteReader(ByteView(content).subspan(at)).u32() == TTripLogQuobrixSerialNumberColumn::kType.id()) {
                    content.erase(content.begin() + static_cast<std::ptrdiff_t>(at),
                                  content.begin() + static_cast<std::ptrdiff_t>(at + 8));
                    --content[9]; // the number of columns
                    break;
                }
            file.write(table, content);
        });
    const Outcome lacking = cli({"check", "Test.car"});
    EXPECT_EQ(lacking.exitCode, 0) << lacking.error;
    EXPECT_NE(lacking.out.find("note: no download can be added to it"), std::string::npos) << lacking.out;
    tamper(file_, [](CompoundFile& file) { file.write("Version", u32s({4})); });
    const Outcome later = cli({"check", "Test.car"});
    EXPECT_EQ(later.exitCode, 3);
    EXPECT_NE(later.error.find("a later version of this software has written Test.car"), std::string::npos)
        << later.error;
    EXPECT_EQ(later.out.find("is sound"), std::string::npos) << later.out;
}

TEST_F(CommandLine, DamageIsToldByCheckAndByWhatItLeavesOut) {
    makeDocument();
    EXPECT_EQ(cli({"check", "Test.car"}).out.find("Test.car is sound"), 0u);
    Bytes laterLayout = streamsOf(file_)[std::to_string(distanceId_)];
    ++laterLayout[4];
    tamper(file_, [&](CompoundFile& file) { file.write(std::to_string(distanceId_), {1, 2, 3}); });
    const Outcome check = cli({"check", "Test.car"});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_NE(check.out.find("damaged: Trip Log: object " + std::to_string(distanceId_)), std::string::npos)
        << check.out;
    EXPECT_EQ(std::ranges::count(check.error, '\n'), 1);

    const Outcome list = cli({"list", "trips", "Test.car", "--format", "json"});
    EXPECT_EQ(list.exitCode, 3);
    EXPECT_NE(list.error.find("Trip Log"), std::string::npos);
    EXPECT_EQ(parseJson(list.out).at(1).at("TTripLogDistanceColumn"), JsonValue());
    EXPECT_EQ(cli({"list", "troubles", "Test.car"}).exitCode, 0);

    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    const auto expectNoDownload = [&](const std::string& words) {
        const std::string before = textOf(file_);
        const Outcome download = cli({"download", "--port", "COM3", "--into", "Test.car"});
        EXPECT_EQ(download.exitCode, 1);
        EXPECT_EQ(download.error, "quobrix-cli: " + words + "\n");
        EXPECT_EQ(textOf(file_), before);
    };
    expectNoDownload("Nothing can be downloaded into this file because a part of it is damaged (Trip Log). "
                     "Start a new file and download into it.");
    tamper(file_, [&](CompoundFile& file) { file.write(std::to_string(distanceId_), laterLayout); });
    expectNoDownload("Test.car cannot be saved because it was written by a later version of this software.");
    EXPECT_NE(cli({"check", "Test.car"}).error.find("a later version of this software has written parts of Test.car"),
              std::string::npos);
}

/// A log that the index does not name may be there all the same, and an end that is cut off may have held anything.
TEST_F(CommandLine, DoubtIsTold) {
    makeDocument();
    {
        TQuobrixDocument document;
        ASSERT_TRUE(document.open(file_, TDocument::Access::Edit));
        document.store().singleton<TAccidentLogTable>().insertRows(0, 3);
        ASSERT_TRUE(document.save());
    }
    const std::string whole = textOf(file_);
    const auto expectDoubt = [&](const std::vector<std::string>& arguments) {
        const Outcome outcome = cli(arguments);
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_NE(outcome.error.find("there may be more"), std::string::npos) << outcome.error;
    };
    Bytes bytes(whole.begin(), whole.end());
    bytes[76 + 4] = 7; // a second sector of the allocation table, which is none
    bytes[44] = 2;
    const auto put = [&] {
        std::ofstream(file_, std::ios::binary)
            .write(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    };
    put();
    expectDoubt({"list", "accidents", "Test.car"});
    expectDoubt({"report", "trip", "1", "Test.car"});
    EXPECT_EQ(cli({"check", "Test.car"}).exitCode, 1);

    std::ofstream(file_, std::ios::binary) << whole;
    tamper(file_, [&](CompoundFile& file) {
        const Bytes all = *file.read("Singleton Ids");
        ByteReader in(all);
        ByteWriter rest;
        const std::uint32_t count = in.u32();
        rest.u32(count - 1);
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t typeId = in.u32(), id = in.u32();
            if (typeId != TAccidentLogTable::kType.id())
                rest.u32(typeId), rest.u32(id);
        }
        file.write("Singleton Ids", rest.take());
    });
    const Outcome found = cli({"list", "accidents", "Test.car", "--format", "json"});
    EXPECT_EQ(found.exitCode, 3);
    EXPECT_EQ(parseJson(found.out).size(), 3u);
}

TEST_F(CommandLine, TheCheckTellsTheSameOfManyObjectsOnce) {
    TQuobrixDocument document;
    for (int i = 0; i < 12; ++i)
        addTrip(document, kStart + 3600 * i);
    const auto& bands = document.trips().column<TTripLogSpeedBandsTableColumn>();
    std::vector<ObjectId> cut;
    for (RowIndex row = 2; row < 12; ++row)
        cut.push_back(bands.at(row));
    ASSERT_TRUE(document.saveAs(file_));
    document.newDocument();
    tamper(file_, [&](CompoundFile& file) {
        for (const ObjectId id : cut)
            file.write(std::to_string(id), {1});
    });
    const Outcome check = cli({"check", "Test.car"});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_NE(check.out.find("damaged: Trip Log: 10 times, first object " + std::to_string(cut[0])), std::string::npos)
        << check.out;
    EXPECT_LE(std::ranges::count(check.out, '\n'), 3) << check.out; // with the columns that are left over
    EXPECT_NE(check.error.find(" is damaged in 10 of its "), std::string::npos) << check.error;

    const Outcome repair = cli({"check", "--repair", "Test.car", "--into", "New.car"});
    EXPECT_NE(repair.out.find("records 3 to 12: Speed Bands: "), std::string::npos) << repair.out;
}

TEST_F(CommandLine, RepairSavesWhatCanBeReadIntoAnotherFile) {
    makeDocument();
    tamper(file_, [&](CompoundFile& file) {
        file.write(std::to_string(distanceId_), {1, 2, 3});
        file.remove("Object Ids");
    });
    const std::string before = textOf(file_);
    const auto refused = [&](const std::vector<std::string>& arguments, int exitCode, std::string_view words) {
        const Outcome outcome = cli(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_NE(outcome.error.find(words), std::string::npos) << outcome.error;
    };
    refused({"check", "--repair", "Test.car"}, 2, "--into");
    refused({"check", "Test.car", "--into", "New.car"}, 2, "--repair");
    refused({"check", "--repair", "Test.car", "--into", "./Test.car", "--force"}, 1, "the damaged file itself");
    refused({"check", "--repair", "Missing.car", "--into", "New.car"}, 1, "does not exist");
    refused({"check", "--repair", "Test.car", "--into", "Nowhere/New.car"}, 1, "its folder does not exist");

    fs::permissions(file_, fs::perms::owner_read | fs::perms::owner_write);
    const Outcome repair = cli({"check", "--repair", "Test.car", "--into", "New.car"});
    EXPECT_EQ(repair.exitCode, 3);
    EXPECT_EQ(fs::status(folder_ / "New.car").permissions(), fs::status(file_).permissions())
        << "what is private stays";
    EXPECT_NE(repair.out.find("lost: Trip Log: object " + std::to_string(distanceId_)), std::string::npos)
        << repair.out;
    EXPECT_NE(repair.out.find("Trip Log 2"), std::string::npos) << repair.out;
    EXPECT_NE(repair.error.find("1 part of Test.car could not be recovered"), std::string::npos) << repair.error;
    EXPECT_EQ(cli({"check", "New.car"}).exitCode, 0);
    EXPECT_EQ(parseJson(cli({"list", "trips", "New.car", "--format", "json"}).out).size(), 2u);

    refused({"check", "--repair", "Test.car", "--into", "New.car"}, 1, "it exists");
    EXPECT_EQ(cli({"check", "--repair", "New.car", "--into", "Again.car"}).exitCode, 0); // nothing more is lost
    {
        TQuobrixDocument open;
        ASSERT_TRUE(open.open(folder_ / "New.car", TDocument::Access::Edit));
        refused({"check", "--repair", "Test.car", "--into", "New.car", "--force"}, 1, "another program is using it");
    }
    EXPECT_EQ(cli({"check", "--repair", "Test.car", "--into", "New.car", "--force"}).exitCode, 3);
    const Outcome unprinted =
        cli({"check", "--repair", "Test.car", "--into", "New.car", "--force"}, StandardOutput::Refusing);
    EXPECT_EQ(unprinted.exitCode, 3);
    EXPECT_NE(unprinted.error.find("New.car has been written, but standard output cannot"), std::string::npos)
        << unprinted.error;
    EXPECT_EQ(textOf(file_), before);
}

TEST_F(CommandLine, CompactRemovesUnusedSpaceAndNothingElse) {
    makeDocument();
    {
        TQuobrixDocument document;
        ASSERT_TRUE(document.open(file_, TDocument::Access::Edit));
        for (int i = 0; i < 60; ++i)
            addTrip(document, kStart + 9000 * i);
        ASSERT_TRUE(document.save());
        document.trips().removeRows(2, 60);
        ASSERT_TRUE(document.save());
    }
    const Streams streams = streamsOf(file_);
    const auto before = fs::file_size(file_);
    const Outcome outcome = cli({"compact", "Test.car"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_LT(fs::file_size(file_), before / 2);
    EXPECT_EQ(outcome.out, "Test.car: " + std::to_string(before) + " bytes before, " +
                               std::to_string(fs::file_size(file_)) + " bytes now\n");
    EXPECT_TRUE(streamsOf(file_) == streams);
    const Outcome unprinted = cli({"compact", "Test.car"}, StandardOutput::Refusing);
    EXPECT_EQ(unprinted.exitCode, 3);
    EXPECT_TRUE(unprinted.error.starts_with("quobrix-cli: Test.car has been compacted, but standard output cannot"))
        << unprinted.error;

    TQuobrixDocument running;
    ASSERT_TRUE(running.open(file_, TDocument::Access::Edit));
    const Outcome refused = cli({"compact", "Test.car"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.error.find("Test.car cannot be compacted because another program is using it"), std::string::npos)
        << refused.error;
    running.newDocument();
    tamper(file_, [](CompoundFile& file) { file.write("Object Ids", {1}); });
    EXPECT_NE(cli({"compact", "Test.car"}).error.find("because it is damaged"), std::string::npos);
}

TEST_F(CommandLine, DownloadAddsNothingTwice) {
    const std::string name = "Ausfl\u00FCge '\u8ECA'.car";
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    const Outcome first = cli({"download", "--port", "COM3", "--into", name});
    ASSERT_EQ(first.exitCode, 0) << first.error;
    EXPECT_EQ(first.error, "");
    EXPECT_TRUE(first.out.starts_with("New: 4 trips")) << first.out;
    EXPECT_EQ(parseJson(cli({"list", "trips", name, "--format", "json"}).out).size(), 4u);

    // Started without standard output, the document must not take its place and receive the result.
    // The document is saved all the same.
    for (const StandardOutput unwritable : {StandardOutput::None, StandardOutput::Refusing}) {
        if (unwritable == StandardOutput::None && kNoOutputIsNoFailure)
            continue;
        fs::remove(folder_ / name);
        const Outcome second = cli({"download", "--port", "COM3", "--into", name}, unwritable);
        EXPECT_EQ(second.exitCode, 3);
        EXPECT_TRUE(second.error.starts_with("quobrix-cli: " + name +
                                             " has been saved, but standard output cannot be written: "))
            << second.error;
        EXPECT_EQ(cli({"check", name}).exitCode, 0);
    }

    const Outcome third = cli({"download", "--port", "COM3", "--into", name});
    EXPECT_TRUE(third.out.starts_with("Nothing new. Already present: 4 trips")) << third.out;
    EXPECT_EQ(jsonLeaves(cli({"statistics", "--format", "json"}).out).at("figures.trips"), JsonValue(4.0));
    const std::string before = textOf(folder_ / name);
    ASSERT_EQ(sim({"detach", "COM3"}).exitCode, 0);
    EXPECT_EQ(cli({"download", "--port", "COM3", "--into", name}).exitCode, 1);
    EXPECT_EQ(textOf(folder_ / name), before);
    EXPECT_TRUE(
        std::ranges::none_of(fs::recursive_directory_iterator(folder_ / "home"), [](const fs::directory_entry& entry) {
            return entry.is_regular_file() && entry.path().filename() != "download.log" &&
                   entry.path().filename() != "Quobrix.cdb";
        })); // no setting was written
}

TEST_F(CommandLine, ADownloadWithoutRecordsMakesNoDocument) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    const auto expectNone = [&](int exitCode) {
        const Outcome outcome = cli({"download", "--port", "COM3", "--into", "New.car"});
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.error;
        EXPECT_NE(outcome.error.find("New.car has not been made"), std::string::npos) << outcome.error;
        EXPECT_FALSE(fs::exists(folder_ / "New.car"));
    };
    expectNone(0); // it holds none
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    ASSERT_EQ(sim({"fault", "COM3", "--fail", "GetLogRecords", "--fail", "GetAccidentLogRecords"}).exitCode, 0);
    expectNone(1);
}

TEST_F(CommandLine, LogFilesAreImported) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    ASSERT_EQ(sim({"export", "COM3", "Drives.txt"}).exitCode, 0);
    ASSERT_EQ(sim({"detach", "COM3"}).exitCode, 0);
    const Outcome first = cli({"import", "Drives.txt", "--into", "New.car"});
    EXPECT_EQ(first.exitCode, 0) << first.error;
    EXPECT_TRUE(first.out.starts_with("New: 4 trips")) << first.out;
    const Outcome again = cli({"import", "Drives.txt", "--into", "New.car"});
    EXPECT_TRUE(again.out.starts_with("Nothing new. Already present: 4 trips")) << again.out;
    const std::string before = textOf(folder_ / "New.car");
    std::ofstream(folder_ / "Letter.txt") << "Dear Sirs";
    for (const char* file : {"Letter.txt", "None.txt", ".", "New.car"}) {
        const Outcome refused = cli({"import", file, "--into", "New.car"});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_EQ(refused.error, "quobrix-cli: File selected is not a log file!\n");
    }
    EXPECT_EQ(textOf(folder_ / "New.car"), before);
}

TEST_F(CommandLine, ClearsAndSetsTheClockOnlyOfWhatIsSaved) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B", "--clock-offset", "7200"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "1"}).exitCode, 0);
    const auto used = [&] { return sim({"memory", "COM3"}).out; };
    const std::string full = used();
    const auto download = [&](const std::string& file, std::vector<std::string> more) {
        more.insert(more.begin(), {"download", "--port", "COM3", "--into", file});
        return cli(more);
    };
    const auto starts = [&](const std::string& file) {
        return parseJson(cli({"list", "trips", file, "--format", "json"}).out).at(0).at("TTripLogStartTimeColumn");
    };
    fs::create_directories(folder_ / "Folder.car");
    EXPECT_EQ(download("Folder.car", {"--clear", "--set-clock"}).exitCode, 1);
    EXPECT_EQ(used(), full);
    EXPECT_EQ(download("Plain.car", {}).exitCode, 0);
    EXPECT_EQ(used(), full);
    EXPECT_EQ(download("Shifted.car", {"--time", "computer"}).exitCode, 0);
    EXPECT_NEAR(std::get<double>(starts("Plain.car")) - std::get<double>(starts("Shifted.car")), 7200, 2);

    ASSERT_EQ(sim({"fault", "COM3", "--fail", "ClearLogs"}).exitCode, 0);
    const Outcome failed = download("Plain.car", {"--clear"});
    EXPECT_EQ(failed.exitCode, 3) << "saved, but not cleared";
    EXPECT_NE(failed.error.find("Unable to clear the Quobrix"), std::string::npos) << failed.error;
    ASSERT_EQ(sim({"fault", "COM3", "--clear"}).exitCode, 0);
    EXPECT_EQ(used(), full);
    EXPECT_EQ(download("Plain.car", {"--clear"}).exitCode, 0);
    EXPECT_NE(used(), full);
    EXPECT_EQ(cli({"check", "Plain.car"}).exitCode, 0);

    ASSERT_EQ(sim({"generate", "COM3", "--trips", "4", "--seed", "2"}).exitCode, 0);
    EXPECT_EQ(download("Plain.car", {"--set-clock"}).exitCode, 0);
    EXPECT_EQ(download("None.car", {"--set-clock"}).exitCode, 0);
}

TEST_F(CommandLine, UnparsableLogsAreNamed) {
    ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0);
    ASSERT_EQ(sim({"generate", "COM3", "--trips", "20", "--seed", "1"}).exitCode, 0);
    const std::vector<std::string> download = {"download", "--port", "COM3", "--into", "New.car"};
    const struct {
        std::vector<std::string> fault; ///< of the simulated logger
        std::string error, out;
    } cases[] = {
        {{"--fail", "GetLogRecords=-7", "--once"},
         "the trips, trouble codes and activity (Unknown result)",
         "New: 1 severe stop.\n"},
        {{"--fail", "GetAccidentLogRecords", "--after", "1"},
         "the second accident log (Unknown result)",
         "New: 20 trips, 7 events. Already present: 1 severe stop.\n"},
        {{"--garbage"},
         "trip 11 and 9 more",
         "Nothing new. Already present: 10 trips, 3 events. Refused: 10 trips, 4 events, 1 severe stop, 1 set of stop "
         "samples.\n"},
        {{"--clear"}, "", "Nothing new. Already present: 20 trips, 7 events, 1 severe stop.\n"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> fault = {"fault", "COM3"};
        fault.insert(fault.end(), c.fault.begin(), c.fault.end());
        ASSERT_EQ(sim(fault).exitCode, 0);
        const Outcome outcome = cli(download);
        EXPECT_EQ(outcome.exitCode, c.error.empty() ? 0 : 3);
        EXPECT_EQ(outcome.out, c.out);
        EXPECT_NE(outcome.error.find(c.error), std::string::npos) << outcome.error;
        EXPECT_EQ(outcome.error.empty(), c.error.empty()) << outcome.error;
    }
    const Outcome wrong = sim({"fault", "COM3", "--fail", "GetLogRecord"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_NE(wrong.error.find("GetLogRecord is no function"), std::string::npos) << wrong.error;
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
    for (int megabytes = 8; megabytes <= 200 && !codes.contains(0); megabytes += 2) {
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
