#include "model/name_questions.h"
#include "model/quobrix_document.h"
#include "model/serial_number.h"
#include "support/sample_trip.h"
#include "support/scripted_prompter.h"
#include "tables/tabbed_text.h"
#include "tables/table_edits.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <set>

namespace quobrix::testing {
namespace {

using Keys = std::vector<std::string>;
using Rows = std::vector<RowIndex>;

Keys names(const NamesTable& table) {
    Keys result;
    for (RowIndex row = 0; row < table.rowCount(); ++row)
        result.push_back(table.name(row));
    return result;
}

TEST(Names, NewVehiclesGetTheSmallestFreeNumbers) {
    TQuobrixDocument document;
    TVehicleNamesTable& vehicles = document.vehicles();
    EXPECT_EQ(vehicles.addMissing(Keys{"A", "", "B", "A", "C"}), (Keys{"A", "B", "C"}));
    vehicles.column<TVehicleNamesNameColumn>().set(1, "Van");
    EXPECT_EQ(vehicles.addMissing(Keys{"C", "D", "E"}), (Keys{"D", "E"}));
    EXPECT_EQ(names(vehicles), (Keys{"Unknown #1", "Van", "Unknown #3", "Unknown #2", "Unknown #4"}));
    std::string buffer;
    EXPECT_EQ(vehicles.displayName("E", buffer), "Unknown #4");
}

TEST(Names, OtherNewKeysHaveNoName) {
    TQuobrixDocument document;
    EXPECT_EQ(document.loggers().addMissing(Keys{"K-0042-B"}), Keys{"K-0042-B"});
    EXPECT_EQ(document.drivers().addMissing(Keys{"7", "12"}), (Keys{"7", "12"}));
    EXPECT_EQ(names(document.loggers()), Keys{""});
    std::string buffer;
    EXPECT_EQ(document.loggers().displayName("K-0042-B", buffer), "Unknown");
    EXPECT_EQ(document.drivers().key(1), "12");
    EXPECT_EQ(document.drivers().displayName("12", buffer), "Unknown");
    document.drivers().nameAll(Keys{"12"}, "Ann");
    EXPECT_EQ(names(document.drivers()), (Keys{"", "Ann"}));
}

TEST(Names, AKeyIsInUseWhileAnyLogRefersToIt) {
    TQuobrixDocument document;
    test::addTrip(document, 1'700'000'000); // which adds its vehicle
    TVehicleNamesTable& vehicles = document.vehicles();
    vehicles.addMissing(Keys{"WVWZZZ1KZAW000001"});
    document.drivers().addMissing(Keys{"2"});
    EXPECT_TRUE(vehicles.inUse(0));
    EXPECT_FALSE(vehicles.inUse(1));
    EXPECT_FALSE(document.drivers().inUse(0));

    document.trips().column<TTripLogDriverIDColumn>().set(0, 2);
    EXPECT_TRUE(document.drivers().inUse(0));
    TAccidentLogTable& accidents = document.store().singleton<TAccidentLogTable>();
    accidents.insertRows(0, 1);
    accidents.column<TAccidentLogTableVinColumn>().set(0, "WVWZZZ1KZAW000001");
    EXPECT_TRUE(vehicles.inUse(1));
    document.trips().removeRows(0, 1);
    EXPECT_FALSE(vehicles.inUse(0));
}

TEST(Names, RecordedDriverNumbersAreNoErrors) {
    TQuobrixDocument document;
    test::addTrip(document, 1'700'000'000);
    document.trips().column<TTripLogDriverIDColumn>().set(0, -5);
    document.drivers().addMissing(Keys{"-5", "-6"});
    const TUnitSystem units;
    const TimeZone zone;
    TableChecker checker(document.drivers());
    EXPECT_TRUE(checker.cell(0, 0, {units, zone}).empty());
    ASSERT_EQ(checker.cell(0, 1, {units, zone}).size(), 1u) << "this one can be put right";
}

TEST(Names, DeletingAsksAndRefusesKeysInUse) {
    TQuobrixDocument document;
    test::addTrip(document, 1'700'000'000);
    document.trips().column<TTripLogDriverIDColumn>().set(0, 2);
    document.vehicles().addMissing(Keys{"A", "B"});
    document.loggers().addMissing(Keys{"K-0042-B", "K-0043-B"});
    document.drivers().addMissing(Keys{"2", "3"});

    ScriptedPrompter prompter{{MessageId::DeleteVehicle, Answer::No},
                              {MessageId::DeleteVehicle},
                              {MessageId::DeleteVehicle},
                              {MessageId::CannotDeleteVin},
                              {MessageId::DeleteDriver},
                              {MessageId::DeleteDriver},
                              {MessageId::CannotDeleteDriver},
                              {MessageId::CannotDeleteSerialNumber}};
    EXPECT_FALSE(mayDelete(document.vehicles(), Rows{0}, prompter)); // asked even about one that is in use
    EXPECT_TRUE(mayDelete(document.vehicles(), Rows{1, 2}, prompter));
    EXPECT_FALSE(mayDelete(document.vehicles(), Rows{1, 0, 2}, prompter));
    EXPECT_TRUE(mayDelete(document.drivers(), Rows{1}, prompter));
    EXPECT_FALSE(mayDelete(document.drivers(), Rows{0}, prompter));
    EXPECT_TRUE(mayDelete(document.loggers(), Rows{1}, prompter)); // not asked about
    EXPECT_FALSE(mayDelete(document.loggers(), Rows{0, 1}, prompter));
    EXPECT_EQ(prompter.shown[3], "Unable to delete. One or more of the selected vehicles are\nreferenced elsewhere in "
                                 "this file and cannot be deleted;\nthese entries are \"in use\".");
}

TEST(Names, NewKeysAreAskedAbout) {
    {
        ScriptedPrompter silent;
        const NewKeys wanted = askForNames({{}, {}, {"1", "2"}}, silent);
        EXPECT_TRUE(wanted.loggers.empty() && wanted.vehicles.empty() && wanted.drivers.empty());
    }
    {
        ScriptedPrompter prompter{{MessageId::NewLogger}, {MessageId::NewVehicles, Answer::No}};
        const NewKeys wanted = askForNames({{"K-0042-B"}, {"A", "B"}, {}}, prompter);
        EXPECT_EQ(wanted.loggers, Keys{"K-0042-B"});
        EXPECT_TRUE(wanted.vehicles.empty());
    }
    ScriptedPrompter prompter{{MessageId::NewLoggers, Answer::No}, {MessageId::NewVehicle}};
    const NewKeys wanted = askForNames({{"K-0042-B", "K-0043-B"}, {"A"}, {}}, prompter);
    EXPECT_TRUE(wanted.loggers.empty());
    EXPECT_EQ(wanted.vehicles, Keys{"A"});
}

class NameEditing : public ::testing::Test {
protected:
    /// Types TEXT into a cell; says why it is refused.
    std::string type(const NamesTable& table, std::size_t column, RowIndex row, std::string_view text) {
        return edits_.type(table.id(), column, row, text, context_).refusal;
    }
    std::vector<std::string> warnings(const NamesTable& table, RowIndex row, std::string_view text) {
        std::vector<std::string> result;
        for (const Finding& warning : edits_.type(table.id(), 0, row, text, context_).warnings)
            result.push_back(warning.text);
        return result;
    }

    TQuobrixDocument document_;
    TableEdits edits_{document_};
    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
};

TEST_F(NameEditing, VinsAreCapitalAndDoubted) {
    TVehicleNamesTable& vehicles = document_.vehicles();
    edits_.insertRows(vehicles.id(), 0, 3);
    EXPECT_TRUE(warnings(vehicles, 0, " wvwzzz1kzaw000001").empty());
    EXPECT_EQ(vehicles.key(0), "WVWZZZ1KZAW000001");
    EXPECT_EQ(warnings(vehicles, 1, "OLDTIMER 1").size(), 2u); // its length, and its O and blank
    EXPECT_EQ(warnings(vehicles, 2, "WVWZZZ1KZAW00000").size(), 1u);
    EXPECT_EQ(type(vehicles, 0, 2, "WVWZZZ1KZAW000001"), "This value must be unique (case insensitive).");
    EXPECT_EQ(type(vehicles, 0, 2, ""), "This value is required but has not yet been defined.");
    EXPECT_EQ(vehicles.key(2), "WVWZZZ1KZAW00000");
}

TEST_F(NameEditing, RefusalsHaveTheirOwnWords) {
    edits_.insertRows(document_.loggers().id(), 0);
    const std::string format = "Invalid serial number format. The serial number must be in the format \"AA-99-A\".";
    EXPECT_EQ(type(document_.loggers(), 0, 0, "AA-99-A"), format);
    EXPECT_EQ(type(document_.loggers(), 0, 0, ""), "");
    EXPECT_EQ(type(document_.loggers(), 0, 0, " K-0042-B\t"), "") << "as copied from somewhere";
    EXPECT_EQ(document_.loggers().key(0), "K-0042-B");

    const DriverNamesTable& drivers = document_.drivers();
    edits_.insertRows(drivers.id(), 0);
    const std::string length = "Not a valid driver name. Length should be 1-20 characters long.";
    EXPECT_EQ(type(drivers, 1, 0, "123456789012345678901"), length);
    EXPECT_EQ(type(drivers, 1, 0, "  "), length);
    EXPECT_EQ(type(drivers, 1, 0, "ĄĆĘŁŃÓŚŹŻąćęłńóśźżßü"), "") << "20 characters of 40 bytes";
    EXPECT_EQ(type(drivers, 1, 0, ""), length);
    EXPECT_EQ(type(drivers, 0, 0, "1234"), "");
    EXPECT_EQ(drivers.column(0).text(0, context_), "1234");
}

TEST_F(NameEditing, PastedDriversMayStayNameless) {
    const DriverNamesTable& drivers = document_.drivers();
    document_.drivers().addMissing(Keys{"1", "2", "3"});
    const std::vector<std::size_t> columns{0, 1};
    const Rows rows{0, 1, 2};
    const auto paste = [&](const char* text) {
        return edits_.paste(drivers.id(), columns, rows, *TabbedText::parse(text), context_);
    };
    EXPECT_EQ(paste("1\t\n2\tAnn\n3\t\n").refusal, "");
    EXPECT_EQ(names(drivers), (Keys{"", "Ann", ""}));
    const EditOutcome refused = paste("1\tBob\n2\t\n3\t\n");
    EXPECT_EQ(refused.refusal, "Not a valid driver name. Length should be 1-20 characters long.");
    EXPECT_EQ(refused.row, 1u);
    EXPECT_EQ(names(drivers), (Keys{"", "Ann", ""}));
}

TEST_F(NameEditing, EmptyingANameIsTypingNothing) {
    const DriverNamesTable& drivers = document_.drivers();
    document_.drivers().addMissing(Keys{"1", "2"});
    ASSERT_EQ(type(drivers, 1, 1, "Ann"), "");
    const std::vector<std::size_t> name{1};
    const auto empty = [&](const Rows& rows) { return edits_.fill(drivers.id(), name, rows, {}, context_, "cut"); };
    const EditOutcome refused = empty({0, 1});
    EXPECT_EQ(refused.refusal, "Not a valid driver name. Length should be 1-20 characters long.");
    EXPECT_EQ(refused.row, 1u);
    edits_.clear();
    EXPECT_TRUE(empty({0}).ok());
    EXPECT_FALSE(edits_.canUndo()) << "there was nothing to empty";
    EXPECT_EQ(names(drivers), (Keys{"", "Ann"}));
}

TEST_F(NameEditing, AKeyInUseIsKeptAndItsNameIsNot) {
    test::addTrip(document_, 1'700'000'000);
    const TVehicleNamesTable& vehicles = document_.vehicles();
    EXPECT_EQ(type(vehicles, 0, 0, "WVWZZZ1KZAW000001"),
              "This cannot be changed because records of this file refer to it.");
    EXPECT_EQ(type(vehicles, 0, 0, test::kVin), "");
    EXPECT_EQ(type(vehicles, 1, 0, "Van"), "");
    EXPECT_EQ(document_.trips().column<TTripLogVinColumn>().text(0, context_), "Van");
    edits_.undo();
    EXPECT_EQ(document_.trips().column<TTripLogVinColumn>().text(0, context_), "Unknown #1");
}

TEST_F(NameEditing, AVehicleBurnsWhatIsChosen) {
    test::addTrip(document_, 1'700'000'000);
    const TVehicleNamesTable& vehicles = document_.vehicles();
    const auto& fuels = vehicles.column<TVehicleNamesFuelColumn>();
    const std::size_t column = vehicles.indexOf("TVehicleNamesFuelColumn");
    EXPECT_EQ(fuels.text(0, context_), "Unknown");
    EXPECT_EQ(vehicles.fuelOf(test::kVin), Fuel::Unknown);
    EXPECT_EQ(type(vehicles, column, 0, "die"), "") << "as its beginning is enough";
    EXPECT_EQ(vehicles.fuelOf(test::kVin), Fuel::Diesel);
    EXPECT_NE(type(vehicles, column, 0, "Steam"), "");
    EXPECT_EQ(fuels.text(0, context_), "Diesel");
    edits_.undo();
    EXPECT_EQ(fuels.text(0, context_), "Unknown");
    EXPECT_EQ(vehicles.fuelOf("no such vehicle"), Fuel::Unknown);
}

TEST_F(NameEditing, ARowWithoutAKeyIsUnused) {
    test::addTrip(document_, 1'700'000'000); // no driver was identified
    TVehicleNamesTable& vehicles = document_.vehicles();
    edits_.insertRows(vehicles.id(), 0);
    EXPECT_EQ(type(vehicles, 1, 0, "New van"), "");
    document_.trips().column<TTripLogVinColumn>().set(0, "");
    EXPECT_EQ(document_.trips().column<TTripLogVinColumn>().text(0, context_), "Unknown");
    EXPECT_FALSE(vehicles.inUse(0));
}

TEST(SerialNumber, TypedOnes) {
    for (const char* accepted : {"A-1234-B", "A-12X4-B", "A-123X-B", "A-X234-B", "A-1234-b"})
        EXPECT_TRUE(isAcceptedTyped(accepted)) << accepted;
    for (const char* refused : {"AA-99-A", "A-1X34-B", "a-1234-B", "A-1234-B ", "A-12.4-B", "A-123.-B", "A-.234-B",
                                "A-1234_B", "A-1234-9", "A_1234-B", ""})
        EXPECT_FALSE(isAcceptedTyped(refused)) << refused;
    EXPECT_TRUE(isSerialNumber("A-1234-B"));
    for (const char* malformed : {"A-12X4-B", "A-1234-b", "A-X234-B"})
        EXPECT_FALSE(isSerialNumber(malformed)) << malformed;
}

} // namespace
} // namespace quobrix::testing
