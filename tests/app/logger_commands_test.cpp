#include "app/logger_commands.h"

#include "app/names_commands.h"
#include "device/clear_flow.h"
#include "device/ports.h"
#include "device/recovery_file.h"
#include "support/frame_fixture.h"
#include "support/record_set_builder.h"
#include "support/slow_logger_library.h"
#include "support/temporary_folder.h"
#include "views/log_view.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

namespace quobrix {
namespace {

using namespace std::chrono_literals;

class LoggerCommandsTest : public test::FrameTest {
protected:
    QString portStatus() { return frame_.findChild<QLabel*>(QStringLiteral("portStatus"))->text(); }
    bool waitFor(const QString& status) {
        return QTest::qWaitFor([&] { return portStatus() == status; }, 20'000);
    }

    const test::TemporaryFolder kept_; // downloads that are not saved
    testing::FakeLoggerLibrary fake_;
    const std::int64_t begun_ = wallClock();
    NamesCommands names_{frame_};
    LoggerCommands commands_{frame_,
                             names_,
                             testing::FakeLoggerLibrary::library(),
                             {{}, kept_.path()},
                             {.polling = {5ms, 0ms},
                              .calls = {1ms, 2ms},
                              .clock = [this] { return fake_.loggerTime + wallClock() - begun_; },
                              .progressHaste = 100}};
};

TEST_F(LoggerCommandsTest, ALoggerIsFoundAgain) {
    fake_.loggers["COM1"] = "K-0042-B";
    EXPECT_EQ(portStatus(), QStringLiteral("No Port Opened"));
    commands_.start();
    EXPECT_TRUE(waitFor(QStringLiteral("Quobrix Detected on COM1 : K-0042-B")));
    std::atomic<bool> bad = true; // until it has been seen
    fake_.during = [&](const std::string& function) {
        if (function == "GetSerialNumberAndTime") // the results are the worker's
            fake_.results[function] = bad ? -9 : QUOBRIX_OK;
    };
    EXPECT_TRUE(waitFor(QStringLiteral("error -9")));
    bad = false;
    EXPECT_TRUE(waitFor(QStringLiteral("Quobrix Detected on COM1 : K-0042-B")));
}

TEST_F(LoggerCommandsTest, ACancelledDownloadChangesNothing) {
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

TEST_F(LoggerCommandsTest, UndoOfADeletedTripAndADownload) {
    using namespace testing;
    QuobrixTripRecord second = plainTrip();
    second.startTime += 100;
    second.endTime += 100;
    fake_.loggers["COM1"] = "K-0042-B";
    fake_.trips = RecordSetBytes().add(plainTrip(), {10, 20, 30}).add(second, {40, 50, 60}).take();
    fake_.stops = RecordSetBytes().add(plainStop()).take();
    fake_.stopSamples = RecordSetBytes().add(samplesOf(0, 3), {50, 20, 0}).take();
    frame_.show();
    commands_.start();
    ASSERT_TRUE(waitFor(QStringLiteral("Quobrix Detected on COM1 : K-0042-B")));
    {
        QTimer questions; // of names, and what the download has brought
        QObject::connect(&questions, &QTimer::timeout, [] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                box->reject();
        });
        questions.start(1);
        frame_.commands().action(CommandId::Download)->trigger();
    }
    constexpr int kAccidents = static_cast<int>(CommandId::AccidentLog);
    frame_.pages().show(kAccidents);
    const SpreadsheetModel& accidents = frame_.pages().page(kAccidents)->findChild<TSpreadsheet*>()->model();
    frame_.pages().show(kTripLogPage);
    auto& page = *static_cast<LogView*>(frame_.pages().page(kTripLogPage));
    TSpreadsheet& list = page.summary();
    const auto shown = [&] {
        return QStringLiteral("%1 trips, %2 accidents, %3; %4; %5")
            .arg(list.model().rowCount())
            .arg(accidents.rowCount())
            .arg(page.findChild<QLabel*>(QStringLiteral("currentTrip"))->text().section(QLatin1Char(','), 0, 0),
                 list.commands().action(SpreadsheetCommand::Undo).text(),
                 list.commands().action(SpreadsheetCommand::Redo).text())
            .toStdString();
    };
    const auto step = [&](SpreadsheetCommand command) {
        list.commands().action(command).trigger();
        return shown();
    };
    list.setCurrentRow(0);
    EXPECT_EQ(shown(), "2 trips, 2 accidents, Trip 1 of 2; &Undo Download; Red&o");
    test::inNextDialog<QMessageBox>([](QMessageBox& question) { question.button(QMessageBox::Yes)->click(); });
    QTest::keyClick(&list.view(), Qt::Key_Delete);
    EXPECT_EQ(shown(), "1 trips, 2 accidents, Trip 1 of 1; &Undo Deleting a row; Red&o");
    EXPECT_TRUE(list.view().selectionModel()->isRowSelected(0)) << "the next one can be deleted, too";
    EXPECT_EQ(step(SpreadsheetCommand::Undo),
              "2 trips, 2 accidents, Trip 1 of 2; &Undo Download; Red&o Deleting a row");
    EXPECT_EQ(step(SpreadsheetCommand::Undo), "0 trips, 0 accidents, No trips; &Undo; Red&o Download");
    EXPECT_FALSE(document_.accidents() || document_.dataChanged());
    EXPECT_EQ(step(SpreadsheetCommand::Redo),
              "2 trips, 2 accidents, Trip 1 of 2; &Undo Download; Red&o Deleting a row");
    EXPECT_EQ(document_.trips().column<TTripLogSampleTableColumn>().object(1)->rowCount(), 3u);
}

/// Answers the box or dialog that comes up next by pressing BUTTON, after LOOK has seen it.
void answer(const QString& button, std::function<void(QWidget&)> look = {}) {
    QTimer::singleShot(5, qApp, [=] {
        QWidget* dialog = QApplication::activeModalWidget();
        auto* pressed = dialog ? dialog->findChild<QPushButton*>(button) : nullptr;
        if (dialog && !pressed)
            for (QPushButton* other : dialog->findChildren<QPushButton*>())
                pressed = other->text().remove(QLatin1Char('&')) == button ? other : pressed;
        if (!pressed)
            return answer(button, look);
        if (look)
            look(*dialog);
        pressed->click();
    });
}

TEST_F(LoggerCommandsTest, ADownloadOfItsOwnIsKeptUntilItIsSaved) {
    const test::TemporaryFolder folder;
    ASSERT_TRUE(document_.saveAs(folder / "Test.car"));
    fake_.loggers["COM1"] = "K-0042-B";
    fake_.trips = testing::RecordSetBytes().add(testing::plainTrip(), {10, 20, 30}).take();
    fake_.memory = {1000, 800};
    setClearAfterDownload(settings_, ClearAfterDownload::Never);
    setOnNewData(settings_, OnNewData::Download);
    frame_.show();
    {
        QTimer boxes; // of names, and what the download has brought
        QObject::connect(&boxes, &QTimer::timeout, [] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                box->reject();
        });
        boxes.start(1);
        commands_.start();
        ASSERT_TRUE(
            QTest::qWaitFor([&] { return document_.trips().rowCount() == 1 && !frame_.commands().running(); }, 20'000));
    }
    EXPECT_FALSE(std::filesystem::is_empty(kept_.path()));
    frame_.commands().action(CommandId::Save)->trigger();
    EXPECT_TRUE(std::filesystem::is_empty(kept_.path()));

    QString question;
    const auto clear = [&] {
        answer(QStringLiteral("No"), [&](QWidget& box) { question = qobject_cast<QMessageBox*>(&box)->text(); });
        frame_.commands().action(CommandId::ClearMemory)->trigger();
        return question.contains(QLatin1String("you have not downloaded"));
    };
    EXPECT_FALSE(clear()) << question.toStdString();
    document_.edits().undo();
    EXPECT_TRUE(clear()) << question.toStdString();
}

TEST_F(LoggerCommandsTest, MenusSayWhatTheLoggerCanDoAndWhatIsSet) {
    using enum CommandId;
    const auto states = [&] {
        std::string marks;
        for (const CommandId id : {ClearMemory, EnableLed, ResetCheckEngineLight, EnableAlarm, EnableVinMode,
                                   SetAnomalousVehicle, SetClock}) {
            const QAction& action = *frame_.commands().action(id);
            marks += !action.isEnabled() ? '-' : action.isChecked() ? 'x' : 'o';
        }
        return marks;
    };
    EXPECT_EQ(states(), "oo----o") << "what depends on the product needs a logger";
    fake_.loggers["COM1"] = "K-0042-B";
    fake_.led = true;
    commands_.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return states() == "oxoox-o"; }, 20'000)) << states();
    frame_.commands().action(EnableLed)->trigger();
    frame_.commands().action(EnableVinMode)->trigger();
    frame_.commands().action(ResetCheckEngineLight)->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return states() == "ooxoo-o"; }, 20'000)) << states();
    fake_.during = [&](const std::string& function) { // on the worker
        if (function == "GetIdentityInformation")
            fake_.product = "QBX-4730";
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return states() == "oox--oo"; }, 20'000)) << states();
}

TEST_F(LoggerCommandsTest, ThePortDialogStaysOpenUntilAPortIsAccepted) {
    fake_.loggers["COM4"] = "K-0042-B";
    fake_.portProblems["COM3"] = QUOBRIX_PORT_IN_USE;
    const auto ok = QStringLiteral("OK"), yes = QStringLiteral("Yes"), no = QStringLiteral("No");
    const auto port = [](QWidget& dialog) { return dialog.findChild<QComboBox*>(QStringLiteral("SerialPort")); };
    const auto choose = [=](const char* name) {
        return [=](QWidget& dialog) { port(dialog)->setCurrentText(QLatin1String(name)); };
    };
    QStringList seen;
    // From the last thing that a person does to the first.
    const auto accept = [&](QWidget& box) {
        seen << box.objectName();
        answer(ok, [&](QWidget& dialog) {
            seen << port(dialog)->currentText() << dialog.findChild<QLabel*>(QStringLiteral("ScanResult"))->text();
        });
    };
    const auto scan = [&](QWidget& box) {
        seen << box.objectName();
        answer(QStringLiteral("ScanPorts"), [&](QWidget& dialog) {
            seen << port(dialog)->currentText();
            answer(yes, accept);
        });
    };
    const auto tryAnEmptyOne = [&](QWidget& box) {
        seen << box.objectName();
        answer(ok, [&](QWidget& dialog) {
            seen << port(dialog)->currentText();
            choose("COM2")(dialog);
            answer(no, scan);
        });
    };
    answer(ok, [&](QWidget& dialog) {
        EXPECT_FALSE(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Help)->isEnabled());
        choose("COM3")(dialog);
        answer(ok, tryAnEmptyOne);
    });
    frame_.commands().action(CommandId::CommunicationsPort)->trigger();
    EXPECT_EQ(seen.join(QLatin1Char('|')).toStdString(), "PortInUse|COM3|UseSerialPortAnyway|COM2|PortDetected|COM4|A "
                                                         "Quobrix (K-0042-B) was found on COM4.");
    EXPECT_EQ(defaultPort(settings_), "COM4");
    EXPECT_FALSE(QApplication::activeModalWidget());
}

TEST_F(LoggerCommandsTest, EachDialogDoesWhatItSays) {
    using enum CommandId;
    fake_.loggers["COM1"] = "K-0042-B";
    commands_.start();
    ASSERT_TRUE(waitFor(QStringLiteral("Quobrix Detected on COM1 : K-0042-B")));
    const auto run = [&](CommandId id) {
        QAction& action = *frame_.commands().action(id);
        ASSERT_TRUE(QTest::qWaitFor([&] { return action.isEnabled(); }, 20'000)) << action.text().toStdString();
        action.trigger();
    };
    answer(QStringLiteral("AlarmOff"));
    run(EnableAlarm);
    answer(QStringLiteral("OK"));
    run(EnableAlarm);
    EXPECT_EQ(fake_.volume, 0);

    answer(QStringLiteral("Close"), [](QWidget& dialog) {
        EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("MemoryText"))->text(),
                  QStringLiteral("The memory of K-0042-B is 50 % full."));
    });
    run(DisplayMemory);

    answer(QStringLiteral("OK"), [](QWidget& dialog) {
        auto* field = dialog.findChild<QLineEdit*>(QStringLiteral("LoggerTime"));
        field->setText(QStringLiteral("no time"));
        EXPECT_FALSE(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled());
        field->setText(QStringLiteral("3/4/2020 10:00 AM"));
        answer(QStringLiteral("Yes"));
    });
    run(SetDateAndTime);
    EXPECT_EQ(fake_.count("SetTime 1583316000"), 1);

    answer(QStringLiteral("Yes"),
           [](QWidget& box) { box.findChild<QCheckBox*>(QStringLiteral("MessageCheckBox"))->setChecked(true); });
    run(ClearMemory);
    EXPECT_EQ(fake_.count("ClearLogs"), 1);
    EXPECT_EQ(clearAfterDownload(settings_), ClearAfterDownload::Always);
}

TEST_F(LoggerCommandsTest, NewDataIsAskedAboutAndTheMemoryWarnedOf) {
    auto* warning = frame_.findChild<QLabel*>(QStringLiteral("loggerWarning"));
    fake_.loggers["COM1"] = "K-0042-B";
    fake_.memory = {1000, 800};
    frame_.show();
    QString asked;
    answer(QStringLiteral("No"), [&](QWidget& box) { asked = qobject_cast<QMessageBox*>(&box)->text(); });
    setOnNewData(settings_, OnNewData::Ask);
    commands_.start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !asked.isEmpty() && !QApplication::activeModalWidget(); }, 20'000));
    EXPECT_EQ(asked.toStdString(), "The Quobrix K-0042-B holds new data.\n\nDownload it now?");
    EXPECT_FALSE(warning->isVisible()) << "80 % are none too many";
    std::atomic<bool> full = true;
    fake_.during = [&](const std::string& function) { // on the worker
        if (function == "GetMemoryInformation")
            fake_.memory.used = full ? 1200 : 10;
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return warning->isVisible(); }, 20'000));
    EXPECT_EQ(warning->text(), QStringLiteral("Memory 100 % full"));
    full = false;
    EXPECT_TRUE(QTest::qWaitFor([&] { return !warning->isVisible(); }, 20'000));
    EXPECT_EQ(fake_.count("GetLogBuffer"), 0);
}

TEST_F(LoggerCommandsTest, AVehicleThatTellsNoVinIsAskedFor) {
    QuobrixTripRecord trip = testing::plainTrip();
    std::memcpy(trip.vin, "??", 3);
    fake_.loggers["COM1"] = "K-0042-B";
    fake_.trips = testing::RecordSetBytes().add(trip, {10, 20, 30}).take();
    setClearAfterDownload(settings_, ClearAfterDownload::Never);
    document_.vehicles().nameAll(document_.vehicles().addMissing(std::vector<std::string>{"1HGCM82633A004352"}),
                                 "Kombi");
    commands_.start();
    ASSERT_TRUE(waitFor(QStringLiteral("Quobrix Detected on COM1 : K-0042-B")));
    QString read;
    answer(QStringLiteral("OK"), [&](QWidget& dialog) {
        EXPECT_EQ(dialog.objectName(), QStringLiteral("TUnidentifiedVehicleDialog"));
        read = dialog.findChild<QLabel*>(QStringLiteral("VinRead"))->text();
        auto* vehicle = dialog.findChild<QComboBox*>(QStringLiteral("TUnidentifiedVehicleColumn"));
        vehicle->setCurrentIndex(vehicle->findText(QStringLiteral("Kombi (1HGCM82633A004352)")));
        answer(QStringLiteral("No"), [](QWidget&) { // a name for the logger
            answer(QStringLiteral("OK"));
        });
    });
    frame_.commands().action(CommandId::Download)->trigger();
    EXPECT_EQ(read, QStringLiteral("\n VIN read from vehicle: ??"));
    EXPECT_EQ(document_.trips().column<TTripLogVinColumn>().at(0), "1HGCM82633A004352");
    EXPECT_EQ(document_.trips().recorded(0).vin, "??");
}

TEST_F(LoggerCommandsTest, AnUnsavedDownloadIsOfferedAtTheNextStart) {
    const test::TemporaryFolder folder;
    const auto start = [&] {
        return std::make_unique<LoggerCommands>(frame_, names_, Error{ErrorKind::NotFound, ShownText::asItIs("none")},
                                                LoggerCommands::Folders{{}, folder.path()});
    };
    KeptDownload download;
    download.serialText = "K-0042-B";
    download.time = 1'700'000'000;
    const std::vector<std::uint8_t> trips = testing::RecordSetBytes().add(testing::plainTrip(), {10, 20, 30}).take();
    download.blocks.trips.reset(static_cast<QuobrixRecordSet*>(std::malloc(trips.size())));
    std::memcpy(download.blocks.trips.get(), trips.data(), trips.size());
    ASSERT_TRUE(RecoveryFolder(folder.path()).keep(download));

    QString asked;
    answer(QStringLiteral("Later"), [&](QWidget& box) { asked = qobject_cast<QMessageBox*>(&box)->text(); });
    start()->start();
    EXPECT_TRUE(asked.startsWith(
        QStringLiteral("A download from K-0042-B of 11/14/2023 10:13 PM (1 trip) is in no saved file")))
        << asked.toStdString();
    EXPECT_EQ(document_.trips().rowCount(), 0u);

    answer(QStringLiteral("Recover"), [](QWidget&) {
        answer(QStringLiteral("No"), [](QWidget&) { // names for the new vehicle
            answer(QStringLiteral("No"), [](QWidget&) { answer(QStringLiteral("OK")); });
        });
    });
    {
        const auto program = start();
        program->start();
        EXPECT_EQ(document_.trips().rowCount(), 1u);
        EXPECT_TRUE(RecoveryFolder(folder.path()).left().empty()) << "locked";
    }
    EXPECT_EQ(RecoveryFolder(folder.path()).left().size(), 1u) << "nothing was saved";
    for (const QString& really : {QStringLiteral("No"), QStringLiteral("Yes")}) {
        answer(QStringLiteral("Discard"), [&](QWidget&) { answer(really); });
        start()->start();
        EXPECT_EQ(RecoveryFolder(folder.path()).left().empty(), really == QLatin1String("Yes"));
    }

    const auto file = folder.path() / "000000000000-0.download";
    std::vector<std::uint8_t> bytes = recoveryBytes(download);
    bytes[std::strlen("Quobrix download")] = 99; // the number of the format
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    answer(QStringLiteral("OK"), [&](QWidget& box) { asked = qobject_cast<QMessageBox*>(&box)->text(); });
    start()->start();
    EXPECT_TRUE(asked.endsWith(QStringLiteral("because it was written by a later version of this software.")))
        << asked.toStdString();
}

} // namespace
} // namespace quobrix
