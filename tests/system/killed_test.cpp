/// A download that is killed at any moment leaves the old document or the new one.
#include "system/programs.h"

#include <chrono>
#include <random>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

class Killed : public Programs {
protected:
    static constexpr int kRounds = 25;
    using Seconds = std::chrono::duration<double>;

    void SetUp() override {
        if (!fs::exists("/usr/bin/timeout"))
            GTEST_SKIP() << "timeout is not installed";
        attachHistory("COM3", "K-0042-B", 60);
        attachHistory("COM4", "K-0043-B", 300);
    }

    std::string list(const std::string& file) {
        const Outcome outcome = cli({"list", "trips", file, "--format", "json"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        return outcome.out;
    }

    /// The download of the large history into FILE, killed after DELAY.
    void downloadKilled(const std::string& file, Seconds delay) {
        cliUnder("/usr/bin/timeout", {"--foreground", "--signal=KILL", std::to_string(delay.count())},
                 {"download", "--port", "COM4", "--into", file});
    }

    /// A moment around that at which downloads end. Where it lies is learned from what the earlier moments met, so that
    /// the kills crowd where the saving happens, however fast the machine is.
    Seconds nextMoment() { return typical_ * std::uniform_real_distribution(0.5, 1.2)(random_); }
    void learn(bool finished) { typical_ *= finished ? 0.9 : 1.1; }

    /// The download into FILE, left alone.
    void timedDownload(const std::string& file) {
        const auto begin = std::chrono::steady_clock::now();
        const Outcome outcome = download(file, "COM4");
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        typical_ = std::chrono::steady_clock::now() - begin;
    }

    /// What killed runs left beside the documents must not be in the way of the next one.
    void expectGoesOn(const std::string& file, const std::string& expected) {
        RecordProperty("files", testing::PrintToString(files()));
        EXPECT_EQ(download(file, "COM4").exitCode, 0);
        EXPECT_EQ(list(file), expected);
        EXPECT_TRUE(cli({"check", file}).out.starts_with(file + " is sound"));
    }

    Seconds typical_{}; ///< duration of a download
    std::mt19937 random_{1};
};

TEST_F(Killed, WhileItSavesToAnExistingDocument) {
    ASSERT_EQ(download("Old.car").exitCode, 0);
    fs::copy_file(folder_ / "Old.car", folder_ / "New.car");
    timedDownload("New.car");
    const std::string old = list("Old.car"), fresh = list("New.car");
    ASSERT_NE(old, fresh);

    int unfinished = 0, begun = 0;
    for (int round = 0; round < kRounds; ++round) {
        fs::copy_file(folder_ / "Old.car", folder_ / "Doc.car", fs::copy_options::overwrite_existing);
        const Seconds delay = nextMoment();
        SCOPED_TRACE("killed after " + std::to_string(delay.count()) + " s");
        downloadKilled("Doc.car", delay);
        const Outcome check = cli({"check", "Doc.car"});
        ASSERT_EQ(check.exitCode, 0) << check.out << check.error;
        const std::string found = list("Doc.car");
        ASSERT_TRUE(found == old || found == fresh);
        learn(found == fresh);
        unfinished += found == old;
        begun += found == old && fs::file_size(folder_ / "Doc.car") != fs::file_size(folder_ / "Old.car");
    }
    RecordProperty("unfinished", unfinished);
    RecordProperty("unfinished with something written", begun);
    expectGoesOn("Doc.car", fresh);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "New.car", "Old.car"}));
}

TEST_F(Killed, WhileItMakesADocument) {
    timedDownload("New.car");
    const std::string fresh = list("New.car");
    int unfinished = 0;
    for (int round = 0; round < kRounds; ++round) {
        fs::remove(folder_ / "Doc.car");
        const Seconds delay = nextMoment();
        SCOPED_TRACE("killed after " + std::to_string(delay.count()) + " s");
        downloadKilled("Doc.car", delay);
        const bool finished = fs::exists(folder_ / "Doc.car");
        learn(finished);
        unfinished += !finished;
        if (!finished)
            continue;
        ASSERT_EQ(cli({"check", "Doc.car"}).exitCode, 0);
        ASSERT_TRUE(list("Doc.car") == fresh);
    }
    RecordProperty("unfinished", unfinished);
    expectGoesOn("Doc.car", fresh);
}

} // namespace
} // namespace quobrix
