#include "units/ui/unit_system_dialog.h"

#include "support/scripted_prompter.h"
#include "support/temporary_folder.h"
#include "units/ui/decimals_box.h"
#include "units/unit_system_file.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>

namespace quobrix {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedPrompter;

class UnitSystemDialogTest : public ::testing::Test, private UnitsListener {
protected:
    UnitSystemDialogTest() {
        fs::create_directory(folders_.program);
        put("Metric", true);
        put("U.S.", true);
        put("Mine", false);
        EXPECT_TRUE(store_.loadSystem("Mine"));
        units_.addListener(*this);
    }
    ~UnitSystemDialogTest() override { units_.removeListener(*this); }

    void put(const std::string& name, bool locked) {
        const fs::path file = folders_.program / (name + ".us");
        const Bytes bytes = encodeUnitSystem(UnitChoices{});
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (locked)
            fs::permissions(file, fs::perms::owner_read);
    }
    void unitsChanged(UnitsChange reason, std::optional<UnitTypeId>) override {
        reasons_ += std::to_string(static_cast<int>(reason));
    }

    /// PROMPTER must outlive the dialog.
    void open(Prompter& prompter) {
        dialog_ = std::make_unique<UnitSystemDialog>(units_, store_, settings_, prompter, nullptr);
        dialog_->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialog_.get()));
        dialog_->selectType(UnitTypeId::Speed);
    }
    void open() { open(silent_); }
    template <class Widget>
    Widget* field(const char* name) {
        return dialog_->findChild<Widget*>(QLatin1String(name));
    }
    void chooseUnit(int row) { field<QListWidget>("UsFldU")->setCurrentRow(row); }
    void chooseSystem(const char* name) {
        auto* systems = field<QComboBox>("UsFldUS");
        systems->setCurrentText(QLatin1String(name));
        emit systems->activated(systems->currentIndex());
    }
    /// Presses BUTTON and, in the dialog that it opens, OK after NAME has been put into FIELD, and then Cancel if that
    /// was refused.
    void press(const char* button, const char* nameField, const char* name) {
        QTimer::singleShot(0, qApp, [=] {
            auto* asking = QApplication::activeModalWidget();
            ASSERT_TRUE(asking);
            asking->findChild<QLineEdit*>(QLatin1String(nameField))->setText(QLatin1String(name));
            QTest::keyClick(asking, Qt::Key_Return);
            if (asking->isVisible())
                QTest::keyClick(asking, Qt::Key_Escape);
        });
        field<QPushButton>(button)->click();
    }
    /// The system NAME as its file has it.
    UnitId savedUnit(const char* name, UnitTypeId type) {
        TUnitSystem units;
        UnitSystemStore store(units, folders_);
        return store.loadSystem(name) ? units.unit(type) : UnitId::Foot;
    }

    test::TemporaryFolder folder_;
    UnitSystemFolders folders_{folder_ / "program", folder_ / "user"};
    Settings settings_{std::make_unique<MemorySettings>()};
    TUnitSystem units_;
    UnitSystemStore store_{units_, folders_, &settings_};
    ScriptedPrompter silent_;
    std::unique_ptr<UnitSystemDialog> dialog_;
    std::string reasons_;
};

TEST_F(UnitSystemDialogTest, ChoicesApplyAndAreUndone) {
    open();
    reasons_.clear();
    chooseUnit(1);
    EXPECT_EQ(units_.unitName(UnitTypeId::Speed), "MPH");
    EXPECT_EQ(field<DecimalsBox>("UsFldD")->value(), 0) << "the new unit's decimals";
    EXPECT_EQ(field<QLabel>("example")->text(), QStringLiteral("26.8224 m/s shows as 60 MPH"));
    field<DecimalsBox>("UsFldD")->setValue(2);
    EXPECT_EQ(field<QLabel>("example")->text(), QStringLiteral("26.8224 m/s shows as 60.00 MPH"));
    field<QCheckBox>("UsFldFD")->click();
    EXPECT_EQ(reasons_, "123");

    QTest::keyClick(dialog_.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(units_.fractionDiameters());
    EXPECT_FALSE(field<QCheckBox>("UsFldFD")->isChecked());
    field<QPushButton>("UsUndo")->click();
    field<QPushButton>("UsUndo")->click();
    EXPECT_EQ(units_.unitName(UnitTypeId::Speed), "m/s");
    EXPECT_EQ(units_.decimals(UnitTypeId::Speed), 1);
    EXPECT_FALSE(field<QPushButton>("UsUndo")->isEnabled());
    field<QPushButton>("UsRedo")->click();
    EXPECT_EQ(units_.unitName(UnitTypeId::Speed), "MPH");
    EXPECT_EQ(field<QListWidget>("UsFldU")->currentRow(), 1);
}

TEST_F(UnitSystemDialogTest, DecimalsAreTakenAsTheyAreTyped) {
    open();
    auto* decimals = field<DecimalsBox>("UsFldD");
    const auto type = [&](const char* text) {
        decimals->setFocus();
        decimals->selectAll();
        QTest::keyClicks(decimals, QLatin1String(text));
        return decimals->text().toStdString();
    };
    EXPECT_EQ(type("4"), "4");
    EXPECT_EQ(units_.decimals(UnitTypeId::Speed), 4);
    EXPECT_EQ(type("10"), "9");
    EXPECT_EQ(units_.decimals(UnitTypeId::Speed), 9);
    EXPECT_EQ(type("2.9"), "2.9");
    EXPECT_EQ(units_.decimals(UnitTypeId::Speed), 2);
    EXPECT_EQ(type("-1"), "9");
    EXPECT_EQ(units_.decimals(UnitTypeId::Speed), 9);
    type("3");
    decimals->selectAll();
    QTest::keyClick(decimals, Qt::Key_Delete);
    EXPECT_EQ(decimals->text(), QString());
    EXPECT_EQ(units_.decimals(UnitTypeId::Speed), 3);
    QTest::keyClick(decimals, Qt::Key_Return);
    EXPECT_EQ(decimals->text(), QStringLiteral("3")) << "refilled";
    EXPECT_TRUE(dialog_->isVisible()) << "Enter ends the entry only";
    QTest::keyClick(decimals, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(units_.decimals(UnitTypeId::Speed), 9) << "undo is that of the dialog, not of the line of text";
    dialog_->selectType(UnitTypeId::Date);
    EXPECT_FALSE(decimals->isEnabled());
}

TEST_F(UnitSystemDialogTest, ALockedSystemStays) {
    open();
    auto* rename = field<QPushButton>("UsRename");
    auto* remove = field<QPushButton>("UsDelete");
    EXPECT_TRUE(rename->isEnabled() && remove->isEnabled());
    EXPECT_EQ(remove->toolTip(), QStringLiteral("Deletes the current unit system. This cannot be undone!"));
    chooseSystem("S.I.");
    EXPECT_EQ(units_.name(), "S.I.");
    EXPECT_FALSE(rename->isEnabled() || remove->isEnabled());
    EXPECT_EQ(rename->toolTip(), QStringLiteral("The current unit system is locked and cannot be renamed"));
    EXPECT_EQ(remove->toolTip(), QStringLiteral("The current unit system is locked and cannot be deleted"));
    EXPECT_TRUE(field<QLabel>("locked")->isVisible());
}

TEST_F(UnitSystemDialogTest, SwitchingAndClosingSaveTheChanges) {
    open();
    chooseUnit(2);
    chooseSystem("Metric");
    EXPECT_EQ(savedUnit("Mine", UnitTypeId::Speed), UnitId::KilometrePerHour);
    EXPECT_FALSE(field<QPushButton>("UsUndo")->isEnabled()) << "another system has no changes yet";
    chooseSystem("Mine");
    chooseUnit(3);
    dialog_->close();
    EXPECT_EQ(savedUnit("Mine", UnitTypeId::Speed), UnitId::FootPerSecond);
    open();
    chooseUnit(1);
    dialog_.reset(); // as the program ends without a word
    EXPECT_EQ(savedUnit("Mine", UnitTypeId::Speed), UnitId::MilePerHour);
}

TEST_F(UnitSystemDialogTest, AFileThatBecomesReadOnlyLocksItsSystem) {
    ScriptedPrompter script{{MessageId::KeepUnitChanges, std::nullopt}, {MessageId::KeepUnitChanges, Answer::Yes}};
    open(script);
    chooseUnit(2);
    chooseUnit(3);
    fs::permissions(folders_.program / "Mine.us", fs::perms::owner_read);
    dialog_->close();
    EXPECT_TRUE(dialog_->isVisible()) << "cancelled";
    EXPECT_FALSE(field<QPushButton>("UsRename")->isEnabled());
    field<QPushButton>("UsUndo")->click();
    EXPECT_TRUE(units_.locked());
    QTimer::singleShot(0, qApp, [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Return); });
    dialog_->close();
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_EQ(savedUnit("My Units", UnitTypeId::Speed), UnitId::KilometrePerHour);
    EXPECT_EQ(savedUnit("Mine", UnitTypeId::Speed), UnitId::MetrePerSecond);
    dialog_.reset();
}

TEST_F(UnitSystemDialogTest, ChangesOfALockedSystemAreOffered) {
    ASSERT_TRUE(store_.loadSystem("U.S."));
    ScriptedPrompter script{{MessageId::KeepUnitChanges, Answer::Yes}};
    open(script);
    chooseUnit(3);
    QTimer::singleShot(0, qApp, [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Return); });
    dialog_->close();
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_EQ(units_.name(), "My Units");
    EXPECT_EQ(savedUnit("My Units", UnitTypeId::Speed), UnitId::FootPerSecond);
    EXPECT_EQ(savedUnit("U.S.", UnitTypeId::Speed), UnitId::MetrePerSecond);
    dialog_.reset();
}

TEST_F(UnitSystemDialogTest, ANewSystemAsksAboutChanges) {
    ASSERT_TRUE(store_.loadSystem("U.S."));
    ScriptedPrompter script{{MessageId::KeepUnitChanges, std::nullopt}};
    open(script);
    chooseUnit(2);
    const UnitId changed = units_.unit(UnitTypeId::Speed);
    QTimer::singleShot(0, qApp, [] {
        QWidget* window = QApplication::activeModalWidget();
        auto* base = window->findChild<QComboBox*>("UsDlgNewFldBase");
        base->setCurrentIndex(base->findText("Metric"));
        QTest::keyClicks(window->findChild<QLineEdit*>("UsDlgNewFldName"), "Other");
        QTest::keyClick(window, Qt::Key_Return);
    });
    field<QPushButton>("UsNew")->click();
    EXPECT_EQ(script.shown.size(), 1u);
    EXPECT_EQ(units_.name(), "U.S.");
    EXPECT_EQ(units_.unit(UnitTypeId::Speed), changed);
    EXPECT_FALSE(fs::exists(folders_.program / "Other.us"));
    dialog_.reset();
}

TEST_F(UnitSystemDialogTest, NewRenameAndDelete) {
    ScriptedPrompter script{{MessageId::ErrUsNoName},
                            {MessageId::ErrUsDlgNew},
                            {MessageId::ErrUsBadName},
                            {MessageId::ErrUsDlgNew},
                            {MessageId::DeleteUnitSystem, Answer::No},
                            {MessageId::DeleteUnitSystem, Answer::Yes}};
    open(script);
    for (const char* refused : {"", "METRIC", "a/b"})
        press("UsNew", "UsDlgNewFldName", refused);
    EXPECT_EQ(units_.name(), "Mine");
    press("UsNew", "UsDlgNewFldName", " Ours ");
    EXPECT_EQ(units_.name(), "Ours");
    EXPECT_EQ(field<QComboBox>("UsFldUS")->currentText(), QStringLiteral("Ours"));
    QTimer::singleShot(0, qApp, [] {
        auto* asking = QApplication::activeModalWidget();
        EXPECT_EQ(asking->findChild<QLineEdit*>(QStringLiteral("UsDlgRenFldNew"))->selectedText(), "Ours");
        QTest::keyClick(asking, Qt::Key_Return); // which keeps the name, without a word
        EXPECT_FALSE(asking->isVisible());
        asking->close();
    });
    field<QPushButton>("UsRename")->click();
    press("UsRename", "UsDlgRenFldNew", "mine");
    press("UsRename", "UsDlgRenFldNew", "Theirs");
    EXPECT_EQ(field<QComboBox>("UsFldUS")->currentText(), QStringLiteral("Theirs"));
    EXPECT_FALSE(fs::exists(folders_.program / "Ours.us"));
    field<QPushButton>("UsDelete")->click();
    EXPECT_EQ(units_.name(), "Theirs");
    field<QPushButton>("UsDelete")->click();
    EXPECT_EQ(units_.name(), "U.S.");
    EXPECT_EQ(field<QComboBox>("UsFldUS")->findText(QStringLiteral("Theirs")), -1);
    EXPECT_EQ(script.shown.back(), "Delete the unit system Theirs?");
    dialog_.reset();
}

TEST_F(UnitSystemDialogTest, AFailureIsToldAndLosesNothing) {
    // A folder that is a file refuses every new entry, even to an administrator.
    ScriptedPrompter script{{MessageId::FolderNotFound}, {MessageId::FolderNotFound}};
    UnitSystemStore store(units_, {folders_.program / "Metric.us", folders_.program / "U.S..us"}, &settings_);
    dialog_ = std::make_unique<UnitSystemDialog>(units_, store, settings_, script, nullptr);
    dialog_->show();
    chooseUnit(2);
    chooseSystem("S.I.");
    EXPECT_EQ(units_.name(), "Mine");
    EXPECT_EQ(field<QComboBox>("UsFldUS")->currentText(), QStringLiteral("Mine"));
    dialog_->close();
    EXPECT_FALSE(dialog_->isVisible()) << "nobody is held in the dialog";
    EXPECT_TRUE(units_.modified());
    EXPECT_EQ(units_.unit(UnitTypeId::Speed), UnitId::KilometrePerHour);
    dialog_.reset();
}

TEST_F(UnitSystemDialogTest, AccessibleNamesAndMnemonics) {
    open();
    for (const char* name : {"UsFldUS", "UsFldUT", "UsFldU", "UsFldD"})
        EXPECT_FALSE(field<QWidget>(name)->accessibleName().isEmpty()) << name;
    std::set<QString> mnemonics;
    for (const auto* label : dialog_->findChildren<QLabel*>())
        EXPECT_TRUE(!label->buddy() || mnemonics.insert(QKeySequence::mnemonic(label->text()).toString()).second);
    for (const auto* button : dialog_->findChildren<QAbstractButton*>()) {
        const QString mnemonic = QKeySequence::mnemonic(button->text()).toString();
        EXPECT_TRUE(mnemonic.isEmpty() || mnemonics.insert(mnemonic).second) << button->text().toStdString();
    }
    EXPECT_EQ(mnemonics.size(), 10u) << "four labels, five buttons and the check box";
}

} // namespace
} // namespace quobrix
