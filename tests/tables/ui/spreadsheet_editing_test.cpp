#include "fixture.h"

#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include <map>

namespace quobrix::test {
namespace {

using S = SampleTable;

class SpreadsheetEditing : public SpreadsheetTest {};

TEST_F(SpreadsheetEditing, TypingReplacesACellAndEnterGoesDown) {
    goTo(0, S::Key);
    typeText("new");
    press(Qt::Key_Return);
    EXPECT_EQ(key(0), "new");
    EXPECT_EQ(sheet().currentRow(), 1u);
    EXPECT_FALSE(sheet().view().isEditing());

    press(Qt::Key_F2);
    EXPECT_EQ(static_cast<QLineEdit*>(editor())->text(), "k2");
    press(Qt::Key_End);
    typeText("x");
    press(Qt::Key_Escape);
    EXPECT_EQ(key(1), "k2");
    EXPECT_TRUE(sheet().view().hasFocus());
}

TEST_F(SpreadsheetEditing, TabGoesOnToTheNextCellThatCanBeEdited) {
    goTo(0, S::Colour);
    press(Qt::Key_F2);
    press(Qt::Key_Tab);
    EXPECT_EQ(sheet().view().currentIndex(), sheet().model().index(1, S::Key)) << "read-only cells are passed";
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(sheet().view().currentIndex(), sheet().model().index(0, S::Colour));
}

TEST_F(SpreadsheetEditing, FiguresAreEditedInTheCurrentUnitAndInFull) {
    goTo(0, S::Speed);
    press(Qt::Key_F2);
    const auto* line = static_cast<QLineEdit*>(editor());
    EXPECT_EQ(line->text().left(8), "22.36936") << "10 m/s";
    EXPECT_EQ(line->findChild<QLabel*>()->text(), "MPH");
    press(Qt::Key_Return);
    EXPECT_EQ(speed(0), 10.0) << "what was only looked at stays as it is";
    EXPECT_FALSE(edits_.canUndo());

    goTo(0, S::Speed);
    typeText("1,000 kph");
    press(Qt::Key_Return);
    EXPECT_EQ(sheet().view().note().toStdString().substr(0, 13), "This value, 6") << "out of range";
    press(Qt::Key_Escape);
    typeText("36 kph");
    press(Qt::Key_Return);
    EXPECT_DOUBLE_EQ(speed(0), 10.0);
}

TEST_F(SpreadsheetEditing, ARefusedValueStaysInItsEditor) {
    goTo(0, S::Count);
    typeText("many");
    press(Qt::Key_Return);
    EXPECT_EQ(sheet().view().note(), "Hey, that's not an integer!");
    EXPECT_EQ(static_cast<QLineEdit*>(editor())->text(), "many");
    EXPECT_TRUE(editor()->hasFocus());
    EXPECT_FALSE(sheet().finishEdit());

    const QPoint elsewhere = sheet().view().visualRect(sheet().model().index(3, S::Key)).center();
    QTest::mouseClick(sheet().view().viewport(), Qt::LeftButton, {}, elsewhere);
    EXPECT_EQ(sheet().currentRow(), 0u);
    EXPECT_EQ(static_cast<QLineEdit*>(editor())->text(), "many");

    QLineEdit other(&sheet()); // the keyboard goes elsewhere
    other.show();
    other.setFocus();
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(static_cast<QLineEdit*>(editor())->text(), "many");

    trigger(SpreadsheetCommand::SortUp);
    EXPECT_TRUE(sheet().view().isEditing());
    editor()->setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    typeText("7");
    EXPECT_EQ(sheet().view().note(), QString()) << "said until something is changed";
    other.setFocus();
    EXPECT_FALSE(sheet().view().isEditing());
    EXPECT_EQ(table_.column<SampleCount>().at(0), 7) << "what can be taken is taken when the keyboard goes";
}

TEST_F(SpreadsheetEditing, WhatIsTypedOutlivesEditsMadeElsewhere) {
    goTo(0, S::Key);
    typeText("half");
    edits_.type(kNoObject, S::Key, 1, "other", TablesTest::context_);
    EXPECT_EQ(static_cast<QLineEdit*>(editor())->text(), "half");
    EXPECT_TRUE(sheet().finishEdit());
    EXPECT_EQ(key(0) + key(1), "halfother");
}

TEST_F(SpreadsheetEditing, BoxesAreTickedBySpaceAndByAClick) {
    goTo(2, S::Flag);
    press(Qt::Key_Space);
    EXPECT_EQ(table_.column<SampleFlag>().at(2), 1);
    EXPECT_EQ(sheet().model().index(2, S::Flag).data(Qt::CheckStateRole), Qt::Checked);
    const QRect cell = sheet().view().visualRect(sheet().model().index(2, S::Flag));
    QTest::mouseClick(sheet().view().viewport(), Qt::LeftButton, {}, {cell.left() + 12, cell.center().y()});
    EXPECT_EQ(table_.column<SampleFlag>().at(2), 0);
    QTest::mouseClick(sheet().view().viewport(), Qt::LeftButton, {}, {cell.right() - 3, cell.center().y()});
    EXPECT_EQ(table_.column<SampleFlag>().at(2), 0) << "beside the box";
    trigger(SpreadsheetCommand::Undo);
    EXPECT_EQ(table_.column<SampleFlag>().at(2), 1);
}

TEST_F(SpreadsheetEditing, SelectionsAreMadeFromTheirList) {
    goTo(0, S::Colour);
    press(Qt::Key_F2);
    auto* list = qobject_cast<QComboBox*>(editor());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->count(), 4) << "with nothing, as it is optional";
    list->setCurrentText("Green");
    EXPECT_TRUE(sheet().finishEdit());
    EXPECT_EQ(table_.column<SampleColour>().at(0), 2);
}

TEST_F(SpreadsheetEditing, AnEditedRowIsPutInOrderWhenItIsLeft) {
    sheet().view().sortByColumn(S::Key, Qt::AscendingOrder);
    EXPECT_EQ(shownKeys(), "K1 k2 K3 K5 K7 K10 ");
    goTo(1, S::Key);
    typeText("K99");
    EXPECT_TRUE(sheet().finishEdit());
    QApplication::processEvents();
    EXPECT_EQ(shownKeys(), "K1 K99 K3 K5 K7 K10 ") << "the person is still in it";
    press(Qt::Key_Down);
    QApplication::processEvents();
    EXPECT_EQ(shownKeys(), "K1 K3 K5 K7 K10 K99 ");
    EXPECT_EQ(sheet().currentRow(), 5u) << "the row that was gone to";
    EXPECT_EQ(key(1), "K99") << "stored where it was";

    edits_.type(kNoObject, S::Key, 2, "K999", TablesTest::context_); // in another window
    QApplication::processEvents();
    EXPECT_EQ(shownKeys(), "K3 K5 K7 K10 K99 K999 ");
}

TEST_F(SpreadsheetEditing, EveryWindowFollowsAnEditAndCanTakeItBack) {
    const auto other = makeSheet();
    goTo(0, S::Key);
    typeText("shared");
    press(Qt::Key_Return);
    EXPECT_EQ(other->model().text(0, S::Key), "shared");
    EXPECT_TRUE(other->commands().action(SpreadsheetCommand::Undo).isEnabled());
    EXPECT_EQ(other->commands().action(SpreadsheetCommand::Undo).statusTip(), "Takes back typing in Key.");
    other->commands().action(SpreadsheetCommand::Undo).trigger();
    EXPECT_EQ(sheet().model().text(0, S::Key), "K10");
    EXPECT_EQ(other->currentRow(), 0u) << "where it happened";
    EXPECT_FALSE(sheet().commands().action(SpreadsheetCommand::Undo).isEnabled());
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(key(0), "shared");
}

TEST_F(SpreadsheetEditing, WhatIsWrongIsMarkedAndExplained) {
    table_.column<SampleKey>().set(1, "k10");
    table_.column<SampleName>().set(0, "ab");
    const auto data = [&](int place, int column, int role) {
        return sheet().model().index(place, column).data(role).toString();
    };
    EXPECT_EQ(sheet().model().mark(1, S::Key)->severity, Severity::Required);
    EXPECT_EQ(data(1, S::Key, Qt::ToolTipRole), "This value must be unique (case insensitive).");
    EXPECT_EQ(
        data(1, S::Key, Qt::StatusTipRole),
        "This value must be unique (case insensitive). This value is in error. To find out why, press Shift+F10 or "
        "right-click on this field. ");
    EXPECT_EQ(sheet().model().mark(0, S::Name)->severity, Severity::Recommended);
    EXPECT_FALSE(sheet().model().mark(2, S::Key));
    edits_.type(kNoObject, S::Key, 1, "fine", TablesTest::context_);
    EXPECT_FALSE(sheet().model().mark(0, S::Key)) << "the other one is unique again";

    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&sheet().view());
    QAccessibleInterface* cell = accessible->tableInterface()->cellAt(0, S::Name);
    EXPECT_EQ(cell->text(QAccessible::Name), "ab");
    EXPECT_TRUE(cell->text(QAccessible::Description).startsWith("Name This string does not contain the recommended"));
    goTo(0, S::Name);
    press(Qt::Key_F2);
    EXPECT_EQ(editor()->accessibleName(), "Name, row 1");
}

TEST_F(SpreadsheetEditing, RowsMarkedElsewhereArePainted) {
    std::map<int, QString> shown; // by place: how the key is marked for all that the view has been told
    const auto look = [&](int first, int last) {
        for (int place = first; place <= last; ++place)
            shown[place] = sheet().model().index(place, S::Key).data(Qt::ToolTipRole).toString();
    };
    QObject::connect(&sheet().model(), &QAbstractItemModel::dataChanged,
                     [&](const QModelIndex& from, const QModelIndex& to) {
                         if (from.column() <= S::Key && to.column() >= S::Key)
                             look(from.row(), to.row());
                     });
    table_.column<SampleKey>().set(1, "k10");
    look(0, 5);
    const QString wrong = "This value must be unique (case insensitive).";
    EXPECT_EQ(shown[0], wrong);
    goTo(1, S::Key);
    typeText("fine");
    press(Qt::Key_Return);
    EXPECT_NE(shown[0], wrong);
    trigger(SpreadsheetCommand::Undo);
    EXPECT_EQ(shown[0], wrong);
}

TEST_F(SpreadsheetEditing, ALockedDocumentSaysWhyBesideTheCell) {
    edits_.setLock([] { return ShownText::asItIs("The example cannot be edited."); });
    goTo(0, S::Key);
    press(Qt::Key_F2);
    EXPECT_FALSE(sheet().view().isEditing());
    EXPECT_EQ(sheet().view().note(), "The example cannot be edited.");
    trigger(SpreadsheetCommand::Add);
    EXPECT_EQ(prompter_.told(MessageId::CannotInsert), "The example cannot be edited.");
}

TEST_F(SpreadsheetEditing, RecordsAreActivatedAndEdited) {
    const auto records = makeSheet(SpreadsheetView::Use::Records);
    static_cast<QWidget&>(*records).show();
    records->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(records.get()));
    records->view().setFocus();
    std::vector<RowIndex> activated;
    QObject::connect(records.get(), &TSpreadsheet::rowActivated, [&](RowIndex row) { activated.push_back(row); });
    records->setCurrentCell(1, S::Recorded);
    QTest::keyClick(&records->view(), Qt::Key_Return);
    EXPECT_EQ(activated, std::vector<RowIndex>{1});
    records->setCurrentCell(1, S::Name);
    typeText("Ann");
    EXPECT_TRUE(records->finishEdit());
    EXPECT_EQ(table_.column<SampleName>().at(1), "Ann");
    const auto doubleClick = [&](int column) {
        const QPoint place = records->view().visualRect(records->model().index(2, column)).center();
        QTest::mouseClick(records->view().viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(records->view().viewport(), Qt::LeftButton, {}, place);
    };
    doubleClick(S::Recorded);
    EXPECT_EQ(activated.size(), 2u);
    doubleClick(S::Name);
    EXPECT_TRUE(records->view().isEditing());
    EXPECT_EQ(activated.size(), 2u);
}

} // namespace
} // namespace quobrix::test
