/// A logger's configuration through the command line: seen, kept as a text, set.
#include "system/programs.h"

#include <fstream>

namespace quobrix {
namespace {

using namespace test;

class Configure : public Programs {
protected:
    void SetUp() override { ASSERT_EQ(sim({"attach", "COM3", "--serial", "K-0042-B"}).exitCode, 0); }
    Outcome configure(Arguments options) {
        options.insert(options.begin(), {"configure", "--port", "COM3"});
        return cli(options);
    }
    void edit(const std::string& old, const std::string& now) {
        std::string text = textOf(folder_ / "kept.txt");
        text.replace(text.find(old), old.size(), now);
        std::ofstream(folder_ / "kept.txt", std::ios::binary) << text;
    }
};

TEST_F(Configure, KeptEditedAndSet) {
    const std::string before = configure({}).out;
    ASSERT_EQ(configure({"--save", "kept.txt"}).exitCode, 0);
    EXPECT_EQ(textOf(folder_ / "kept.txt"), before);
    EXPECT_EQ(configure({"--save", "kept.txt"}).exitCode, 1);
    EXPECT_EQ(configure({"--save", "kept.txt", "--force"}).exitCode, 0);

    edit("Parameter 5 = Battery Voltage", "Parameter 5 = Not Selected");
    edit("Speed Band 1 = 45", "Speed Band 1 = 30.5");
    const Outcome set = configure({"--load", "kept.txt"});
    EXPECT_EQ(set.exitCode, 0) << set.error;
    EXPECT_EQ(set.out, "K-0042-B has its new configuration.\n");
    EXPECT_EQ(configure({}).out, textOf(folder_ / "kept.txt"));

    EXPECT_EQ(configure({"--defaults"}).exitCode, 0); // of the speed bands and thresholds only
    edit("Speed Band 1 = 30.5", "Speed Band 1 = 45");
    EXPECT_EQ(configure({}).out, textOf(folder_ / "kept.txt"));
}

TEST_F(Configure, RefusedOrFailedChangesNothing) {
    const std::string before = configure({}).out;
    ASSERT_EQ(configure({"--save", "kept.txt"}).exitCode, 0);
    const auto expectRefused = [&](const Outcome& outcome, const std::string& words) {
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.error.find(words), std::string::npos) << outcome.error;
        EXPECT_EQ(configure({}).out, before);
    };
    expectRefused(configure({"--load", "none.txt"}), "none.txt cannot be opened because it does not exist");
    edit("Speed Band 1 = 45", "Speed Band 1 = 145");
    expectRefused(configure({"--load", "kept.txt"}), "The speed bands cannot be set");
    edit("Speed Band 1 = 145", "Speed Band = 45");
    expectRefused(configure({"--load", "kept.txt"}), "line 2 names no value that such a file has");
    std::ofstream(folder_ / "kept.txt", std::ios::binary) << std::string(70'000, 'x');
    expectRefused(configure({"--load", "kept.txt"}), "kept.txt is no configuration of a logger: it is too large");
    ASSERT_EQ(sim({"fault", "COM3", "--fail", "SetConfiguration=-7"}).exitCode, 0);
    expectRefused(configure({"--defaults"}), "Unable to update the current configuration");
}

} // namespace
} // namespace quobrix
