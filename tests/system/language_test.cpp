/// That the command line speaks the user's language: in one that puts every text in brackets, nothing stands outside.
#include "system/programs.h"

#include "base/path_text.h"
#include "compound/compound_file.h"
#include "model/quobrix_document.h"
#include "platform/file_system.h"
#include "support/pseudo_catalogue.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fstream>
#include <regex>
#include <set>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

/// What may stand outside of brackets, and why.
constexpr const char* kNoTexts[] = {
    "quobrix-(cli|sim)",                                              // the program's name, as it is typed
    "--?[a-z][a-z-]*",                                                // options, likewise
    R"([\w./-]+\.(car|txt|bak|mo|csv|html|pdf|svg))",                 // files
    "COM\\d+",                                                        // ports
    "[A-Z]-\\d{4}-[A-Z]",                                             // serial numbers
    "\\b[A-HJ-NPR-Z0-9]{17}\\b",                                      // VINs
    R"(O \((SF|U)\)|C \(OF\))",                                       // codes of a fuel system's status
    "\\bT[A-Z]\\w+(Column|Table)\\b",                                 // classes, which name what lies in a file
    "\\{[A-Za-z0-9,-]+\\}",                                           // what an option takes: words that are typed
    "\"(Version|(Next Available|Available|Object|Singleton) Ids?)\"", // streams of a file
    "S\\.I\\.|U\\.S\\.|Metric",                                       // unit systems are called as their files
    "QUOBRIX_LIBRARY",
};

class Language : public Programs {
protected:
    void SetUp() override {
        const fs::path translations = folder_ / "data" / "quobrix" / "translations";
        fs::create_directories(translations);
        fs::copy_file(pathFromUtf8(QUOBRIX_BRACKETS), translations / "brackets.mo");
    }

    Outcome spoken(const Arguments& arguments) {
        const std::string home = utf8(folder_ / "data");
        return runProgram(folder_.path(), QUOBRIX_CLI, arguments,
                          {.environment = {{"LANGUAGE", "brackets"}, {"XDG_DATA_HOME", home}, {"LOCALAPPDATA", home}}});
    }

    /// Runs quobrix-cli with ARGUMENTS, which ends with CODE, and fails for words outside of brackets that are none of
    /// OWN, words that people or tests have written.
    void expectTranslated(const Arguments& arguments, int code, const std::set<std::string>& own = {}) {
        const Outcome outcome = spoken(arguments);
        std::string called;
        for (const std::string& argument : arguments)
            called += argument + " ";
        EXPECT_EQ(outcome.exitCode, code) << called << outcome.error;
        EXPECT_FALSE(outcome.out.empty() && outcome.error.empty()) << called;
        for (const std::string& text : {outcome.out, outcome.error}) {
            std::string rest = testing::outsideBrackets(text);
            for (const std::string& word : own)
                for (std::size_t at = word.empty() ? rest.npos : rest.find(word); at != rest.npos; at = rest.find(word))
                    rest.erase(at, word.size());
            for (const char* allowed : kNoTexts)
                rest = std::regex_replace(rest, std::regex(allowed), "");
            std::smatch found;
            EXPECT_FALSE(std::regex_search(rest, found, std::regex("[^\n]*[A-Za-z]{2}[^\n]*")))
                << called << "says: " << found.str();
        }
    }
};

TEST_F(Language, OfListsAndReports) {
    fs::copy_file(pathFromUtf8(QUOBRIX_EXAMPLE), folder_ / "Example.car");
    std::set<std::string> own;
    {
        TQuobrixDocument document;
        ASSERT_TRUE(document.open(folder_ / "Example.car", TDocument::Access::Read));
        const TUnitSystem units;
        const TimeZone zone;
        for (const NamesTable* names :
             std::initializer_list<const NamesTable*>{&document.vehicles(), &document.loggers(), &document.drivers()})
            for (RowIndex row = 0; row < names->rowCount(); ++row)
                own.insert(std::string(names->name(row)));
        for (const LogSpec& log : logs())
            if (const Table* table = document.log(log))
                for (RowIndex row = 0; row < table->rowCount(); ++row)
                    own.insert(table->columnOf(*log.comments).text(row, {units, zone}));
    }
    for (const LogSpec& log : logs()) {
        expectTranslated({"list", std::string(log.name), "Example.car"}, 0, own);
        expectTranslated({"report", std::string(log.recordName), "1", "Example.car"}, 0, own);
    }
    expectTranslated({"report", "trip", "9999", "Example.car", "--units", "Metric"}, 1);
    expectTranslated({"check", "Example.car"}, 0);
    expectTranslated({"compact", "Example.car"}, 1);
    expectTranslated(
        {"columns", "trips"}, 0, // words of the format for programs
        {"integer", "text", "selection", "datetime", "boolean", "real", "table", "list", "s since", "UTC"});
    expectTranslated({"export", "trips", "Example.car", "-o", "Trips.csv"}, 0);
    expectTranslated({"export", "trip", "1", "Example.car", "-o", "Trip.csv"}, 0);
    expectTranslated({"export", "fuel", "Example.car", "-o", "Fuel.csv"}, 1);
    expectTranslated({"print", "trips", "Example.car", "-o", "Trips.html"}, 0);
    expectTranslated({"print", "trips", "Example.car", "--records", "3-999", "-o", "Trips.html"}, 1);
    expectTranslated({"print", "trips", "Example.car", "--records", "3-x", "-o", "Trips.html"}, 2);
    expectTranslated({"print", "trips", "Example.car", "--records", "3-2", "-o", "Trips.html"}, 2);
    expectTranslated({"trip-types", "Example.car"}, 0, own);
    expectTranslated({"trip-types", "Example.car", "--type", "Y"}, 1, {"Y", "Business", "Commuting", "Personal"});
    expectTranslated({"trip-types", "Example.car", "--format", "xlsx"}, 2, {"xlsx"});
    std::set<std::string> monitors = own; // as monitorcodes.txt has them
    monitors.insert({"Misfire", "Fuel System", "Comprehensive Components", "Catalyst", "Heated Catalyst",
                     "Evaporative System", "Secondary Air System", "A/C System Refrigerant", "Oxygen Sensor",
                     "Oxygen Sensor Heater", "EGR System", "Heated", "Heater"});
    expectTranslated({"readiness", "Example.car"}, 0, monitors);
    expectTranslated({"plot", "trip", "1", "Example.car", "-o", "Plot.svg"}, 0);
    expectTranslated({"plot", "trip", "1", "2", "Example.car", "-o", "Plot.svg"}, 0);
    expectTranslated({"download", "--into", "Example.car"}, 1);
}

TEST_F(Language, OfHelpAndRefusals) {
    std::ofstream(folder_ / "Garbage.car") << "These are notes about a car.";
    const std::vector<std::string> commands = {"download", "import", "list",       "export",     "columns",
                                               "report",   "check",  "compact",    "configure",  "describe",
                                               "plot",     "print",  "statistics", "trip-types", "readiness"};
    expectTranslated({"--help"}, 0, {commands.begin(), commands.end()});
    for (const std::string& command : commands)
        expectTranslated({command, "--help"}, 0, {command, "number", "record", "file", "log", "code"});
    expectTranslated({"statistics", "--database", "Missing.cdb"}, 1);
    expectTranslated({"statistics", "--database", "Garbage.car"}, 1);
    for (const char* format : {"text", "csv"})
        expectTranslated({"statistics", "--database", QUOBRIX_SUMMARIES, "--format", format}, 0, {"Wagon", "Anna"});
    expectTranslated({"describe", "P0300", "B3ABC", "P03"}, 0, {"P0300", "B3ABC", "P03"});
    expectTranslated({"check", "Missing.car"}, 1);
    expectTranslated({"check", ""}, 1);
    expectTranslated({"check", "Garbage.car"}, 1);
    expectTranslated({"list", "trips", "Missing.car", "--units", "Nautical"}, 2, {"Nautical"});
    expectTranslated({"report", "trip", "one", "Garbage.car"}, 2, {"one"});
    expectTranslated({"journeys"}, 2, {"journeys"});
    expectTranslated({"list", "trips", "Garbage.car", "--from", "today"}, 2, {"today"});
    expectTranslated({"list", "troubles", "Garbage.car", "--driver", "8"}, 2);
    expectTranslated({"export", "trips", "Garbage.car", "-o", "New.car"}, 2);
    expectTranslated({"export", "trips", "Garbage.car", "-o", "New.txt"}, 2, {"csv", "json", "xlsx"});
    expectTranslated({"export", "trip", "1", "-o", "New.txt"}, 2, {"trip"});
    expectTranslated({"plot", "trip", "Garbage.car", "-o", "New.svg"}, 2, {"plot trip"});
    expectTranslated({"plot", "trip", "1", "Garbage.car", "-o", "New.txt"}, 2);
    expectTranslated({"plot", "trip", "1", "Garbage.car", "-o", "New.svg", "--size", "2"}, 2);
    expectTranslated({"download", "--port", "COM99", "--into", "New.car"}, 1);
    expectTranslated({"download", "--port", "COM3", "--into", "Nowhere/New.car"}, 1);
}

TEST_F(Language, OfDamageAndItsRepair) {
    std::vector<std::uint32_t> cut;
    {
        TQuobrixDocument document;
        document.trips().insertRows(0, 2);
        document.troubles().insertRows(0, 1);
        cut = {document.trips().column<TTripLogDistanceColumn>().id(), document.troubles().id()};
        ASSERT_TRUE(document.saveAs(folder_ / "Test.car"));
    }
    {
        auto disk = openFile(folder_ / "Test.car", FileMode::ReadWrite);
        ASSERT_TRUE(disk);
        auto file = CompoundFile::open(*std::move(disk));
        ASSERT_TRUE(file);
        for (const std::uint32_t id : cut)
            (*file)->write(std::to_string(id), {1, 2, 3});
        (*file)->remove("Object Ids");
        ASSERT_TRUE((*file)->commit());
    }
    expectTranslated({"check", "Test.car"}, 1);
    expectTranslated({"list", "trips", "Test.car"}, 3);
    expectTranslated({"check", "--repair", "Test.car", "--into", "New.car"}, 3);
    expectTranslated({"check", "--repair", "Test.car", "--into", "New.car"}, 1);
    expectTranslated({"check", "New.car"}, 0);
}

TEST_F(Language, OfALogger) {
    attachHistory("COM3", "K-0042-B", 2);
    expectTranslated({"download", "--port", "COM3", "--into", "New.car"}, 0);
    expectTranslated({"download", "--port", "COM3", "--into", "New.car"}, 0);
    ASSERT_EQ(spoken({"configure", "--port", "COM3", "--save", "kept.txt"}).exitCode, 0);
    EXPECT_EQ(textOf(folder_ / "kept.txt"), cli({"configure", "--port", "COM3"}).out) << "files are in no language";
    expectTranslated({"configure", "--port", "COM3", "--save", "kept.txt"}, 1);
    expectTranslated({"configure", "--port", "COM3", "--load", "kept.txt"}, 0);
    std::ofstream(folder_ / "kept.txt") << "Notes\n";
    expectTranslated({"configure", "--port", "COM3", "--load", "kept.txt"}, 1, {"Quobrix configuration 1"});
    ASSERT_EQ(sim({"fault", "COM3", "--fail", "GetConfiguration=-7"}).exitCode, 0);
    expectTranslated({"configure", "--port", "COM3", "--defaults"}, 1);
}

} // namespace
} // namespace quobrix
