// What is said of documents that are damaged, or that nothing is known to be wrong with; what repairs and compacts
// them.
#include "cli/command_line.h"
#include "cli/parsing.h"
#include "support/document_streams.h"

#include <algorithm>
#include <fstream>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

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

} // namespace
} // namespace quobrix
