#include "fixture.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QStatusTipEvent>

namespace quobrix::test {
namespace {

using S = SampleTable;
using Command = SpreadsheetCommand;

class SpreadsheetCommandsTest : public SpreadsheetTest {
protected:
    void setClipboard(const char* text) { QApplication::clipboard()->setText(QString::fromUtf8(text)); }
    QString clipboard() { return QApplication::clipboard()->text(); }
};

TEST_F(SpreadsheetCommandsTest, SayWhatIsNotAvailable) {
    for (const Command command : {Command::Help, Command::Requirements, Command::UnitSystems}) {
        EXPECT_FALSE(sheet().commands().action(command).isEnabled());
        EXPECT_TRUE(sheet().commands().action(command).statusTip().endsWith("(not available yet)"));
    }
}

TEST_F(SpreadsheetCommandsTest, MenuSaysWhatIsWrong) {
    table_.column<SampleKey>().set(1, "k10");
    goTo(1, S::Key);
    press(Qt::Key_F10, Qt::ShiftModifier);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->actions().front()->text(), "This value must be unique (case insensitive).");
    menu->close();
}

TEST_F(SpreadsheetCommandsTest, CopyAndPasteKeepAllOfAValue) {
    table_.column<SampleSpeed>().set(0, 10.0 / 3);
    select(0, S::Speed, 0, S::Speed);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), "7 MPH") << "other programs get what is read";
    select(3, S::Speed, 4, S::Speed);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(speed(3), 10.0 / 3);
    EXPECT_EQ(speed(4), 10.0 / 3) << "one cell fills all that are selected";
    trigger(Command::Undo);
    EXPECT_EQ(speed(4), 14.0);
    EXPECT_EQ(speed(3), 13.0) << "in one step";
}

TEST_F(SpreadsheetCommandsTest, CellsAreCopiedAsATableToo) {
    table_.column<SampleName>().set(0, "=1+1\n<b>");
    table_.column<SampleName>().set(1, "");
    select(0, S::Name, 1, S::Speed);
    press(Qt::Key_C, Qt::ControlModifier);
    const QMimeData& copied = *QApplication::clipboard()->mimeData();
    EXPECT_TRUE(copied.html().contains("<tr><td style=\"mso-number-format:'\\@'\">=1+1<br>&lt;b&gt;</td>"
                                       "<td align=\"right\">22 MPH</td></tr>\n"
                                       "<tr><td style=\"mso-number-format:'\\@'\"></td>"))
        << copied.html().toStdString();
    select(0, S::Name, 0, S::Name);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_FALSE(QApplication::clipboard()->mimeData()->hasHtml()) << "one cell is pasted as text";
}

TEST_F(SpreadsheetCommandsTest, WhatWasCopiedIsReadInTheFormOfThen) {
    table_.column<SampleTime>().set(0, 1'709'510'400); // 4 March 2024
    table_.column<SampleTime>().set(1, 1'709'510'400);
    units_.setUnit(UnitTypeId::Date, UnitId::MonthDayYear);
    TextLocale comma;
    comma.numbers.decimalSeparator = ",";
    comma.numbers.thousandsSeparator = ".";
    units_.setLocale(comma);
    table_.column<SampleSpeed>().set(0, 1.234);
    const auto copied = [&](int column, int rows) {
        select(0, column, rows - 1, column);
        trigger(Command::Copy);
        return clipboard();
    };
    EXPECT_TRUE(copied(S::Time, 1).startsWith("03/04/2024 ")) << "as people read it";
    units_.setUnit(UnitTypeId::Date, UnitId::DayMonthYear);
    goTo(4, S::Time);
    trigger(Command::Paste);
    EXPECT_EQ(table_.column<SampleTime>().at(4), 1'709'510'400);
    copied(S::Time, 2);
    units_.setUnit(UnitTypeId::Date, UnitId::YearMonthDay);
    goTo(2, S::Time);
    trigger(Command::Paste);
    EXPECT_EQ(table_.column<SampleTime>().at(3), 1'709'510'400) << "and in blocks";

    copied(S::Speed, 1);
    units_.setLocale({});
    goTo(4, S::Speed);
    trigger(Command::Paste);
    EXPECT_DOUBLE_EQ(speed(4), 1.234);

    setClipboard("2024/03/04"); // another program's, in the form of now
    goTo(5, S::Time);
    trigger(Command::Paste);
    EXPECT_EQ(table_.column<SampleTime>().at(5), 1'709'510'400);
}

TEST_F(SpreadsheetCommandsTest, BlocksArePastedInTheOrderThatIsShown) {
    sheet().view().sortByColumn(S::Key, Qt::AscendingOrder); // K1 k2 K3 K5 K7 K10
    setClipboard("50\t5\n60\t6\n");
    select(4, S::Speed, 4, S::Speed);
    trigger(Command::Paste);
    EXPECT_EQ(key(3), "K7");
    EXPECT_EQ(table_.column<SampleCount>().at(3), 5);
    EXPECT_EQ(key(0), "K10");
    EXPECT_EQ(table_.column<SampleCount>().at(0), 6);

    setClipboard("A\nB\nC\n"); // one more than there are rows
    select(4, S::Key, 4, S::Key);
    trigger(Command::Paste);
    EXPECT_EQ(key(3) + key(0), "AB");
    ASSERT_EQ(table_.rowCount(), 7u);
    EXPECT_EQ(key(6), "C");
    trigger(Command::Undo);
    EXPECT_EQ(table_.rowCount(), 6u);
    EXPECT_EQ(key(3) + key(0), "K7K10");
}

TEST_F(SpreadsheetCommandsTest, AnEmptyListTakesRowsFromTheClipboard) {
    table_.removeRows(0, 6);
    EXPECT_FALSE(sheet().commands().action(Command::Copy).isEnabled());
    for (const auto& [text, rows] : {std::pair("A\tAnna\nB\tBob\n", 2u), std::pair("only", 1u)}) {
        setClipboard(text);
        trigger(Command::Paste);
        EXPECT_EQ(table_.rowCount(), rows) << text;
        EXPECT_EQ(shownKeys(), rows == 2 ? "A B " : "only ");
        trigger(Command::Undo);
        EXPECT_EQ(table_.rowCount(), 0u);
    }
    setClipboard("K\tNames have five letters at most");
    trigger(Command::Paste);
    EXPECT_NE(prompter_.told(MessageId::CannotPaste), "");
    EXPECT_EQ(sheet().model().rowCount(), 0);
}

TEST_F(SpreadsheetCommandsTest, WhatDoesNotFitIsRefusedAsAWhole) {
    const std::string foreign = "The clipboard contains data which cannot be pasted.\nIt's in a format that's "
                                "incompatible with this spreadsheet.";
    const Bytes before = table_.bytes();
    struct Case {
        const char* text;
        int column;
        std::string told;
    };
    const Case cases[] = {
        {"50\t5\n60\tx\n", S::Speed, foreign + "\n\nRow 2, Count: Hey, that's not an integer!"},
        {"1\t2\n3\n", S::Count, foreign},
        {"1\t2", S::Recorded, foreign + "\n\nRow 1, Recorded: This is not editable; see Help for more information."},
        {"a\tb\tc", S::Recorded, foreign},
        {"x", S::Count, foreign + "\n\nRow 1, Count: Hey, that's not an integer!"},
        {"k2", S::Key, foreign + "\n\nRow 1, Key: This value must be unique (case insensitive)."},
    };
    for (const Case& each : cases) {
        setClipboard(each.text);
        goTo(0, each.column);
        trigger(Command::Paste);
        EXPECT_EQ(prompter_.told(MessageId::CannotPaste), each.told);
        EXPECT_EQ(table_.bytes(), before);
    }
    EXPECT_FALSE(edits_.canUndo());
}

TEST_F(SpreadsheetCommandsTest, TenMegabytesAreRefusedWithoutHarm) {
    QApplication::clipboard()->setText(QString(10'000'000, QLatin1Char('x')));
    goTo(0, S::Key);
    trigger(Command::Paste);
    EXPECT_EQ(prompter_.told(MessageId::CannotPaste), quobrix::text(kIncompatiblePaste));
    EXPECT_EQ(key(0), "K10");
}

TEST_F(SpreadsheetCommandsTest, CutEmptiesWhatItCopies) {
    select(0, S::Speed, 1, S::Count);
    trigger(Command::Cut);
    EXPECT_EQ(clipboard(), "22 MPH\t1\n25 MPH\t1\n");
    EXPECT_FALSE(table_.column<SampleSpeed>().has(1));
    EXPECT_FALSE(table_.column<SampleCount>().has(0));
    select(3, S::Speed, 3, S::Speed);
    trigger(Command::Paste);
    EXPECT_DOUBLE_EQ(speed(4), 11);
}

TEST_F(SpreadsheetCommandsTest, RecordsAreCopiedAsHighlighted) {
    table_.column<SampleName>().set(0, "Anna");
    table_.column<SampleName>().set(1, "Bob");
    const auto records = makeSheet(SpreadsheetView::Use::Records);
    records->setCurrentCell(1, S::Name);
    QTest::keyClick(&records->view(), Qt::Key_Up, Qt::ShiftModifier);
    records->commands().action(Command::Copy).trigger();
    EXPECT_TRUE(clipboard().startsWith("K10\tAnna\t22 MPH\t")) << clipboard().toStdString();
    EXPECT_TRUE(clipboard().contains("\nk2\tBob\t25 MPH\t"));
    records->commands().action(Command::Cut).trigger();
    EXPECT_EQ(clipboard(), "Anna\nBob\n");
    EXPECT_EQ(key(0) + table_.column<SampleName>().at(0), "K10");

    table_.column<SampleName>().set(1, "B \"B\"");
    records->setCurrentCell(1, S::Name);
    records->commands().action(Command::Copy).trigger();
    EXPECT_EQ(clipboard(), "B \"B\"") << "of one record the cell in which people write, fit for any field";
    records->setCurrentCell(3, S::Name);
    records->commands().action(Command::Paste).trigger();
    EXPECT_EQ(table_.column<SampleName>().at(3), "B \"B\"");
    table_.column<SampleName>().set(1, "Bob");
    records->setCurrentCell(1, S::Recorded);
    records->commands().action(Command::Copy).trigger();
    EXPECT_TRUE(clipboard().startsWith("k2\tBob\t"));
}

TEST_F(SpreadsheetCommandsTest, CutAndDeleteAreOffered) {
    const auto records = makeSheet(SpreadsheetView::Use::Records);
    const auto offered = [](TSpreadsheet& list, Command command) {
        return list.commands().action(command).isEnabled();
    };
    const std::map<int, bool> cut = {{S::Key, false}, // required
                                     {S::Name, true},
                                     {S::Flag, false}, // yes or no, never empty
                                     {S::Recorded, false},
                                     {S::Number, false}};
    for (const auto& [column, may] : cut) {
        goTo(0, column);
        EXPECT_EQ(offered(sheet(), Command::Cut), may) << column;
        EXPECT_FALSE(offered(sheet(), Command::Delete)) << "a part of a row";
        records->setCurrentCell(0, column);
        EXPECT_EQ(offered(*records, Command::Cut), column == S::Key || column == S::Flag ? false : may) << column;
        EXPECT_TRUE(offered(*records, Command::Delete)) << "whole rows";
    }
    edits_.setLock([] { return ShownText::asItIs("Read-only."); });
    records->setCurrentCell(0, S::Name);
    EXPECT_FALSE(offered(*records, Command::Cut) || offered(*records, Command::Delete));
}

TEST_F(SpreadsheetCommandsTest, OnlyWholeRowsAreDeleted) {
    const auto refusal = [&] { // the key is pressed all the same
        EXPECT_FALSE(sheet().commands().action(Command::Delete).isEnabled());
        press(Qt::Key_Delete);
        return prompter_.told(MessageId::CannotDelete);
    };
    sheet().view().clearSelection();
    EXPECT_EQ(refusal(), "Unable to delete. No rows or cells have been selected.");
    goTo(0, S::Key);
    EXPECT_EQ(refusal(), "Unable to delete. Only entire rows can be deleted.");
    goTo(0, S::Recorded);
    EXPECT_EQ(refusal(), "Unable to delete. This cell is read-only and cannot be edited or deleted.");
    trigger(Command::SelectAll);
    EXPECT_EQ(refusal(), "Unable to delete. This spreadsheet already contains\nthe minimum number of allowable rows.");
    goTo(0, S::Key);
    press(Qt::Key_Space, Qt::ShiftModifier);
    std::string current;
    const auto note = [&] { current = key(*sheet().currentRow()); };
    const auto noting = QObject::connect(&sheet(), &TSpreadsheet::currentRowChanged, note);
    press(Qt::Key_Delete);
    QObject::disconnect(noting);
    EXPECT_EQ(table_.rowCount(), 5u);
    EXPECT_EQ(key(0), "k2");
    EXPECT_EQ(current, "k2") << "whoever is told of the next row finds it under the number that it has now";
    sheet().setMayDelete([](const std::vector<RowIndex>&) { return false; });
    goTo(1, S::Key);
    press(Qt::Key_Space, Qt::ShiftModifier);
    press(Qt::Key_Delete);
    EXPECT_EQ(table_.rowCount(), 5u) << "somebody objects";
}

TEST_F(SpreadsheetCommandsTest, RowsAreAddedAndInsertedUpToTheLimit) {
    goTo(2, S::Key);
    press(Qt::Key_Insert);
    EXPECT_EQ(sheet().currentRow(), 2u);
    EXPECT_EQ(key(2) + "/" + key(3), "/K1");
    trigger(Command::Add);
    EXPECT_EQ(table_.rowCount(), 8u);
    EXPECT_EQ(sheet().currentRow(), 7u);
    const std::string full =
        "This now contains the maximum number of allowable rows.\nNo more can be added or inserted.";
    EXPECT_EQ(prompter_.told(MessageId::RowLimit), full);
    trigger(Command::InsertAfter);
    EXPECT_EQ(prompter_.told(MessageId::CannotInsert), full);
    EXPECT_EQ(table_.rowCount(), 8u);
}

/// What the status bar would show.
class StatusTips final : public QObject {
public:
    explicit StatusTips(QObject& of) { of.installEventFilter(this); }
    std::string last;

private:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::StatusTip)
            last = static_cast<QStatusTipEvent*>(event)->tip().toStdString();
        return false;
    }
};

TEST_F(SpreadsheetCommandsTest, FindGoesThroughWhatIsShown) {
    sheet().view().sortByColumn(S::Key, Qt::AscendingOrder); // K1 k2 K3 K5 K7 K10
    goTo(2, S::Key);                                         // K1
    press(Qt::Key_F, Qt::ControlModifier);
    auto* text = sheet().findChild<QLineEdit*>("findText");
    ASSERT_TRUE(text->hasFocus());
    EXPECT_TRUE(sheet().view().marksCurrent()) << "or nobody would see which cell it is";
    StatusTips status(sheet());
    status.last = "of what the pointer is over";
    QTest::keyClicks(text, "k1");
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(sheet().currentRow(), 0u) << "K10, shown last";
    EXPECT_EQ(status.last, "") << "what is said of K10, which is nothing";
    QTest::keyClick(text, Qt::Key_F3);
    EXPECT_EQ(sheet().currentRow(), 2u) << "K1, from the top again";
    QTest::keyClick(text, Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(sheet().currentRow(), 0u);
    const auto* count = sheet().findChild<QLabel*>("findCount");
    EXPECT_TRUE(QTest::qWaitFor([&] { return count->text() == "2 cells"; })) << count->text().toStdString();
    sheet().findChild<QCheckBox*>("findMatchCase")->setChecked(true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return count->text() == "Not found"; })) << count->text().toStdString();
    QTest::keyClick(text, Qt::Key_Escape);
    EXPECT_TRUE(sheet().view().hasFocus());
    EXPECT_FALSE(sheet().view().marksCurrent());
    EXPECT_EQ(key(0), "K10") << "stored where it was";
}

TEST_F(SpreadsheetCommandsTest, SelectionsAreCopiedAsPictures) {
    select(0, S::Key, 2, S::Speed);
    trigger(Command::CopyBitmap);
    const QImage image = QApplication::clipboard()->image();
    EXPECT_GT(image.width(), 100);
    EXPECT_EQ(image.pixelColor(2, 2).lightness() > 200, true) << "on paper, whatever the theme";
    trigger(Command::CopyMetafile);
    const QByteArray svg = QApplication::clipboard()->mimeData()->data("image/svg+xml");
    EXPECT_TRUE(svg.contains("<svg") && svg.contains("22 MPH") && svg.contains("Speed"));
}

TEST_F(SpreadsheetCommandsTest, RowsAndColumnsAreSelectedAsAWhole) {
    goTo(1, S::Key);
    press(Qt::Key_Space, Qt::ShiftModifier);
    EXPECT_TRUE(sheet().view().selectionModel()->isRowSelected(1));
    QHeaderView& header = *sheet().view().horizontalHeader();
    const QPoint heading(header.sectionViewportPosition(S::Speed) + 10, 5);
    QTest::mouseClick(header.viewport(), Qt::LeftButton, Qt::ControlModifier, heading);
    EXPECT_TRUE(sheet().view().selectionModel()->isColumnSelected(S::Speed));
    EXPECT_FALSE(sheet().model().sorted());
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, heading);
    EXPECT_TRUE(sheet().model().sorted());
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(sheet().view().selectionModel()->isRowSelected(5));
}

} // namespace
} // namespace quobrix::test
