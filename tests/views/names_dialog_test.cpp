#include "views/names_dialog.h"

#include "base/ui/qt_text.h"
#include "support/scripted_prompter.h"
#include "support/view_fixture.h"
#include "tables/ui/table_spreadsheet.h"
#include "ui/status_line.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusTipEvent>
#include <QTest>

#include <set>

namespace quobrix {
namespace {

using testing::ScriptedPrompter;
using Keys = std::vector<std::string>;

class NamesDialogTest : public test::ViewTest {
protected:
    NamesDialogTest() {
        context_.prompter = &silent_;
        test::addTrip(document_, 1'700'000'000); // which adds its vehicle
        document_.vehicles().addMissing(Keys{"WVWZZZ1KZAW000001", "WAUZZZ8K9BA000002"});
    }
    template <class Dialog>
    Dialog& open() {
        auto made = std::make_unique<Dialog>(context_, nullptr);
        Dialog& dialog = *made;
        dialog_ = std::move(made);
        dialog.show();
        dialog.activateWindow();
        return dialog;
    }
    TTableSpreadsheet& list() { return *dialog_->findChild<TTableSpreadsheet*>(); }
    QAction& command(SpreadsheetCommand command) { return list().commands().action(command); }
    QPushButton& button(const char* name) { return *dialog_->findChild<QPushButton*>(QLatin1String(name)); }
    /// Keys go where the keyboard is: into the editor, once it is open.
    void typeText(std::string_view text) {
        for (const char c : text)
            QTest::keyClick(dialog_->focusWidget(), c);
    }
    void press(Qt::Key key) { QTest::keyClick(dialog_->focusWidget(), key); }
    void selectRows(std::initializer_list<int> rows) {
        list().view().clearSelection();
        for (const int row : rows)
            list().view().selectionModel()->select(list().model().index(row, 0),
                                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    QString shown(int row, int column) { return list().model().text(row, column); }

    ScriptedPrompter silent_;
    std::unique_ptr<NamesDialog> dialog_;
};

TEST_F(NamesDialogTest, AVehicleIsAddedTypedAndTakenBackAgain) {
    open<TVehicleNamesDialog>();
    button("addName").click();
    ASSERT_EQ(document_.vehicles().rowCount(), 4u);
    EXPECT_EQ(document_.vehicles().name(3), "Unknown #4");
    typeText("wauzzz8k9ba000003");
    press(Qt::Key_Return);
    EXPECT_EQ(document_.vehicles().key(3), "WAUZZZ8K9BA000003");
    EXPECT_GE(list().view().columnWidth(0), list().view().sizeHintForIndex(list().model().index(3, 0)).width());
    button("undoNames").click();
    button("undoNames").click();
    EXPECT_EQ(document_.vehicles().rowCount(), 3u);
    EXPECT_FALSE(button("undoNames").isEnabled());
    button("redoNames").click();
    EXPECT_EQ(document_.vehicles().name(3), "Unknown #4") << "row and name are one step";
}

TEST_F(NamesDialogTest, OnlyASelectionWithoutKeysInUseIsDeleted) {
    ScriptedPrompter prompter{{MessageId::DeleteVehicle}, {MessageId::CannotDeleteVin}, {MessageId::DeleteVehicle}};
    context_.prompter = &prompter;
    open<TVehicleNamesDialog>();
    EXPECT_EQ(shown(0, 2), QStringLiteral("Yes"));
    EXPECT_EQ(shown(1, 2), QStringLiteral("No"));
    selectRows({0, 1});
    button("deleteNames").click();
    EXPECT_EQ(document_.vehicles().rowCount(), 3u);
    selectRows({1, 2});
    button("deleteNames").click();
    ASSERT_EQ(document_.vehicles().rowCount(), 1u);
    EXPECT_EQ(document_.vehicles().key(0), test::kVin);
    button("undoNames").click();
    EXPECT_EQ(document_.vehicles().key(2), "WAUZZZ8K9BA000002");
}

TEST_F(NamesDialogTest, OpensAtTheKeysToBeNamed) {
    auto& dialog = open<TVehicleNamesDialog>();
    list().view().sortByColumn(0, Qt::DescendingOrder); // W V …, W A …, 1 G …
    dialog.nameKeys(Keys{"WAUZZZ8K9BA000002", "gone", test::kVin});
    ASSERT_TRUE(list().view().isEditing());
    EXPECT_EQ(list().view().selectionModel()->selectedRows().size(), 2);
    typeText("Van");
    press(Qt::Key_Return);
    EXPECT_EQ(document_.vehicles().nameOf("WAUZZZ8K9BA000002"), "Van");
}

TEST_F(NamesDialogTest, ARefusedNameKeepsTheDialogOpen) {
    document_.drivers().addMissing(Keys{"7"});
    auto& dialog = open<DriverNamesDialog>();
    list().setCurrentCell(0, 1);
    typeText("123456789012345678901");
    dialog.close();
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(list().view().note(), QStringLiteral("Not a valid driver name. Length should be 1-20 characters long."));
    press(Qt::Key_Backspace);
    dialog.close();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(document_.drivers().name(0), "12345678901234567890");
}

TEST_F(NamesDialogTest, ARefusedSerialNumberIsToldOnce) {
    ScriptedPrompter prompter{{MessageId::InvalidSerialNumber}, {MessageId::InvalidSerialNumber}};
    context_.prompter = &prompter;
    auto& dialog = open<TQuobrixNamesDialog>();
    const auto rows = static_cast<int>(document_.loggers().rowCount());
    button("addName").click();
    typeText("AA-99-A");
    press(Qt::Key_Return);
    EXPECT_TRUE(list().view().isEditing());
    QApplication::processEvents();
    ASSERT_EQ(prompter.shown.size(), 1u);
    EXPECT_TRUE(prompter.shown[0].ends_with("format \"AA-99-A\".\n\nFor instance K-0042-B.")) << prompter.shown[0];
    dialog.close();
    dialog.finishEdit();
    QApplication::processEvents();
    EXPECT_TRUE(dialog.isVisible());

    QWidget box; // as the message's
    box.show();
    box.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&box));
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("cellEditor")) << "typing goes on";
    press(Qt::Key_Escape);
    EXPECT_EQ(list().model().rowCount(), rows + 1);
}

TEST_F(NamesDialogTest, DriversGetTheNamesThatAreKeptForThem) {
    open<DriverNamesDialog>();
    EXPECT_EQ(dialog_->findChild<QLineEdit*>(QStringLiteral("newDriverName"))->text(), QString());
    dialog_->findChild<QLineEdit*>(QStringLiteral("newDriverName"))->setText(QStringLiteral(" Trainee "));
    dialog_->findChild<QLineEdit*>(QStringLiteral("unidentifiedDriverName"))->setText(QStringLiteral("Somebody"));
    EXPECT_EQ(settings_.getText(kNewDriverSection, kDefaultName), "Trainee");
    EXPECT_EQ(settings_.getText(kUnidentifiedDriverSection, kDefaultName), "Somebody");
    button("addName").click();
    EXPECT_EQ(document_.drivers().name(0), "Trainee");
}

TEST_F(NamesDialogTest, TheFootSaysWhatIsWrong) {
    for (RowIndex row = 0; row < 3; ++row)
        document_.vehicles().nameAll(Keys{document_.vehicles().key(row)}, row < 2 ? "Van" : "Car");
    open<TVehicleNamesDialog>();
    const auto* line = dialog_->findChild<StatusLine*>(QStringLiteral("statusLine"));
    ASSERT_TRUE(line && line->isVisible());
    const int height = line->height();
    const QString wrong = QStringLiteral(
        "It is recommended that this value be unique (case insensitive). This value may be in error. To find "
        "out why, press Shift+F10 or right-click on this field.");
    list().setCurrentCell(0, 1);
    EXPECT_EQ(line->said(), wrong) << line->said().toStdString();
    EXPECT_EQ(line->accessibleName(), wrong);
    EXPECT_EQ(line->toolTip(), QString()) << "all of it is in view";

    QStatusTipEvent prompt(QStringLiteral("Copies the selected cells as text."));
    QApplication::sendEvent(&list(), &prompt); // as a menu does
    EXPECT_EQ(line->said(), prompt.tip());
    QStatusTipEvent none({});
    QApplication::sendEvent(&list(), &none);
    EXPECT_EQ(line->said(), wrong);

    ASSERT_TRUE(document_.edits().type(document_.vehicles().id(), 1, 1, "Truck", context_.text()).ok());
    EXPECT_EQ(line->said(), QStringLiteral("The name by which this vehicle is shown.")) << "it is right again";
    document_.edits().undo();
    dialog_->resize(dialog_->minimumSizeHint());
    QApplication::processEvents();
    EXPECT_EQ(line->height(), height);
    EXPECT_TRUE(line->text().endsWith(QChar(0x2026)) && line->toolTip() == wrong) << line->text().toStdString();
}

TEST_F(NamesDialogTest, EachDialogNamesItsTableAndItsControls) {
    std::set<QString> titles, emptyTexts;
    const auto inspect = [&](NamesDialog& dialog) {
        EXPECT_TRUE(titles.insert(dialog.windowTitle()).second);
        for (const QPushButton* each : dialog.findChildren<QPushButton*>())
            EXPECT_FALSE(each->autoDefault()) << each->text().toStdString(); // Enter belongs to the list
        for (const QLineEdit* field : dialog.findChildren<QLineEdit*>()) {
            if (field->objectName().isEmpty() || !field->isVisible())
                continue;
            const auto labels = dialog.findChildren<QLabel*>();
            EXPECT_TRUE(
                std::any_of(labels.begin(), labels.end(), [&](const QLabel* l) { return l->buddy() == field; }));
            EXPECT_FALSE(field->accessibleName().isEmpty() || field->toolTip().isEmpty());
        }
        EXPECT_EQ(list().view().accessibleName(), dialog.windowTitle());
    };
    inspect(open<TVehicleNamesDialog>());
    inspect(open<TQuobrixNamesDialog>());
    inspect(open<DriverNamesDialog>());
    dialog_->resize(700, 500);
    dialog_.reset();
    EXPECT_EQ(open<DriverNamesDialog>().size(), QSize(700, 500));
}

} // namespace
} // namespace quobrix
