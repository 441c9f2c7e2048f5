#include "support/temporary_folder.h"
#include "units/unit_system_file.h"
#include "units/unit_system_store.h"

#include <gtest/gtest.h>

#include <fstream>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

class UnitStore : public testing::Test {
protected:
    UnitStore() {
        fs::create_directories(folders_.program);
        for (const char* name : {"U.S..us", "Metric.us"})
            fs::copy_file(fs::path(QUOBRIX_DELIVERED) / name, folders_.program / name);
    }

    std::string remembered() const { return settings_.getText("Unit Systems", "Current Unit System"); }
    void put(const char* name, const Bytes& bytes) {
        std::ofstream(folders_.program / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    test::TemporaryFolder root_;
    UnitSystemFolders folders_{root_ / "program", root_ / "user"};
    Settings settings_{std::make_unique<MemorySettings>()};
    TUnitSystem system_;
    UnitSystemStore store_{system_, folders_, &settings_};
};

TEST_F(UnitStore, DeliveredSystems) {
    EXPECT_EQ(store_.listSystems(), (std::vector<std::string>{"Metric", "S.I.", "U.S."}));
    ASSERT_TRUE(store_.loadSystem("U.S."));
    EXPECT_TRUE(system_.locked());
    EXPECT_EQ(system_.formatValueWithUnits(UnitTypeId::Speed, 26.8224), "60 MPH");
    EXPECT_EQ(system_.formatValueWithUnits(UnitTypeId::Temperature, 233.15), "-40 °F");
    EXPECT_EQ(system_.unitName(UnitTypeId::Date), "Month/Day/Year");
    ASSERT_TRUE(store_.loadSystem("Metric"));
    EXPECT_EQ(remembered(), "Metric");
    EXPECT_EQ(system_.formatValueWithUnits(UnitTypeId::Distance, 160934), "160.9 km");
    EXPECT_EQ(system_.unitName(UnitTypeId::Time), "24 Hour");
    EXPECT_EQ(store_.saveSystem().error().kind, ErrorKind::ReadOnly);
    EXPECT_EQ(store_.deleteSystem().error().kind, ErrorKind::ReadOnly);
    EXPECT_EQ(store_.renameSystem("Other").error().kind, ErrorKind::ReadOnly);
}

TEST_F(UnitStore, NewRenamedAndDeletedSystems) {
    ASSERT_TRUE(store_.newSystem("Mine", "Metric"));
    EXPECT_EQ(remembered(), "Mine");
    EXPECT_FALSE(system_.locked());
    system_.setUnit(UnitTypeId::Speed, UnitId::FootPerSecond);
    system_.setDecimals(UnitTypeId::Speed, 4);
    system_.setFractionDiameters(true);
    const UnitChoices mine = system_.choices();
    ASSERT_TRUE(store_.newSystem("Copy", "Mine")); // which saves "Mine" first
    EXPECT_EQ(system_.choices().decimals, mine.decimals);
    ASSERT_TRUE(store_.deleteSystem());
    ASSERT_TRUE(store_.switchSystem("S.I."));
    EXPECT_EQ(remembered(), "S.I.");
    ASSERT_TRUE(store_.loadSystem("Mine"));
    EXPECT_EQ(system_.choices().decimals, mine.decimals);
    EXPECT_EQ(system_.choices().units, mine.units);
    EXPECT_TRUE(system_.fractionDiameters());

    ASSERT_TRUE(store_.renameSystem("Ma\u00DFe"));
    EXPECT_EQ(store_.listSystems(), (std::vector<std::string>{"Ma\u00DFe", "Metric", "S.I.", "U.S."}));
    EXPECT_EQ(remembered(), "Ma\u00DFe");
    ASSERT_TRUE(store_.deleteSystem());
    EXPECT_EQ(system_.name(), "U.S.");
    EXPECT_FALSE(fs::exists(folders_.program / u8"Ma\u00DFe.us"));
}

TEST_F(UnitStore, RefusesNamesThatNoFileCanHaveOrThatExist) {
    const auto refusal = [&](std::string_view name) { return store_.checkName(name)->id; };
    for (const char* name : {"", "  "})
        EXPECT_EQ(refusal(name), MessageId::ErrUsNoName);
    for (const char* name : {"a/b", "..", "a\\b", "x:y", "con", "COM1.old", " x", "x ", "tab\t", ".hidden"})
        EXPECT_EQ(refusal(name), MessageId::ErrUsBadName) << name;
    EXPECT_EQ(refusal(std::string(200, 'x')), MessageId::ErrUsBadName);
    for (const char* name : {"metric", "u.s.", "s.i."})
        EXPECT_EQ(refusal(name), MessageId::ErrUsDlgNew) << name;
    EXPECT_FALSE(store_.checkName("Über 100 %"));
    ASSERT_TRUE(store_.newSystem("Über 100 %", "S.I."));
    EXPECT_EQ(refusal("ÜBER 100 %"), MessageId::ErrUsDlgNew);
    EXPECT_FALSE(store_.newSystem("../escape", "S.I."));
    EXPECT_FALSE(fs::exists(root_ / "escape.us"));
}

TEST_F(UnitStore, ADamagedFileLeavesTheCurrentSystem) {
    ASSERT_TRUE(store_.loadSystem("Metric"));
    const UnitChoices before = system_.choices();
    Bytes whole = encodeUnitSystem(before);
    for (const std::size_t size : {0u, 2u, 3u, 50u, 109u}) {
        put("Short.us", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_EQ(store_.loadSystem("Short").error().kind, ErrorKind::Corrupt) << size;
    }
    EXPECT_EQ(store_.loadSystem("None").error().kind, ErrorKind::NotFound);
    EXPECT_EQ(system_.choices(), before);
    EXPECT_EQ(remembered(), "Metric");
}

TEST_F(UnitStore, ReadsOtherVersionsAndStrangeContent) {
    Bytes bytes = encodeUnitSystem(UnitChoices{});
    const auto unit = [&](UnitTypeId type) -> std::uint8_t& { return bytes[3 + 2 * static_cast<std::size_t>(type)]; };
    unit(UnitTypeId::Speed) = 200;                                        // unknown
    unit(UnitTypeId::Distance) = static_cast<std::uint8_t>(UnitId::Volt); // of another type
    *(&unit(UnitTypeId::Voltage) + 1) = 17;                               // decimals
    bytes.back() = 1;
    bytes[0] = 0; // a version without the option
    Result<UnitChoices> read = decodeUnitSystem("x", bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->units, UnitChoices{}.units);
    EXPECT_EQ(read->decimals[static_cast<std::size_t>(UnitTypeId::Voltage)], 9);
    EXPECT_FALSE(read->fractionDiameters);

    const Bytes few{1, 1, 1, 0, 7, 1}; // only the first type: the others keep their defaults
    read = decodeUnitSystem("x", few);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->units[0], UnitId::Foot);
    EXPECT_EQ(read->decimals[0], 7);
    EXPECT_EQ(read->units[1], UnitId::Metre);
    EXPECT_TRUE(read->fractionDiameters);

    Bytes many(3 + 2 * 255 + 1, 0); // more types than are known
    many[0] = 1;
    many[2] = 255;
    EXPECT_TRUE(decodeUnitSystem("x", many));
}

TEST_F(UnitStore, StartUpTakesTheRememberedSystem) {
    EXPECT_FALSE(store_.loadAtStartUp());
    EXPECT_EQ(system_.name(), "U.S.");
    EXPECT_EQ(remembered(), "") << "the start itself must not choose";

    settings_.setText("Unit Systems", "Current Unit System", "Metric");
    EXPECT_FALSE(store_.loadAtStartUp());
    EXPECT_EQ(system_.name(), "Metric");
    settings_.setText("Unit Systems", "Current Unit System", "S.I.");
    EXPECT_FALSE(store_.loadAtStartUp());
    EXPECT_EQ(system_.name(), "S.I.");

    settings_.setText("Unit Systems", "Current Unit System", "Gone");
    const std::optional<Message> message = store_.loadAtStartUp();
    ASSERT_TRUE(message);
    EXPECT_EQ(messageSpec(message->id).stringId, 31000);
    EXPECT_EQ(message->text, "The most recently used unit system, Gone,\nhas been moved, deleted or renamed.\n\n"
                             "The default S.I. unit system will be used instead.");
    EXPECT_EQ(system_.name(), "U.S.");
    EXPECT_EQ(remembered(), "Gone");

    put("Gone.us", {1, 1});
    EXPECT_EQ(store_.loadAtStartUp()->id, MessageId::ErrUntSyDamaged);
    EXPECT_EQ(system_.name(), "U.S.");
}

TEST_F(UnitStore, FallsBackToTheUsersFolder) {
    // A folder that is a file refuses new entries even to an administrator.
    UnitSystemFolders folders{folders_.program / "Metric.us", folders_.user};
    UnitSystemStore store(system_, folders, &settings_);
    ASSERT_TRUE(store.newSystem("Mine", "S.I."));
    EXPECT_TRUE(fs::exists(folders_.user / "Mine.us"));
    EXPECT_EQ(store_.listSystems(), (std::vector<std::string>{"Metric", "Mine", "S.I.", "U.S."}));
    system_.setDecimals(UnitTypeId::Speed, 5);
    ASSERT_TRUE(store_.saveSystem()); // where it is, not beside the program
    EXPECT_FALSE(fs::exists(folders_.program / "Mine.us"));
}

} // namespace
} // namespace quobrix
