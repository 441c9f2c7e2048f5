#include "model/name_questions.h"
#include "model/quobrix_document.h"
#include "model/serial_number.h"
#include "support/sample_trip.h"
#include "support/scripted_prompter.h"

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
    EXPECT_EQ(vehicles.displayName("E"), "Unknown #4");
}

TEST(Names, OtherNewKeysHaveNoName) {
    TQuobrixDocument document;
    EXPECT_EQ(document.loggers().addMissing(Keys{"K-0042-B"}), Keys{"K-0042-B"});
    EXPECT_EQ(document.drivers().addMissing(Keys{"7", "12"}), (Keys{"7", "12"}));
    EXPECT_EQ(names(document.loggers()), Keys{""});
    EXPECT_EQ(document.loggers().displayName("K-0042-B"), "Unknown");
    EXPECT_EQ(document.drivers().key(1), "12");
    EXPECT_EQ(document.drivers().displayName("12"), "Unknown");
    document.drivers().nameAll(Keys{"12"}, "Ann");
    EXPECT_EQ(names(document.drivers()), (Keys{"", "Ann"}));
}

TEST(Names, KnownKeysLeaveTheTableAsItIs) {
    TQuobrixDocument document;
    document.loggers().addMissing(Keys{"K-0042-B"});
    const auto revision = document.loggers().revision();
    EXPECT_TRUE(document.loggers().addMissing(Keys{"K-0042-B", ""}).empty());
    EXPECT_EQ(document.loggers().revision(), revision);
}

TEST(Names, TenThousandKeysAreAddedAndFound) {
    constexpr std::size_t kCount = 10'000;
    TQuobrixDocument document;
    TVehicleNamesTable& vehicles = document.vehicles();
    Keys keys;
    for (std::size_t i = 0; i < kCount; ++i)
        keys.push_back("VIN" + std::to_string(i));
    EXPECT_EQ(vehicles.addMissing(keys).size(), kCount);
    const Keys given = names(vehicles);
    EXPECT_EQ(std::set<std::string>(given.begin(), given.end()).size(), kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        ASSERT_EQ(vehicles.find(keys[i]), i);
        ASSERT_FALSE(vehicles.inUse(i));
    }
    EXPECT_TRUE(vehicles.addMissing(keys).empty());
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

TEST(Names, DeletingAsksFirstAndThenRefusesAllIfOneIsInUse) {
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

TEST(Names, NewLoggersAndVehiclesAreAskedAboutInTheirNumber) {
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

TEST(Names, ADriversNameIsOneToTwentyCharactersLong) {
    EXPECT_FALSE(isDriverName(""));
    EXPECT_TRUE(isDriverName("A"));
    EXPECT_TRUE(isDriverName("12345678901234567890"));
    EXPECT_FALSE(isDriverName("123456789012345678901"));
    EXPECT_TRUE(isDriverName("ĄĆĘŁŃÓŚŹŻąćęłńóśźżßü")); // 40 bytes
    EXPECT_FALSE(isDriverName("ĄĆĘŁŃÓŚŹŻąćęłńóśźżßü!"));
}

TEST(SerialNumber, TypedOnesAreHeldAgainstTheirNeighboursBounds) {
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
