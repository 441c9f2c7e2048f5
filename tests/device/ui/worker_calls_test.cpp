#include "device/ui/worker_calls.h"

#include "device/ports.h"
#include "device/reporter.h"
#include "support/scripted_prompter.h"
#include "support/slow_logger_library.h"

#include <QAbstractButton>
#include <QLabel>
#include <QProgressBar>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <thread>

namespace quobrix::testing {
namespace {

using namespace std::chrono_literals;

/// Fails the test if a wait is still shown when a question comes up.
class PrompterOverTheWindow final : public ScriptedPrompter {
public:
    using ScriptedPrompter::ScriptedPrompter;
    Answer ask(const Message& question) override {
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << question.text;
        return ScriptedPrompter::ask(question);
    }
};

class WorkerCallsTest : public ::testing::Test {
protected:
    void look(QWidget& dialog) {
        const auto text = [&](const char* name) { return dialog.findChild<QLabel*>(QLatin1String(name))->text(); };
        dialogs_[text("LoggerWaitText")] += !dialog.property("seen").toBool();
        dialog.setProperty("seen", true);
        const QString shown = text("LoggerWaitText") + QStringLiteral(": ") + text("LoggerWaitStep");
        if (seen_.isEmpty() || seen_.last() != shown)
            seen_ << shown;
        auto* cancel = dialog.findChild<QAbstractButton*>();
        cancellable_ = cancel->isVisible();
        EXPECT_EQ(dialog.findChild<QProgressBar*>()->accessibleName(), text("LoggerWaitText"));
        if (shown == cancelAt_) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
            pressed_ = true;
        }
    }
    PortFlows flows(Prompter& prompter) {
        return {calls_, prompter, settings_, [](const std::string&) { return ""; }};
    }

    FakeLoggerLibrary fake_;
    Settings settings_{std::make_unique<MemorySettings>()};
    LoggerLink link_{FakeLoggerLibrary::library()};
    QWidget window_;
    TPollingThread worker_{link_, [](std::shared_ptr<const LoggerStatus>) {}, {1h, 0ms}};
    WorkerCalls calls_{worker_, window_, {1ms, 2ms}};
    /// By what they show first. On a busy computer even a call of no time may get a dialog.
    std::map<QString, int> dialogs_;
    QStringList seen_;
    QString cancelAt_;
    bool cancellable_ = false;
    std::atomic<bool> pressed_ = false;
    SlowLoggerLibrary slow_{fake_, [this](QWidget& dialog) { look(dialog); }};
};

TEST_F(WorkerCallsTest, AScanIsOneWait) {
    EXPECT_LE(WorkerCalls::Times{}.blink, 50ms);
    PrompterOverTheWindow silent;
    EXPECT_EQ(flows(silent).scan(), ScanResult::NotFound);
    EXPECT_EQ(dialogs_[QStringLiteral("Opening Port")], 1);
    EXPECT_TRUE(cancellable_);
    for (int port = 1; port <= 10; ++port)
        EXPECT_TRUE(seen_.contains(QStringLiteral("Opening Port: COM%1, step %1 of 11").arg(port))) << port;
    EXPECT_FALSE(QApplication::activeModalWidget());
}

TEST_F(WorkerCallsTest, CancelEndsAScan) {
    settings_.setText("Serial Ports", "Default", "COM2");
    cancelAt_ = QStringLiteral("Opening Port: COM3, step 3 of 11");
    ScriptedPrompter silent;
    EXPECT_EQ(flows(silent).scan(), ScanResult::Cancelled);
    EXPECT_EQ(fake_.count("OpenPort COM4"), 0);
    EXPECT_TRUE(seen_.contains(QStringLiteral("Opening Port: Cancelling when the Quobrix has answered...")));
    EXPECT_EQ(LockedLogger(link_).status().port, "COM2");
    worker_.resume(); // from the start of the program
    slow_.hurry();
    EXPECT_TRUE(QTest::qWaitFor([&] { return LockedLogger(link_).status().portOpen; }, 20'000));
    EXPECT_EQ(LockedLogger(link_).status().port, "COM2");
}

TEST_F(WorkerCallsTest, PollingGoesOnDuringAQuestion) {
    fake_.loggers["COM4"] = "K-0042-B";
    PrompterOverTheWindow prompter{{MessageId::PortDetected, Answer::No}, {MessageId::NoPortDetected, Answer::No}};
    EXPECT_FALSE(flows(prompter).scanOrChoose());
    EXPECT_EQ(dialogs_[QStringLiteral("Opening Port")], 2) << "before the question and behind it";
    PrompterOverTheWindow accepting{{MessageId::PortDetected, Answer::Yes}};
    EXPECT_TRUE(flows(accepting).ensureLogger(true));
    EXPECT_EQ(fake_.openPort, "COM4");
}

TEST_F(WorkerCallsTest, ACommandThatWritesCannotBeCancelled) {
    fake_.loggers["COM1"] = "K-0042-B";
    EXPECT_TRUE(calls_.run({"Opening Port"}, [](LockedLogger& logger) { logger.openPort("COM1"); }));
    cancelAt_ = QStringLiteral("Setting Time: ");
    ScriptedPrompter silent;
    ProgressReporter noProgress;
    EXPECT_TRUE(Reporter(calls_, silent, noProgress).run(LoggerCommand::SetClock, [](LockedLogger& logger) {
        return logger.setTime(5);
    }));
    EXPECT_EQ(dialogs_[QStringLiteral("Setting Time")], 1);
    EXPECT_FALSE(cancellable_);
    EXPECT_EQ(fake_.count("SetTime 5"), 1);

    cancelAt_ = QStringLiteral("Reading the configuration: ");
    EXPECT_FALSE(Reporter(calls_, silent, noProgress).run(LoggerCommand::GetConfiguration, [](LockedLogger& logger) {
        return logger.configuration().code;
    })) << "one that reads can, without a word";
    EXPECT_TRUE(cancellable_);
}

TEST_F(WorkerCallsTest, WhatIsCancelledBeforeItBeganIsNotDone) {
    worker_.submit([&](LockedLogger&) { // a probe's slow call
        for (int i = 0; i < 2000 && !pressed_; ++i)
            std::this_thread::sleep_for(10ms);
    });
    cancelAt_ = QStringLiteral("Late: ");
    EXPECT_FALSE(calls_.run({"Late"}, [](LockedLogger&) { FAIL(); }));
    EXPECT_TRUE(pressed_);
}

TEST_F(WorkerCallsTest, NobodyWaitsForWhatIsPosted) {
    std::atomic<bool> posted = false, done = false;
    worker_.submit([&](LockedLogger&) { // a probe's slow call
        for (int i = 0; i < 2000 && !posted; ++i)
            std::this_thread::sleep_for(10ms);
    });
    calls_.post([&](LockedLogger&) { done = true; });
    EXPECT_FALSE(done);
    posted = true;
    EXPECT_TRUE(calls_.run({"Next"}, [&](LockedLogger&) { EXPECT_TRUE(done) << "before what is run next"; }));
}

TEST_F(WorkerCallsTest, NothingRunsOnceTheProgramIsEnding) {
    slow_.hurry();
    worker_.stop();
    EXPECT_FALSE(calls_.run({"Late"}, [](LockedLogger&) { FAIL(); }));
}

} // namespace
} // namespace quobrix::testing
