#include "app/configuration_commands.h"

#include "app/logger_commands.h"
#include "app/names_commands.h"
#include "base/ui/qt_text.h"
#include "config/configuration_codes.h"
#include "config/configuration_text.h"
#include "model/parameter_thresholds.h"
#include "support/fake_logger_library.h"
#include "support/frame_fixture.h"
#include "support/temporary_folder.h"
#include "support/text_file.h"
#include "ui/status_line.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace quobrix {
namespace {

using namespace std::chrono_literals;
using CommandId::ChooseParameters;
using CommandId::ParameterThresholds;
using CommandId::SetAccelerationThresholds;
using CommandId::SetBrakingThresholds;
using CommandId::SetSpeedBands;

const LoggerConfiguration kPresent{.bandLimits = {45.000000001, 60, 70},
                                   .brakeThresholds = {2.745862, 4.707192},
                                   .accelerationThresholds = {0.1, 3},
                                   .parameters = {0x0C, 0x42, 0xF9, 0xE1, 0x03},
                                   .intervals = {1, 3, 16, 32, -7}};

class ConfigurationCommandsTest : public test::FrameTest {
protected:
    ConfigurationCommandsTest() {
        fake_.loggers["COM1"] = "K-0042-B";
        fake_.configuration = kPresent;
        units_.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
        frame_.show();
    }

    /// The dialog of command ID; STEPS are done in it one after the other, then it is cancelled unless it is closed.
    template <class... Steps>
    void open(CommandId id, Steps... steps) {
        QTimer boxes, dialogs;
        QObject::connect(&boxes, &QTimer::timeout, [&] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                told_ << box->objectName();
                box->accept();
            }
        });
        QObject::connect(&dialogs, &QTimer::timeout, [&] {
            dialog_ = dynamic_cast<TableDialog*>(QApplication::activeModalWidget());
            if (!dialog_)
                return;
            dialogs.stop();
            (steps(), ...);
            if (dialog_->isVisible())
                dialog_->reject();
        });
        boxes.start(1);
        dialogs.start(1);
        frame_.commands().action(id)->trigger();
        opened_ = !dialogs.isActive();
    }
    void type(int column, RowIndex row, const char* text) {
        TSpreadsheet& list = dialog_->list();
        list.setCurrentCell(row, column);
        list.view().edit(list.view().currentIndex());
        auto* editor = qobject_cast<QLineEdit*>(list.view().indexWidget(list.view().currentIndex()));
        ASSERT_TRUE(editor);
        editor->clear();
        QTest::keyClicks(editor, QLatin1String(text));
    }
    void press(const char* button) { dialog_->findChild<QPushButton*>(QLatin1String(button))->click(); }
    void ok() { dialog_->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click(); }
    std::string cell(int column, RowIndex row) const {
        return dialog_->list().model().text(static_cast<int>(row), column).toStdString();
    }
    std::string picture() const {
        return dialog_->findChild<QWidget*>(dialog_->objectName() + QStringLiteral("Picture"))
            ->accessibleDescription()
            .toStdString();
    }
    /// Chooses FILE in the file dialog that BUTTON opens.
    void choose(const char* button, const std::filesystem::path& file) {
        QTimer::singleShot(0, qApp, [&] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            dialog->selectFile(toQtPath(file));
            static_cast<QDialog*>(dialog)->accept();
        });
        press(button);
    }

    testing::FakeLoggerLibrary fake_;
    NamesCommands names_{frame_};
    LoggerCommands commands_{frame_,
                             names_,
                             testing::FakeLoggerLibrary::library(),
                             {},
                             {.polling = {5ms, 0ms}, .calls = {1ms, 2ms}, .progressHaste = 100}};
    TableDialog* dialog_ = nullptr;
    bool opened_ = false;
    QStringList told_; ///< keys of the messages
};

TEST_F(ConfigurationCommandsTest, EachDialogSetsItsOwnValues) {
    const auto set = [&](LoggerConfiguration expected) {
        EXPECT_TRUE(opened_);
        EXPECT_EQ(fake_.configuration, expected);
        EXPECT_EQ(told_, QStringList());
        fake_.configuration = kPresent;
    };
    LoggerConfiguration expected = kPresent;
    expected.bandLimits = {45.000000001, 65, 70};
    open(
        SetSpeedBands, [&] { type(1, 1, "65"); }, [&] { ok(); });
    set(expected);
    open(SetSpeedBands, [&] { type(1, 1, "65"); });
    set(kPresent); // cancelled
    open(
        SetSpeedBands, [&] { press("Reset"); }, [&] { ok(); });
    expected.bandLimits = {45, 60, 70};
    set(expected);

    expected = kPresent;
    expected.brakeThresholds[0] = 3;
    open(
        SetBrakingThresholds, [&] { type(0, 0, "3"); }, [&] { ok(); });
    set(expected);
    expected = kPresent;
    expected.accelerationThresholds = {2.745862, 4.707192};
    open(
        SetAccelerationThresholds, [&] { press("Reset"); }, [&] { ok(); });
    set(expected);
    open(
        ChooseParameters, [&] { press("Reset"); },
        [&] { dialog_->list().commands().action(SpreadsheetCommand::Undo).trigger(); }, [&] { ok(); });
    set(kPresent);
    open(
        ChooseParameters, [&] { press("Reset"); }, [&] { ok(); });
    expected = withDefaultParameters(kPresent);
    expected.intervals[4] = -7; // which stands for 60 s, too
    set(expected);
}

TEST_F(ConfigurationCommandsTest, WhatIsWrongIsRefusedAndKeepsTheDialog) {
    open(
        SetSpeedBands, [&] { type(1, 1, "159"); }, [&] { ok(); },
        [&] {
            EXPECT_TRUE(dialog_->list().view().isEditing()) << "beyond 255 km/h";
            QTest::keyClick(dialog_->list().findChild<QLineEdit*>(QStringLiteral("cellEditor")), Qt::Key_Escape);
            type(1, 1, "44");
        },
        [&] { ok(); },
        [&] {
            EXPECT_TRUE(dialog_->isVisible());
            EXPECT_EQ(cell(1, 1), "44 MPH");
        });
    open(
        ChooseParameters, [&] { dialog_->list().model().type(1, 0, QStringLiteral("Engine Speed")); }, [&] { ok(); },
        [&] { EXPECT_TRUE(dialog_->isVisible()); });
    EXPECT_EQ(told_, QStringList({QStringLiteral("SpeedBandsOutOfRange"), QStringLiteral("DuplicateParameters")}));
    EXPECT_EQ(fake_.count("SetConfiguration"), 0);
    EXPECT_EQ(fake_.configuration, kPresent);
}

TEST_F(ConfigurationCommandsTest, FailuresAreToldAndKeepTheDialog) {
    fake_.results["GetConfiguration"] = QUOBRIX_TIMEOUT;
    open(SetSpeedBands);
    EXPECT_FALSE(opened_);
    EXPECT_EQ(told_, QStringList({QStringLiteral("Timeout")}));
    fake_.results.clear();

    const struct {
        const char* key;
        std::function<void()> meanwhile; ///< before OK
    } kCases[] = {
        {"UnexpectedError", [&] { fake_.results["SetConfiguration"] = -7; }},
        {"AnotherLogger", [&] { fake_.loggers["COM1"] = "K-0043-B"; }},
        {"ConfigurationDiffers", [&] { fake_.alters = [](LoggerConfiguration& c) { c.bandLimits[1] = 61; }; }},
    };
    for (const auto& each : kCases) {
        told_.clear();
        open(
            SetSpeedBands, [&] { type(1, 1, "65"); },
            [&] {
                each.meanwhile();
                ok();
            },
            [&] {
                EXPECT_TRUE(dialog_->isVisible()) << each.key;
                EXPECT_EQ(cell(1, 1), "65 MPH") << each.key;
            });
        EXPECT_EQ(told_, QStringList({QLatin1String(each.key)}));
        fake_.results.clear();
        fake_.loggers["COM1"] = "K-0042-B";
    }
}

TEST_F(ConfigurationCommandsTest, AFileHoldsTheWholeBlockAndGivesADialogItsOwn) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder / "set.txt";
    open(
        SetSpeedBands, [&] { type(1, 1, "65"); }, [&] { choose("SaveToFile", file); });
    LoggerConfiguration saved = kPresent;
    saved.bandLimits[1] = 65;
    EXPECT_EQ(test::textOf(file), configurationText(saved));

    saved.brakeThresholds = {3, 5};
    saved.parameters[0] = 0x43;
    test::putText(file, configurationText(saved));
    open(
        SetBrakingThresholds, [&] { choose("LoadFromFile", file); }, [&] { ok(); });
    LoggerConfiguration expected = kPresent;
    expected.brakeThresholds = saved.brakeThresholds;
    EXPECT_EQ(fake_.configuration, expected);
    open(
        ChooseParameters, [&] { choose("LoadFromFile", file); }, [&] { ok(); });
    expected.parameters = saved.parameters;
    EXPECT_EQ(fake_.configuration, expected);
    EXPECT_EQ(told_, QStringList());

    saved.bandLimits = {10, 20, 300};
    test::putText(file, configurationText(saved));
    open(
        SetSpeedBands, [&] { choose("LoadFromFile", file); }, [&] { EXPECT_EQ(cell(1, 0), "45 MPH"); });
    test::putText(file, "Trips");
    open(SetSpeedBands, [&] { choose("LoadFromFile", file); });
    EXPECT_EQ(told_, QStringList({QStringLiteral("ValuesRefused"), QStringLiteral("NotAConfiguration")}));
}

TEST_F(ConfigurationCommandsTest, ThresholdsOfParametersHaveAFileOfTheirOwn) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder / "thresholds.txt";
    open(
        ParameterThresholds, [&] { type(0, 0, "50"); }, [&] { choose("SaveToFile", file); });
    EXPECT_NE(test::textOf(file).find("\nVehicle Speed = 22.352"), std::string::npos) << test::textOf(file);
    open(
        ParameterThresholds, [&] { choose("LoadFromFile", file); }, [&] { EXPECT_EQ(cell(0, 0), "50 MPH"); },
        [&] { ok(); });
    EXPECT_NEAR(parameterThreshold(settings_, 1), 22.352, 1e-6);
    test::putText(file, configurationText(kPresent));
    open(ParameterThresholds, [&] { choose("LoadFromFile", file); });
    EXPECT_EQ(told_, QStringList({QStringLiteral("NotThresholds")}));
}

TEST_F(ConfigurationCommandsTest, ThePictureFollowsWhatIsTyped) {
    open(
        SetSpeedBands, [&] { type(1, 1, "65"); },
        [&] { EXPECT_NE(picture().find("Speed Band 2: 45 MPH to 65 MPH"), std::string::npos) << picture(); },
        [&] {
            QTest::keyClick(dialog_->list().findChild<QLineEdit*>(QStringLiteral("cellEditor")), Qt::Key_Escape);
            EXPECT_TRUE(QTest::qWaitFor(
                [&] { return picture().find("Speed Band 2: 45 MPH to 60 MPH") != std::string::npos; }, 5'000));
        },
        [&] {
            units_.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
            EXPECT_NE(picture().find("Speed Band 2: 72 kph to 97 kph"), std::string::npos) << picture();
            EXPECT_EQ(cell(1, 1), "97 kph");
            type(1, 1, "44");
            EXPECT_TRUE(dialog_->list().finishEdit());
            EXPECT_NE(dialog_->findChild<StatusLine*>(QStringLiteral("statusLine"))
                          ->said()
                          .indexOf(QLatin1String("above the one before it")),
                      -1);
        });
}

TEST_F(ConfigurationCommandsTest, TripsAreReadWhileTheDialogIsShown) {
    for (int i = 0; i < 3; ++i)
        test::addTrip(document_, test::kStart + 1000 * i);
    TTripLogSampleTable& samples = *document_.trips().column<TTripLogSampleTableColumn>().object(2);
    samples.speed().setAll({60, 50, 40});
    for (RowIndex row = 0; row < 3; ++row)
        document_.trips().column<TTripLogSampleTableColumn>().object(row)->series(0).setSeries(
            {5, 5, false, {kNoValue}});
    const auto waitFor = [](const auto& seen) { EXPECT_TRUE(QTest::qWaitFor(seen, 5'000)); };
    open(SetBrakingThresholds, [&] {
        waitFor([&] { return picture() == "1 of these 3 trips would have counted a hard brake, 0 an extreme one."; });
    });
    open(ChooseParameters, [&] {
        dialog_->list().setCurrentCell(4, 0);
        waitFor([&] {
            return dialog_->list().model().column(0).selections().at(5).text ==
                   "Engine Load (Not Supported By Vehicle)";
        });
    });
}

TEST_F(ConfigurationCommandsTest, ParameterThresholdsNeedNoLogger) {
    fake_.loggers.clear();
    open(ParameterThresholds, [&] { type(0, 0, "75"); });
    EXPECT_EQ(parameterThreshold(settings_, 1), 31.73984);
    open(
        ParameterThresholds, [&] { type(0, 0, "75"); }, [&] { ok(); });
    EXPECT_NEAR(parameterThreshold(settings_, 1), 75 * test::kMph, 1e-6);
    open(
        ParameterThresholds, [&] { press("Reset"); }, [&] { ok(); });
    EXPECT_EQ(parameterThreshold(settings_, 1), 31.73984);
    EXPECT_EQ(told_, QStringList());
}

} // namespace
} // namespace quobrix
