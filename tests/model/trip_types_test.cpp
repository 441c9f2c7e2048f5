#include "model/trip_types.h"

#include "platform/file_system.h"
#include "support/temporary_folder.h"
#include "units/date_time.h"

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

} // namespace
} // namespace quobrix
