#include "model/trip_rules.h"

#include "platform/file_system.h"
#include "settings/settings.h"
#include "support/temporary_folder.h"
#include "tables/table_edits.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace quobrix {
namespace {

TEST(TripTypes, WhatIsReadIsWrittenAgainAndWhatIsNotIsKept) {
    const std::string text = "\xEF\xBB\xBF" // as some editors write it, with the line ends of Windows
                             "Business\t0.655\tmi\t2023-01-01\r\n"
                             "business\t0.67\tmi\t2024-01-01\r\n"
                             "\r\n"
                             "Fahrt zur Arbeit\t0.3\tkm\r\n"
                             "Personal";
    const TripTypes types = readTripTypes(text);
    EXPECT_EQ(tripTypesText(types), "Business\t0.655\tmi\t2023-01-01\n"
                                    "business\t0.67\tmi\t2024-01-01\n"
                                    "Fahrt zur Arbeit\t0.3\tkm\n"
                                    "Personal\n");
    EXPECT_TRUE(types.unread.empty());
    EXPECT_EQ(namesOf(types.types), (std::vector<std::string>{"Business", "Fahrt zur Arbeit", "Personal"}));

    for (const char* line : {"\t0.5\tkm",
                             "A\t0.5",
                             "A\t\tkm",
                             "A\t1e3\tkm",
                             "A\tnan\tkm",
                             "A\t-1\tkm",
                             "A\t1000001\tkm",
                             "A\t0,5\tkm",
                             "A\t0.5\tm",
                             "A\t0.5\tkm\t",
                             "A\t0.5\tkm\t2023-02-29",
                             "A\t0.5\tkm\t23-02-28",
                             "A\t0.5\tkm\t1969-12-31",
                             "A\t0.5\tkm\t2038-01-01",
                             "A\t0.5\tkm\t2023-02-28\t",
                             "\xFF",
                             "A\x01",
                             "B",
                             "b",
                             "Longer than what anybody would call a type"}) {
        const TripTypes some = readTripTypes("B\n" + std::string(line) + "\nC");
        EXPECT_EQ(namesOf(some.types), (std::vector<std::string>{"B", "C"})) << line;
        EXPECT_EQ(some.unread, (std::vector<TripTypes::Unread>{{2, line}})) << line;
        EXPECT_EQ(tripTypesText(some), "B\nC\n" + std::string(line) + "\n");
    }
}

TEST(TripTypes, ARateHoldsFromItsFirstDayUntilTheNextOne) {
    const TripTypes types = readTripTypes("Work\t3\tmi\t2024-01-01\nWork\t1\tkm\nWork\t2\tmi\t2023-01-01\nFun");
    const auto rate = [&](const char* name, const DateTime& time) {
        const TripType* found = rateAt(types.types, name, secondsFromFields(time));
        return found ? *found->rate : -1;
    };
    EXPECT_EQ(rate("Work", {1999, 5, 6}), 1);
    EXPECT_EQ(rate("work", {2022, 12, 31, 23, 59, 59}), 1);
    EXPECT_EQ(rate("Work", {2023, 1, 1}), 2);
    EXPECT_EQ(rate("Work", {2037, 1, 1}), 3);
    EXPECT_EQ(rate("Fun", {2023, 1, 1}), -1);
    EXPECT_EQ(rate("", {2023, 1, 1}), -1);
}

TEST(TripTypes, AUsersFileGoesBeforeTheDeliveredOne) {
    const test::TemporaryFolder folder;
    const TripTypesFolders folders{folder / "user", folder / "program"};
    EXPECT_TRUE(loadTripTypes(folders)->types.empty());
    std::filesystem::create_directory(folders.delivered);
    std::ofstream(folders.delivered / kTripTypesFile) << "Business\n";
    EXPECT_EQ(namesOf(loadTripTypes(folders)->types), std::vector<std::string>{"Business"});
    ASSERT_TRUE(saveTripTypes({}, folders));
    EXPECT_TRUE(loadTripTypes(folders)->types.empty()) << "a person wants none";
    std::filesystem::resize_file(folders.user / kTripTypesFile, 65'537);
    EXPECT_FALSE(loadTripTypes(folders)) << "and nothing takes its place";
    EXPECT_FALSE(saveTripTypes({std::vector<TripType>(3000, TripType{std::string(40, 'x')}), {}}, folders));
    EXPECT_EQ(std::filesystem::file_size(folders.user / kTripTypesFile), 65'537u);
}

TEST(TripTypes, WhatIsTypedIsADayAndANameWithoutBlanks) {
    TripTypesTable table;
    const TUnitSystem units;
    const TimeZone zone = *TimeZone::named("<-03>3<-02>,M11.1.0/0,M2.3.0/0"); // 4 November 2018 began at one o'clock
    const TextContext context{units, zone};
    TableEdits edits(table);
    table.show({{"Work", 0.5, false}}, zone);
    const auto type = [&](std::size_t column, const char* text) {
        return edits.type(kNoObject, column, 0, text, context).refusal;
    };
    EXPECT_EQ(type(3, "11/04/2018 17:30"), "A rate holds from the beginning of a day: enter the day without a time.");
    EXPECT_EQ(type(3, "11/04/2018"), "");
    EXPECT_EQ(type(0, "  R & D "), "");
    EXPECT_EQ(tripTypesText({*table.types(zone), {}}), "R & D\t0.5\tkm\t2018-11-04\n");
}

TEST(TripRules, FitByDayHoursAndVehicle) {
    const auto fit = [](std::string_view rule, const DateTime& start, std::string_view vehicle = "A") {
        return fits(readTripRule(rule).value(), start, vehicle);
    };
    // 20 November 2026 is a Friday.
    const DateTime friday{2026, 11, 20, 8}, saturday{2026, 11, 21, 8}, sunday{2026, 11, 22, 8}, monday{2026, 11, 23, 8};
    EXPECT_TRUE(fit("mon-fri\t\t\t\tX", friday) && fit("mon-fri\t\t\t\tX", monday));
    EXPECT_FALSE(fit("mon-fri\t\t\t\tX", saturday) || fit("mon-fri\t\t\t\tX", sunday));
    EXPECT_TRUE(fit("sat-sun\t\t\t\tX", saturday) && fit("sat-sun\t\t\t\tX", sunday) && fit("sun\t\t\t\tX", sunday));
    EXPECT_FALSE(fit("sun\t\t\t\tX", monday) || fit("sat\t\t\t\tX", friday));
    EXPECT_TRUE(fit("all\t\t\ta\tX", monday)) << "VINs in any case";
    EXPECT_FALSE(fit("all\t\t\tB\tX", monday));

    const auto hours = [&](std::string_view rule) { // of which a trip on that day, or the next one, gets it
        std::string fitting;
        for (const DateTime& day : {DateTime{2026, 11, 20}, DateTime{2026, 11, 21}})
            for (const auto& [hour, minute] : {std::pair{0, 0}, {5, 59}, {6, 0}, {21, 59}, {22, 0}, {23, 59}})
                if (fit(rule, {day.year, day.month, day.day, hour, minute, 59}))
                    fitting += std::to_string(day.day) + ":" + std::to_string(hour * 100 + minute) + " ";
        return fitting;
    };
    EXPECT_EQ(hours("fri\t06:00\t22:00\t\tX"), "20:600 20:2159 ");
    EXPECT_EQ(hours("fri\t\t06:00\t\tX"), "20:0 20:559 ");
    EXPECT_EQ(hours("fri\t22:00\t\t\tX"), "20:2200 20:2359 ");
    EXPECT_EQ(hours("fri\t22:00\t06:00\t\tX"), "20:2200 20:2359 21:0 21:559 ") << "the night of Friday";
    EXPECT_EQ(hours("fri\t22:00\t00:00\t\tX"), "20:2200 20:2359 ");
}

TEST(TripRules, AreKeptInTheirOrderAndReadWithCare) {
    Settings settings(std::make_unique<MemorySettings>());
    const std::vector<TripRule> rules{{"Work", 1, 8 * 60, 17 * 60 + 30, "VAN"}, {"Zürich & back"}};
    saveTripRules(settings, {{rules[0], rules[1], rules[0]}});
    saveTripRules(settings, rules);
    EXPECT_EQ(loadTripRules(settings), rules) << "and no rule of before";
    settings.setText("TripRules", "1", "never\t\t\t\tWork");
    EXPECT_EQ(loadTripRules(settings), std::vector(1, rules[1]));
    saveTripRules(settings, rules);
    EXPECT_EQ(loadTripRules(settings), rules);
    EXPECT_EQ(settings.getText("TripRules", "3"), "never\t\t\t\tWork") << "another version may read it";
    for (const char* text : {"", "all", "all\t\t\t\t", "all\t\t\t\tX\t", "all\t8:00\t\t\tX", "all\t24:00\t\t\tX",
                             "all\t00:60\t\t\tX", "all\t-1:00\t\t\tX", "all\t09:00\t09:00\t\tX", "all\t\t00:00\t\tX",
                             "all\t\t\t\t\xFF", "all\t\t\t\tA type that is longer than types can be, by far"})
        EXPECT_FALSE(readTripRule(text)) << text;
}

TEST(TripRules, AreEditedByNames) {
    TripRulesTable table;
    const TUnitSystem units;
    const TimeZone zone;
    const TextContext context{units, zone};
    TableEdits edits(table);
    table.show(std::vector<TripRule>{{"Work", 0, {}, {}, "OLD"}, {"Gone"}});
    table.offer({"work", "Fun"}, {{"VAN", "Van"}});
    EXPECT_EQ(table.rules().error().detail,
              "Row 2: This trip type is not in the list any more: choose another one, or delete the rule.");
    const auto type = [&](std::size_t column, RowIndex row, const char* text) {
        return edits.type(kNoObject, column, row, text, context).refusal;
    };
    EXPECT_EQ(type(4, 1, "f"), "");
    EXPECT_EQ(type(0, 1, "mon"), "This is not a valid selection.") << "Monday, or until Friday";
    EXPECT_EQ(type(0, 1, "monday"), "");
    EXPECT_EQ(type(1, 1, "9:30"), "");
    EXPECT_EQ(type(2, 1, "25:00"), "This is not a time of day.");
    EXPECT_EQ(type(2, 1, "09:30"), "");
    EXPECT_FALSE(table.rules()) << "no hours";
    EXPECT_EQ(type(2, 1, ""), "");
    EXPECT_EQ(type(3, 1, "van"), "");
    EXPECT_EQ(*table.rules(), (std::vector<TripRule>{{"work", 0, {}, {}, "OLD"}, {"Fun", 3, 570, {}, "VAN"}}));
    table.offer({"Fun"}, {}); // "work" has been renamed on the other page
    EXPECT_EQ(table.column(4).text(0, context), "work");
    EXPECT_FALSE(table.rules());
    while (edits.canUndo())
        edits.undo();
    EXPECT_EQ(table.column(4).text(1, context), "Gone");
}

} // namespace
} // namespace quobrix
