#include "device/reporter.h"

#include "support/fake_logger_library.h"
#include "support/scripted_prompter.h"

#include <gtest/gtest.h>

namespace quobrix::testing {
namespace {

class ProgressNotes final : public ProgressReporter {
public:
    void show(const TimedProgress& progress) override {
        notes.emplace_back(std::string(progress.title) + " " + std::to_string(progress.total().count()));
    }
    std::vector<std::string> notes;
};

class Reporting : public ::testing::Test {
protected:
    std::string messageFor(LoggerCommand command, const LoggerOutcome& outcome, MessageId expected) {
        ScriptedPrompter prompter{{expected}};
        EXPECT_FALSE(Reporter(calls_, prompter, progress_).report(command, outcome));
        return prompter.shown.empty() ? "" : prompter.shown[0];
    }

    FakeLoggerLibrary fake_;
    LoggerLink link_{FakeLoggerLibrary::library()};
    DirectCalls calls_{link_};
    ProgressNotes progress_;
};

TEST_F(Reporting, ASuccessShowsItsProgress) {
    ScriptedPrompter silent;
    Reporter reporter(calls_, silent, progress_);
    EXPECT_TRUE(reporter.report(LoggerCommand::SetClock, {}));
    EXPECT_TRUE(reporter.report(LoggerCommand::ClearMemory, {}));
    EXPECT_TRUE(reporter.report(LoggerCommand::GetConfiguration, {}));
    EXPECT_TRUE(reporter.report(LoggerCommand::Download, {}));
    EXPECT_EQ(progress_.notes, (std::vector<std::string>{"Setting Time 1175", "Clearing Quobrix 4500"}));
}

TEST_F(Reporting, AFailureIsToldWithItsReason) {
    EXPECT_EQ(messageFor(LoggerCommand::SetClock, {QUOBRIX_PORT_NOT_OPENED, "", ""}, MessageId::PortNotOpened),
              "Unable to set the time\nbecause no serial port\nhas been selected.");
    EXPECT_EQ(messageFor(LoggerCommand::Disarm, {QUOBRIX_TIMEOUT, "COM4", ""}, MessageId::Timeout),
              "Unable to disarm Quobrix\nbecause no Quobrix\nis connected to the current\nserial port, COM4.");
    EXPECT_EQ(
        messageFor(LoggerCommand::EnableLed, {QUOBRIX_NOT_REPORTED, "COM4", "odd %s"}, MessageId::UnexpectedError),
        "Unable to enable the LED\nbecause of an unexpected\nerror (odd %s).\n\nPlease try again.");
    messageFor(LoggerCommand::Download, {kNoLibrary, "", "There is none."}, MessageId::LibraryMissing);
    EXPECT_TRUE(progress_.notes.empty());
}

} // namespace
} // namespace quobrix::testing
