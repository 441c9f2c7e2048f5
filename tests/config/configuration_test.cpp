#include "config/configuration_codes.h"
#include "config/configuration_flow.h"
#include "config/configuration_rules.h"
#include "config/configuration_text.h"
#include "support/fake_logger_library.h"
#include "support/scripted_prompter.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quobrix::testing {
namespace {

const LoggerConfiguration kPresent{.bandLimits = {45.000000001, 60, 70},
                                   .brakeThresholds = {2.745862, 4.707192},
                                   .accelerationThresholds = {0.1, 1e-300},
                                   .parameters = {0x0C, 0x42, 0xF9, 0xE1, 0x03},
                                   .intervals = {1, 3, 16, 32, -7}};

TEST(ConfigurationText, GivesBackWhatWasWritten) {
    const std::string text = configurationText(kPresent);
    for (const char* line :
         {"Parameter 1 = Engine Speed\nInterval 1 = 5  # s\n", "Parameter 2 = code 66\nInterval 2 = code 3",
          "Parameter 3 = Not Selected\n", "Hard Braking = 2.745862  # m/s²\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line << " in\n" << text;
    const auto read = readConfigurationText(text);
    ASSERT_TRUE(read) << read.error().detail;
    EXPECT_EQ(*read, kPresent);

    std::string edited = "\xEF\xBB\xBF" + text; // as an editor of another system leaves it
    for (std::size_t at = 0; (at = edited.find('\n', at)) != std::string::npos; at += 2)
        edited.insert(at, "\r");
    EXPECT_EQ(*readConfigurationText(edited + "\r\n# the end\r\n"), kPresent);
}

TEST(ConfigurationText, SaysWhatIsWrongWithIt) {
    const std::string text = configurationText(kPresent);
    const auto with = [&](const std::string& old, const std::string& now) {
        return std::string(text).replace(text.find(old), old.size(), now);
    };
    const struct {
        std::string text, detail;
        ErrorKind kind = ErrorKind::Corrupt;
    } kCases[] = {
        {"", "it has to begin with the line \"Quobrix configuration 1\"", ErrorKind::NotADocument},
        {"[Speed]\nLimit=3", "it has to begin with the line \"Quobrix configuration 1\"", ErrorKind::NotADocument},
        {text.substr(0, text.find("\nSpeed") + 1), "Speed Band 1 is missing"},
        {with("Speed Band 1", "Speed Limit 1"), "line 2 names no value that such a file has"},
        {with("Speed Band 2", "Speed Band 1"), "line 3 tells Speed Band 1 again"},
        {with("Extreme Braking = 4.707192", ""), "Extreme Braking is missing"},
        {text.substr(0, text.size() - 1), "it does not end with the end of a line, so that something may be missing"},
        {with("2.745862", "1e999"), "line 5 has no usable value of Hard Braking"},
        {with("2.745862", "2,7"), "line 5 has no usable value of Hard Braking"},
        {with("Engine Speed", "Engine Sped"), "line 9 has no usable value of Parameter 1"},
        {with("Interval 1 = 5", "Interval 1 = 15"), "line 10 has no usable value of Interval 1"},
        {with("code 66", "code 99999999999"), "line 11 has no usable value of Parameter 2"},
    };
    for (const auto& each : kCases) {
        const auto read = readConfigurationText(each.text);
        ASSERT_FALSE(read) << each.detail;
        EXPECT_EQ(read.error().detail, each.detail);
        EXPECT_EQ(read.error().kind, each.kind) << each.detail;
    }
}

TEST(ConfigurationRules, LookAtWhatIsChanged) {
    using Configuration = LoggerConfiguration;
    const auto problem = [](const std::function<void(Configuration&)>& change) -> std::optional<MessageId> {
        Configuration changed = kPresent;
        change(changed);
        const auto found = configurationProblem(changed, kPresent);
        return found ? std::optional(found->id) : std::nullopt;
    };
    EXPECT_EQ(problem([](Configuration& c) { c.bandLimits = {10, 20, 158.4}; }), std::nullopt);
    for (const auto& bands : {std::array{10., 10., 20.}, std::array{0., 10., 20.}, std::array{1., std::nan(""), 2.},
                              std::array{10., 20., 158.5}, std::array{20., 10., 30.}})
        EXPECT_EQ(problem([&](Configuration& c) { c.bandLimits = bands; }), MessageId::SpeedBandsOutOfRange);
    EXPECT_EQ(problem([](Configuration& c) { c.brakeThresholds = {1, 19.62}; }), MessageId::ThresholdsOutOfRange);
    EXPECT_EQ(problem([](Configuration& c) { c.accelerationThresholds = {3, 2}; }), MessageId::ThresholdsOutOfRange);
    EXPECT_EQ(problem([](Configuration& c) {
                  c.parameters = {0xF9, 0x0D, 0x0C, 0xF9, 0x0D};
              }),
              MessageId::DuplicateParameters);
    EXPECT_EQ(problem([](Configuration& c) { c.parameters = {0xF9, 0xF9, 0x42, 0x42, 0x0D}; }), std::nullopt);
}

class Configure : public ::testing::Test {
protected:
    Configure() {
        fake_.configuration = kPresent;
        fake_.loggers["COM3"] = "K-0042-B";
        LockedLogger(link_).openPort("COM3");
    }
    /// Other speed bands; TOLD is what the person is told.
    bool write(std::initializer_list<ScriptedPrompter::Line> told) {
        ScriptedPrompter prompter(told);
        ConfigurationFlow flow(calls_, prompter, progress_);
        std::optional<LoggerConfiguration> configuration = flow.read();
        if (meanwhile_)
            meanwhile_();
        if (configuration)
            configuration->bandLimits = {10, 20, 30};
        const bool done = configuration && flow.write(*configuration);
        shown_ = prompter.shown;
        return done;
    }

    FakeLoggerLibrary fake_;
    LoggerLink link_{FakeLoggerLibrary::library()};
    DirectCalls calls_{link_};
    ProgressReporter progress_;
    std::function<void()> meanwhile_; // between reading and writing
    std::vector<std::string> shown_;
};

TEST_F(Configure, LeavesTheRestToTheBit) {
    EXPECT_TRUE(write({}));
    LoggerConfiguration expected = kPresent;
    expected.bandLimits = {10, 20, 30};
    EXPECT_EQ(fake_.configuration, expected);

    fake_.configuration.brakeThresholds[0] = std::nan(""); // which a logger told, and nobody has edited
    EXPECT_TRUE(write({}));
    EXPECT_TRUE(std::isnan(fake_.configuration.brakeThresholds[0]));
    fake_.configuration = expected;

    ScriptedPrompter silent;
    EXPECT_TRUE(ConfigurationFlow(calls_, silent, progress_).writeDefaults());
    EXPECT_EQ(fake_.configuration, withDefaultLimits(kPresent));
    EXPECT_EQ(fake_.configuration.intervals, kPresent.intervals);
}

TEST_F(Configure, TellsWhatWasNotTaken) {
    fake_.alters = [](LoggerConfiguration& c) { c.bandLimits[0] *= 1 + 1e-7; }; // rounded
    EXPECT_TRUE(write({}));
    fake_.alters = [](LoggerConfiguration& c) {
        c.bandLimits[2] = 31;
        c.parameters[0] = 0x0D;
    };
    EXPECT_FALSE(write({{MessageId::ConfigurationDiffers}}));
    EXPECT_NE(shown_.at(0).find("Speed Band 3: 31 instead of 30 MPH\n"
                                "Parameter 1: Vehicle Speed instead of Engine Speed\n"),
              std::string::npos)
        << shown_.at(0);
}

TEST_F(Configure, WritesToNoOtherLogger) {
    meanwhile_ = [&] { fake_.loggers["COM3"] = "K-0043-B"; };
    EXPECT_FALSE(write({{MessageId::AnotherLogger}}));
    EXPECT_EQ(fake_.configuration, kPresent);
}

TEST_F(Configure, TellsEachFailureOnce) {
    for (const char* function : {"GetSerialNumberAndTime", "GetConfiguration", "SetConfiguration"})
        for (const bool atFirst : {true, false}) {
            SCOPED_TRACE(std::string(function) + (atFirst ? "" : ", when it is written"));
            const auto fail = [&] { fake_.results[function] = QUOBRIX_TIMEOUT; };
            meanwhile_ = nullptr;
            if (atFirst)
                fail();
            else
                meanwhile_ = fail;
            EXPECT_FALSE(write({{MessageId::Timeout}}));
            fake_.results.clear();
        }
}

} // namespace
} // namespace quobrix::testing
