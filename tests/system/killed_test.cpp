/// A program that is killed at any moment leaves the old document or the new one, and the old backup or the new one.
#include "support/sample_trip.h"
#include "system/programs.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

class Killed : public Programs {
protected:
    /// How often each command is killed; QUOBRIX_KILLS asks for more.
    const int rounds_ = std::getenv("QUOBRIX_KILLS") ? std::atoi(std::getenv("QUOBRIX_KILLS")) : 25;
    using Seconds = std::chrono::duration<double>;

    /// TO is what FROM is. The library for Windows cannot copy over a file.
    void put(const char* from, const char* to) {
        fs::remove(folder_ / to);
        fs::copy_file(folder_ / from, folder_ / to);
    }

    void SetUp() override {
        attachHistory("COM2", "K-0041-B", 10);
        attachHistory("COM3", "K-0042-B", 60);
        attachHistory("COM4", "K-0043-B", 300);
    }

    std::string list(const std::string& file) {
        const Outcome outcome = cli({"list", "trips", file, "--format", "json"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        return outcome.out;
    }

    /// The command, killed after DELAY.
    void runKilled(Seconds delay, const Arguments& arguments) {
        runProgram(folder_.path(), QUOBRIX_CLI, arguments, {.environment = {}, .killedAfter = delay.count()});
    }
    /// Adds the large history to FILE.
    static Arguments downloadInto(const std::string& file) { return {"download", "--port", "COM4", "--into", file}; }

    /// A moment around that at which the command ends. Where it lies is learned from what the earlier moments met, so
    /// that the kills crowd where the saving happens, however fast the machine is.
    Seconds nextMoment() { return typical_ * std::uniform_real_distribution(0.5, 1.2)(random_); }
    void learn(bool finished) { typical_ *= finished ? 0.9 : 1.1; }

    /// The command, left alone.
    void runTimed(const Arguments& arguments) {
        const auto begin = std::chrono::steady_clock::now();
        const Outcome outcome = cli(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        typical_ = std::chrono::steady_clock::now() - begin;
    }
    void report(const char* what, int count) {
        RecordProperty(what, count);
        std::printf("[  COUNTED ] %s: %d of %d\n", what, count, rounds_);
    }

    /// What killed runs left beside the documents must not be in the way of the next one.
    void expectGoesOn(const std::string& file, const std::string& expected) {
        RecordProperty("files", testing::PrintToString(files()));
        EXPECT_EQ(download(file, "COM4").exitCode, 0);
        EXPECT_EQ(list(file), expected);
        EXPECT_TRUE(cli({"check", file}).out.starts_with(file + " is sound"));
    }

    Seconds typical_{}; ///< duration of the command
    std::mt19937 random_{1};
};

TEST_F(Killed, WhileItSavesToAnExistingDocument) {
    ASSERT_EQ(download("Older.car", "COM2").exitCode, 0);
    put("Older.car", "Old.car");
    ASSERT_EQ(download("Old.car").exitCode, 0);
    put("Old.car", "New.car");
    runTimed(downloadInto("New.car"));
    const std::string older = list("Older.car"), old = list("Old.car"), fresh = list("New.car");
    ASSERT_NE(old, fresh);

    int unfinished = 0, begun = 0, backups = 0;
    for (int round = 0; round < rounds_; ++round) {
        put("Old.car", "Doc.car");
        put("Older.car", "Doc.car.bak");
        const std::size_t before = files().size();
        const Seconds delay = nextMoment();
        SCOPED_TRACE("killed after " + std::to_string(delay.count()) + " s");
        runKilled(delay, downloadInto("Doc.car"));
        const Outcome check = cli({"check", "Doc.car"});
        ASSERT_EQ(check.exitCode, 0) << check.out << check.error;
        const std::string found = list("Doc.car"), backup = list("Doc.car.bak");
        ASSERT_TRUE(found == old || found == fresh);
        ASSERT_TRUE(backup == older || (backup == old && found == fresh));
        learn(found == fresh);
        unfinished += found == old;
        begun += found == old &&
                 (files().size() > before || fs::file_size(folder_ / "Doc.car") != fs::file_size(folder_ / "Old.car"));
        backups += backup == old;
    }
    report("saves that did not happen", unfinished);
    report("of which something was written", begun);
    report("backups replaced", backups);
    expectGoesOn("Doc.car", fresh);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak", "New.car", "New.car.bak", "Old.car",
                                                 "Old.car.bak", "Older.car"}));
}

TEST_F(Killed, WhileItCompactsADocument) {
    {
        TQuobrixDocument document;
        for (int i = 0; i < 1200; ++i)
            addTrip(document, 1'700'000'000 + 3600 * i);
        ASSERT_TRUE(document.saveAs(folder_ / "Loose.car"));
        document.trips().removeRows(0, 700);
        ASSERT_TRUE(document.save());
        document.newDocument();
        fs::remove(folder_ / "Loose.car.bak");
    }
    const std::string expected = list("Loose.car");
    const std::uintmax_t loose = fs::file_size(folder_ / "Loose.car");
    put("Loose.car", "Doc.car");
    runTimed({"compact", "Doc.car"});
    const std::uintmax_t compact = fs::file_size(folder_ / "Doc.car");
    ASSERT_LT(compact, loose);
    int unfinished = 0, begun = 0;
    for (int round = 0; round < rounds_; ++round) {
        put("Loose.car", "Doc.car");
        const std::size_t before = files().size();
        const Seconds delay = nextMoment();
        SCOPED_TRACE("killed after " + std::to_string(delay.count()) + " s");
        runKilled(delay, {"compact", "Doc.car"});
        const std::uintmax_t size = fs::file_size(folder_ / "Doc.car");
        ASSERT_TRUE(size == loose || size == compact);
        ASSERT_EQ(cli({"check", "Doc.car"}).exitCode, 0);
        ASSERT_TRUE(list("Doc.car") == expected);
        learn(size == compact);
        unfinished += size == loose;
        begun += size == loose && files().size() > before;
    }
    report("compactions that did not happen", unfinished);
    report("of which something was written", begun);
    EXPECT_EQ(cli({"compact", "Doc.car"}).exitCode, 0);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Loose.car"}));
    EXPECT_TRUE(list("Doc.car") == expected);
}

TEST_F(Killed, WhileItMakesADocument) {
    runTimed(downloadInto("New.car"));
    const std::string fresh = list("New.car");
    int unfinished = 0;
    for (int round = 0; round < rounds_; ++round) {
        fs::remove(folder_ / "Doc.car");
        const Seconds delay = nextMoment();
        SCOPED_TRACE("killed after " + std::to_string(delay.count()) + " s");
        runKilled(delay, downloadInto("Doc.car"));
        const bool finished = fs::exists(folder_ / "Doc.car");
        learn(finished);
        unfinished += !finished;
        if (!finished)
            continue;
        ASSERT_EQ(cli({"check", "Doc.car"}).exitCode, 0);
        ASSERT_TRUE(list("Doc.car") == fresh);
    }
    report("documents that were not made", unfinished);
    expectGoesOn("Doc.car", fresh);
}

} // namespace
} // namespace quobrix
