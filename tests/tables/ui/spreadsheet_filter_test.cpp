#include "fixture.h"

#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>

namespace quobrix::test {
namespace {

using S = SampleTable;
using Command = SpreadsheetCommand;

/// Six rows, K10 k2 K1 K7 K5 K3, of which k2, K7 and K5 are shown: rows 1, 3 and 4.
class FilteredSpreadsheet : public SpreadsheetTest {
protected:
    FilteredSpreadsheet() { filter("257"); }

    /// Shows the rows whose key ends in one of DIGITS, in the words of now.
    void filter(std::string digits) {
        EXPECT_TRUE(sheet().setFilter([this, digits = std::move(digits)](RowIndex row) {
            return !key(row).empty() && digits.find(key(row).back()) != std::string::npos;
        }));
    }
    void setClipboard(const char* text) { QApplication::clipboard()->setText(QString::fromUtf8(text)); }
};

TEST_F(FilteredSpreadsheet, ShowsMatchesUnderTheirNumbers) {
    EXPECT_EQ(shownKeys(), "k2 K7 K5 ");
    EXPECT_EQ(sheet().model().headerData(1, Qt::Vertical, Qt::DisplayRole), "4");
    EXPECT_EQ(sheet().model().placeOf(0), std::nullopt) << "no place at all, not the first";
    sheet().view().sortByColumn(S::Key, Qt::DescendingOrder);
    EXPECT_EQ(shownKeys(), "K7 K5 k2 ");
    filter("1257");
    EXPECT_EQ(shownKeys(), "K7 K5 k2 K1 ") << "in order at once";
    EXPECT_EQ(sheet().neighbour(2, -1), 1u);
    EXPECT_EQ(sheet().neighbour(0, 1), std::nullopt) << "a hidden row has none";
    sheet().view().sortByColumn(-1, Qt::AscendingOrder);
    EXPECT_EQ(shownKeys(), "k2 K1 K7 K5 ");
    EXPECT_TRUE(sheet().setFilter({}));
    EXPECT_EQ(shownKeys(), "K10 k2 K1 K7 K5 K3 ");
}

TEST_F(FilteredSpreadsheet, CurrentCellAndSelectionStayWithTheirRows) {
    const QPersistentModelIndex kept = sheet().model().index(2, S::Name); // K5
    select(0, S::Key, 1, S::Name);                                        // k2 and K7
    goTo(3, S::Speed);
    select(1, S::Speed, 1, S::Speed);
    std::vector<std::optional<RowIndex>> current;
    QObject::connect(&sheet(), &TSpreadsheet::currentRowChanged, [&] { current.push_back(sheet().currentRow()); });
    filter("13570");
    EXPECT_EQ(shownKeys(), "K10 K1 K7 K5 K3 ");
    EXPECT_EQ(sheet().currentRow(), 3u);
    EXPECT_TRUE(current.empty()) << "it was current all the while";
    EXPECT_EQ(sheet().view().selectionModel()->selectedIndexes(), QModelIndexList{sheet().model().index(2, S::Speed)});
    EXPECT_EQ(kept, sheet().model().index(3, S::Name));

    filter("03");
    EXPECT_EQ(sheet().currentRow(), 5u) << "the next one that is shown";
    EXPECT_TRUE(sheet().view().selectionModel()->isSelected(sheet().view().currentIndex()));
    EXPECT_FALSE(kept.isValid());
    filter("0");
    EXPECT_EQ(sheet().currentRow(), 0u) << "the nearest one above, where there is none below";
    filter("nothing");
    EXPECT_EQ(shownKeys(), "");
    EXPECT_EQ(sheet().currentRow(), std::nullopt);
    EXPECT_FALSE(sheet().commands().action(Command::Copy).isEnabled());
    filter("12357");
    EXPECT_TRUE(sheet().currentRow().has_value());
    EXPECT_EQ(current, (std::vector<std::optional<RowIndex>>{5, 0, std::nullopt, 1}));
}

TEST_F(FilteredSpreadsheet, AnEditedRowStays) {
    goTo(3, S::Key);
    typeText("other");
    press(Qt::Key_Return);
    EXPECT_EQ(shownKeys(), "k2 other K5 ");
    EXPECT_EQ(sheet().currentRow(), 4u);
    edits_.type(kNoObject, S::Key, 0, "K12", TablesTest::context_); // elsewhere, of a row that is hidden
    EXPECT_EQ(shownKeys(), "k2 other K5 ");
    sheet().view().sortByColumn(S::Key, Qt::AscendingOrder);
    EXPECT_EQ(shownKeys(), "k2 K5 other ") << "sorting hides nothing";
    trigger(Command::Undo);
    EXPECT_EQ(key(0), "K10");
    EXPECT_EQ(sheet().currentRow(), 4u) << "what was taken back is not shown, so it is not gone to";
    filter("257");
    EXPECT_EQ(shownKeys(), "k2 K5 ");
}

TEST_F(FilteredSpreadsheet, NewRowsAreSeenWhateverTheyHold) {
    goTo(3, S::Key);
    trigger(Command::Insert);
    EXPECT_EQ(sheet().currentRow(), 3u);
    EXPECT_EQ(shownKeys(), "k2  K7 K5 ");
    goTo(1, S::Key);
    trigger(Command::InsertAfter);
    EXPECT_EQ(sheet().currentRow(), 2u) << "behind it, before the hidden ones";
    EXPECT_EQ(shownKeys(), "k2   K7 K5 ");
    EXPECT_EQ(prompter_.told(MessageId::RowLimit).substr(0, 8), "This now");
    trigger(Command::Undo);
    trigger(Command::Undo);
    EXPECT_EQ(shownKeys(), "k2 K7 K5 ");
    trigger(Command::Add);
    EXPECT_EQ(sheet().currentRow(), 6u);
    typeText("new");
    press(Qt::Key_Return);
    EXPECT_EQ(shownKeys(), "k2 K7 K5 new ");
    filter("257");
    EXPECT_EQ(shownKeys(), "k2 K7 K5 ");
}

TEST_F(FilteredSpreadsheet, OnlyWhatIsShownIsChanged) {
    const Bytes before = table_.bytes();
    trigger(Command::SelectAll);
    trigger(Command::Copy);
    EXPECT_EQ(QApplication::clipboard()->text().count('\n'), 3);

    setClipboard("A\nB\nC\nD\n");
    select(0, S::Key, 0, S::Key);
    trigger(Command::Paste);
    EXPECT_EQ(key(0) + key(1) + key(2) + key(3) + key(4) + key(5) + key(6), "K10AK1BCK3D");
    EXPECT_EQ(shownKeys(), "A B C D ") << "what there is no row for comes as a new one";
    trigger(Command::Undo);
    EXPECT_EQ(table_.bytes(), before);

    setClipboard("5");
    select(0, S::Count, 2, S::Count);
    trigger(Command::Paste);
    for (RowIndex row = 0; row < 6; ++row)
        EXPECT_EQ(table_.column<SampleCount>().at(row), row == 1 || row == 3 || row == 4 ? 5 : 1) << row;
    trigger(Command::Undo);

    trigger(Command::SelectAll);
    trigger(Command::Delete);
    EXPECT_EQ(shownKeys(), "");
    ASSERT_EQ(table_.rowCount(), 3u);
    EXPECT_EQ(key(0) + key(1) + key(2), "K10K1K3");
    trigger(Command::Undo);
    EXPECT_EQ(shownKeys(), "k2 K7 K5 ");
    EXPECT_EQ(table_.bytes(), before);

    edits_.removeRows(kNoObject, {0, 3}); // in another window: a hidden one, too
    EXPECT_EQ(shownKeys(), "k2 K5 ");
    EXPECT_EQ(sheet().model().placeOf(1), std::nullopt);
    EXPECT_EQ(sheet().model().placeOf(2), 1);
}

TEST_F(FilteredSpreadsheet, FindsAndMeasuresWhatIsShown) {
    table_.column<SampleName>().set(0, "a name that is longer than any other one");
    table_.column<SampleName>().set(4, "name");
    goTo(1, S::Key);
    press(Qt::Key_F, Qt::ControlModifier);
    auto* text = sheet().findChild<QLineEdit*>("findText");
    QTest::keyClicks(text, "name");
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(sheet().currentRow(), 4u);
    const auto* count = sheet().findChild<QLabel*>("findCount");
    EXPECT_TRUE(QTest::qWaitFor([&] { return count->text() == "1 cell"; })) << count->text().toStdString();
    trigger(Command::FitWidth);
    const int narrow = sheet().view().columnWidth(S::Name);
    sheet().setFilter({});
    EXPECT_TRUE(QTest::qWaitFor([&] { return count->text() == "2 cells"; })) << count->text().toStdString();
    trigger(Command::FitWidth);
    EXPECT_GT(sheet().view().columnWidth(S::Name), 2 * narrow);
}

TEST_F(FilteredSpreadsheet, GoingToAHiddenRowLiftsTheFilter) {
    int lifted = 0;
    QObject::connect(&sheet(), &TSpreadsheet::filterLifted, [&] { ++lifted; });
    sheet().showCell("SampleKey", 3);
    EXPECT_EQ(lifted, 0);
    sheet().showCell("SampleKey", 0);
    EXPECT_EQ(lifted, 1);
    EXPECT_EQ(sheet().currentRow(), 0u);
    EXPECT_EQ(sheet().view().note(), "The filter has been taken off, since it hid this row.");
    EXPECT_FALSE(sheet().model().filtered());
    EXPECT_EQ(shownKeys(), "K10 k2 K1 K7 K5 K3 ");
}

TEST_F(FilteredSpreadsheet, WaitsForARefusedEntry) {
    goTo(3, S::Count);
    typeText("many");
    EXPECT_FALSE(sheet().setFilter({}));
    EXPECT_EQ(shownKeys(), "k2 K7 K5 ");
    EXPECT_EQ(sheet().view().note(), "Hey, that's not an integer!");
    press(Qt::Key_Escape);

    table_.insertRows(6, 2); // as a download does
    table_.column<SampleKey>().set(6, "K77");
    table_.column<SampleKey>().set(7, "K78");
    sheet().showTable(table_);
    EXPECT_EQ(shownKeys(), "k2 K7 K5 K77 ");
}

} // namespace
} // namespace quobrix::test
