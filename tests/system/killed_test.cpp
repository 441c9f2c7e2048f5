/// A program that is killed at any moment leaves the old document or the new one, and the old backup or the new one.
#include "support/sample_trip.h"
#include "system/programs.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
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
    /// Kills the command again and again, each time after PREPARE. JUDGE looks at what is there then, and returns
    /// whether the command has done its work.
    void killOften(const Arguments& arguments, const std::function<void()>& prepare,
                   const std::function<bool()>& judge) {
        const auto sizes = [&] {
            std::vector<std::uintmax_t> all;
            for (const std::string& name : files())
                all.push_back(fs::file_size(folder_ / name));
            return all;
        };
        int undone = 0, begun = 0;
        for (int round = 0; round < rounds_; ++round) {
            prepare();
            const std::vector<std::uintmax_t> before = sizes();
            const Seconds delay = nextMoment();
            SCOPED_TRACE("killed after " + std::to_string(delay.count()) + " s");
            runKilled(delay, arguments);
            const bool done = judge();
            if (HasFailure())
                return;
            learn(done);
            undone += !done;
            begun += !done && sizes() != before;
        }
        std::printf("[  COUNTED ] killed: %d, before it was done: %d, something had been written: %d\n", rounds_,
                    undone, begun);
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

    const auto prepare = [&] {
        put("Old.car", "Doc.car");
        put("Older.car", "Doc.car.bak");
    };
    killOften(downloadInto("Doc.car"), prepare, [&] {
        const Outcome check = cli({"check", "Doc.car"});
        EXPECT_EQ(check.exitCode, 0) << check.out << check.error;
        const std::string found = list("Doc.car"), backup = list("Doc.car.bak");
        EXPECT_TRUE(found == old || found == fresh);
        EXPECT_TRUE(backup == older || (backup == old && found == fresh));
        return found == fresh;
    });
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
    killOften(
        {"compact", "Doc.car"}, [&] { put("Loose.car", "Doc.car"); },
        [&] {
            const std::uintmax_t size = fs::file_size(folder_ / "Doc.car");
            EXPECT_TRUE(size == loose || size == compact);
            EXPECT_EQ(cli({"check", "Doc.car"}).exitCode, 0);
            EXPECT_TRUE(list("Doc.car") == expected);
            return size == compact;
        });
    EXPECT_EQ(cli({"compact", "Doc.car"}).exitCode, 0);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Loose.car"}));
    EXPECT_TRUE(list("Doc.car") == expected);
}

TEST_F(Killed, WhileItMakesADocument) {
    runTimed(downloadInto("New.car"));
    const std::string fresh = list("New.car");
    killOften(
        downloadInto("Doc.car"), [&] { fs::remove(folder_ / "Doc.car"); },
        [&] {
            const bool finished = fs::exists(folder_ / "Doc.car");
            EXPECT_EQ(cli({"check", "Doc.car"}).exitCode, finished ? 0 : 1);
            EXPECT_TRUE(!finished || list("Doc.car") == fresh);
            return finished;
        });
    expectGoesOn("Doc.car", fresh);
}

} // namespace
} // namespace quobrix
