#include "app/dialog_prompter.h"

#include "base/ui/qt_text.h"
#include "settings/settings.h"
#include "support/frame_fixture.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <array>

namespace quobrix {
namespace {

class DialogPrompterTest : public ::testing::Test {
protected:
    /// Tells MESSAGE; the box it comes up in, if any, is seen by LOOK and closed.
    void tell(MessageOf<0> message, const std::function<void(QMessageBox&)>& look) {
        test::inNextDialog<QMessageBox>([&](QMessageBox& box) {
            look(box);
            box.accept();
        });
        prompter_.tell(makeMessage(message));
        QApplication::processEvents();
    }

    QWidget window_;
    QStringList quiet_;
    Settings settings_{std::make_unique<MemorySettings>()};
    Reminders reminders_{settings_, [] { return 1'700'000'000; }};
    TUnitSystem units_;
    const TimeZone zone_;
    DialogPrompter prompter_{window_, reminders_, {units_, zone_}, [this](const QString& text) { quiet_ << text; }};
};

TEST_F(DialogPrompterTest, LongNamesAreShortened) {
    const std::string name = "Trips_" + std::string(150, 'x') + "_2026.car";
    QTimer::singleShot(0, qApp, [] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        const auto* label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
        EXPECT_TRUE(box->text().startsWith(QStringLiteral("Trips_x"))) << box->text().toStdString();
        EXPECT_TRUE(box->text().contains(QStringLiteral("x_2026.car already exists."))) << box->text().toStdString();
        EXPECT_TRUE(box->text().endsWith(QStringLiteral("is kept as 行车记录.bak.")));
        for (const QString& word : box->text().split(QLatin1Char(' ')))
            EXPECT_LE(label->fontMetrics().horizontalAdvance(word), label->width());
        box->reject();
    });
    prompter_.ask(makeMessage(MessageId::ReplaceFile, name, "行车记录.bak"));
}

TEST_F(DialogPrompterTest, RemindersOfferHowOften) {
    int boxes = 0;
    const auto choose = [&](QMessageBox& box) {
        ++boxes;
        auto* choices = box.findChild<QComboBox*>(QStringLiteral("ReminderChoice"));
        ASSERT_TRUE(choices);
        EXPECT_TRUE(box.rect().contains(choices->mapTo(&box, choices->rect().bottomRight())));
        EXPECT_EQ(choices->currentText(), QStringLiteral("Remind me every time"));
        choices->setCurrentText(QStringLiteral("Don't remind me again"));
    };
    tell(MessageId::InvalidSerialNumber, choose);
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(reminders_.choice("InvalidSerialNumber"), ReminderChoice::Never);
    EXPECT_TRUE(quiet_.isEmpty());
    tell(MessageId::InvalidSerialNumber, choose);
    EXPECT_EQ(boxes, 1);
    ASSERT_EQ(quiet_.size(), 1);
    EXPECT_TRUE(quiet_[0].startsWith(QLatin1String("Invalid serial number format."))) << quiet_[0].toStdString();
}

TEST_F(DialogPrompterTest, AnUnwantedQuestionIsAnsweredNo) {
    int boxes = 0;
    const auto ask = [&](QMessageBox::StandardButton answer) {
        test::inNextDialog<QMessageBox>([&, answer](QMessageBox& box) {
            ++boxes;
            box.findChild<QComboBox*>(QStringLiteral("ReminderChoice"))
                ->setCurrentText(QStringLiteral("Don't remind me again"));
            box.button(answer)->click();
        });
        const Answer result = prompter_.ask(makeMessage(MessageId::NoPortDetected));
        QApplication::processEvents();
        return result;
    };
    EXPECT_EQ(ask(QMessageBox::Yes), Answer::Yes);
    EXPECT_EQ(ask(QMessageBox::Yes), Answer::No);
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(quiet_, QStringList{QStringLiteral("No Quobrix was detected on any of the standard serial ports.")});
}

TEST_F(DialogPrompterTest, ActionsAndEscape) {
    const auto choose = [this](const std::function<void(QMessageBox&)>& act,
                               MessageOf<1> question = MessageId::FileGoneFromDisk) {
        test::inNextDialog<QMessageBox>(act);
        return prompter_.chooseAction(makeMessage(question, "a.car"),
                                      {SourceText("&Save Again"), SourceText("Save &As...")});
    };
    EXPECT_EQ(choose([](QMessageBox& box) { box.findChild<QPushButton*>(QStringLiteral("SaveAs"))->click(); }), 1u);
    EXPECT_EQ(choose([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); }), 0u);
    EXPECT_EQ(choose([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }), std::nullopt);
    QString unanswered;
    const auto leave = [&](QMessageBox& box) {
        unanswered = box.button(QMessageBox::Cancel)->text();
        box.button(QMessageBox::Cancel)->click();
    };
    EXPECT_EQ(choose(leave, MessageId::CompactionOffered), std::nullopt);
    EXPECT_EQ(unanswered, QStringLiteral("&Not Now")) << "there is nothing to cancel";
}

TEST(DialogFileChooser, SuggestsThePersonsDocuments) {
    const test::TemporaryFolder elsewhere;
    QWidget window;
    DialogFileChooser chooser(window);
    const auto folderOf = [&](const std::filesystem::path& suggested, const QString& choice) {
        QString folder;
        QTimer::singleShot(0, qApp, [&] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            folder = dialog->directory().path();
            if (choice.isEmpty())
                return dialog->reject();
            dialog->selectFile(choice);
            static_cast<QDialog*>(dialog)->accept();
        });
        chooser.chooseToSave(suggested);
        return folder;
    };
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString first = QFileInfo(documents).isDir() ? documents : QDir::homePath();
    EXPECT_EQ(folderOf("Quobrix Data.car", {}), first);
    EXPECT_EQ(folderOf(elsewhere / "a.car", {}), toQtPath(elsewhere.path())) << "what has a folder stays there";
    EXPECT_EQ(folderOf("Quobrix Data.car", toQtPath(elsewhere / "b.car")), first);
    EXPECT_EQ(folderOf("Quobrix Data.car", {}), toQtPath(elsewhere.path())) << "where the person has been";
}

TEST(DialogFileChooser, CopiesComeBesideTheDocumentUntilAPersonChoosesAnotherFolder) {
    const test::TemporaryFolder beside, elsewhere;
    QWidget window;
    DialogFileChooser chooser(window);
    const auto seen = [&](const QString& choice) {
        QString dialogs;
        QTimer::singleShot(0, qApp, [&] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            dialogs = dialog->windowTitle() + ": " + dialog->directory().path();
            if (choice.isEmpty())
                return dialog->reject();
            dialog->selectFile(choice);
            static_cast<QDialog*>(dialog)->accept();
        });
        chooser.chooseCopy(SourceText("Export"), beside.path(), "Trips", std::array{FileFormat::Csv});
        return dialogs;
    };
    EXPECT_EQ(seen({}), "Export: " + toQtPath(beside.path()));
    EXPECT_EQ(seen(toQtPath(elsewhere / "b.csv")), "Export: " + toQtPath(beside.path()));
    EXPECT_EQ(seen({}), "Export: " + toQtPath(elsewhere.path()));
}

} // namespace
} // namespace quobrix
