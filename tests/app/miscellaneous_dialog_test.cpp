#include "app/miscellaneous_dialog.h"

#include "app/document_files.h"
#include "app/theme.h"
#include "device/new_data.h"
#include "messages/reminders.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>

#include <gtest/gtest.h>

namespace quobrix {
namespace {

class MiscellaneousDialogTest : public ::testing::Test {
protected:
    QComboBox* field(const char* name) { return dialog_.findChild<QComboBox*>(QLatin1String(name)); }
    ReminderChoice choice() const { return reminders_.choice("ExampleFile"); }

    Settings settings_{std::make_unique<MemorySettings>()};
    Reminders reminders_{settings_, [] { return 0; }};
    MiscellaneousDialog dialog_{settings_, reminders_, nullptr};
};

TEST_F(MiscellaneousDialogTest, ListsEveryReminder) {
    for (const ReminderSpec& reminder : allReminders())
        ASSERT_TRUE(field(std::string(reminder.key).c_str())) << reminder.key;
    field("ExampleFile")->setCurrentText(QStringLiteral("Remind me if it's been awhile"));
    EXPECT_EQ(choice(), ReminderChoice::EveryTime);
    dialog_.accept();
    EXPECT_EQ(choice(), ReminderChoice::AfterAWhile);

    MiscellaneousDialog again(settings_, reminders_, nullptr);
    EXPECT_EQ(again.findChild<QComboBox*>(QStringLiteral("ExampleFile"))->currentIndex(), 2);
    again.findChild<QPushButton*>(QStringLiteral("RemindAll"))->click();
    again.reject();
    EXPECT_EQ(choice(), ReminderChoice::AfterAWhile) << "cancelled";
    again.accept();
    EXPECT_EQ(choice(), ReminderChoice::EveryTime);
}

TEST_F(MiscellaneousDialogTest, BringsBackTheOfferToCompact) {
    setOffersCompaction(settings_, false);
    MiscellaneousDialog dialog(settings_, reminders_, nullptr);
    auto* offer = dialog.findChild<QCheckBox*>(QStringLiteral("OfferCompaction"));
    EXPECT_FALSE(offer->isChecked());
    dialog.findChild<QPushButton*>(QStringLiteral("RemindAll"))->click();
    EXPECT_TRUE(offer->isChecked());
    EXPECT_FALSE(offersCompaction(settings_)) << "before OK";
    dialog.accept();
    EXPECT_TRUE(offersCompaction(settings_));
}

TEST_F(MiscellaneousDialogTest, WhatIsDoneWithTheLoggersData) {
    field("TClearMemoryColumn")->setCurrentText(QStringLiteral("Never"));
    field("TNewDataColumn")->setCurrentText(QStringLiteral("Ask"));
    EXPECT_EQ(settings_.getInteger("TClearMemoryColumn", "Value", 0), 0);
    dialog_.accept();
    EXPECT_EQ(settings_.getInteger("TClearMemoryColumn", "Value", 0), 2);
    EXPECT_EQ(onNewData(settings_), OnNewData::Ask);
    const MiscellaneousDialog again(settings_, reminders_, nullptr);
    EXPECT_EQ(again.findChild<QComboBox*>(QStringLiteral("TClearMemoryColumn"))->currentText(),
              QStringLiteral("Never"));
    EXPECT_EQ(again.findChild<QComboBox*>(QStringLiteral("TNewDataColumn"))->currentText(), QStringLiteral("Ask"));
}

TEST_F(MiscellaneousDialogTest, ColorsChangeImmediately) {
    const QColor before = QApplication::palette().color(QPalette::Window);
    field("Theme")->setCurrentText(QStringLiteral("Dark"));
    dialog_.accept();
    EXPECT_EQ(themeSetting(settings_), Theme::Dark);
    EXPECT_LT(QApplication::palette().color(QPalette::Window).lightness(), 100);
    field("Theme")->setCurrentText(QStringLiteral("As the desktop"));
    dialog_.accept();
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), before);
}

} // namespace
} // namespace quobrix
