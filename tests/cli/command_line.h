#pragma once

#include "cli/program.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quobrix::test {

// Terminals obey the escape sequence, the single character (U+009B) that stands for its beginning, and the mark
// (U+202E) from which on they write from right to left.
inline const std::string kComment = "-He said \"stop\",\r\nthen \\ \x1B[2J \xC2\x9B"
                                    "2J\xE2\x80\xAE caf\xC3\xA9";

/// quobrix-cli in a folder of its own.
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
    const std::filesystem::path file_ = folder_ / "Test.car";
    ObjectId distanceId_ = kNoObject;
};

} // namespace quobrix::test
