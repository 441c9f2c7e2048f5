#include "app/logger_commands.h"

#include "app/main_frame.h"
#include "app/names_commands.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "support/slow_logger_library.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <QAction>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace quobrix {
namespace {

using namespace std::chrono_literals;

class LoggerCommandsTest : public ::testing::Test {
protected:
    QString portStatus() { return frame_.findChild<QLabel*>(QStringLiteral("portStatus"))->text(); }
    bool waitFor(const QString& status) {
        return QTest::qWaitFor([&] { return portStatus() == status; }, 20'000);
    }

    testing::FakeLoggerLibrary fake_;
    Settings settings_{std::make_unique<MemorySettings>()};
    TQuobrixDocument document_;
    TUnitSystem units_;
    TimeZone zone_;
    TQuobrixFrame frame_{ViewContext{document_, settings_, units_, zone_}};
    NamesCommands names_{frame_};
    LoggerCommands commands_{
        frame_, names_, testing::FakeLoggerLibrary::library(), {.polling = {5ms, 0ms}, .calls = {1ms, 2ms}}};
};

TEST_F(LoggerCommandsTest, ALoggerThatGaveOneBadAnswerIsFoundAgainByItself) {
    fake_.loggers["COM1"] = "K-0042-B";
    EXPECT_EQ(portStatus(), QStringLiteral("No Port Opened"));
    commands_.start();
    EXPECT_TRUE(waitFor(QStringLiteral("Quobrix Detected on COM1 : K-0042-B")));
    std::atomic<int> bad = 3;
    fake_.during = [&](const std::string& function) {
        if (function == "GetSerialNumberAndTime") // the results are the worker's
            fake_.results[function] = bad-- > 0 ? -9 : QUOBRIX_OK;
    };
    EXPECT_TRUE(waitFor(QStringLiteral("error -9")));
    EXPECT_TRUE(waitFor(QStringLiteral("Quobrix Detected on COM1 : K-0042-B")));
}

TEST_F(LoggerCommandsTest, ACancelledDownloadLeavesTheDocumentAsItWas) {
    fake_.loggers["COM1"] = "K-0042-B";
    commands_.start();
    ASSERT_TRUE(waitFor(QStringLiteral("Quobrix Detected on COM1 : K-0042-B")));
    bool cancelled = false;
    {
        testing::SlowLoggerLibrary slow(fake_, [&](QWidget& dialog) {
            const auto* text = dialog.findChild<QLabel*>(QStringLiteral("LoggerWaitText"));
            if (text->text() == QLatin1String("Downloading")) {
                cancelled = true;
                dialog.findChild<QPushButton*>()->click();
            }
        });
        frame_.commands().action(CommandId::Download)->trigger();
        slow.hurry();
    }
    EXPECT_TRUE(cancelled);
    EXPECT_EQ(fake_.count("GetLogRecords"), 0);
    EXPECT_EQ(document_.trips().rowCount(), 0u);
    EXPECT_FALSE(document_.dataChanged());
    EXPECT_FALSE(frame_.isWindowModified());
    EXPECT_TRUE(frame_.isEnabled() && !QApplication::activeModalWidget());
}

} // namespace
} // namespace quobrix
