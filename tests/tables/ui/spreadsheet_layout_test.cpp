#include "fixture.h"

#include "tables/ui/column_chooser.h"

#include <QAction>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeWidget>

#include <algorithm>
#include <vector>

namespace quobrix::test {
namespace {

using S = SampleTable;

class SpreadsheetLayoutTest : public SpreadsheetTest {};

TEST_F(SpreadsheetLayoutTest, IsRememberedWithHiddenColumnsAndSorting) {
    {
        const auto first = makeSheet();
        QHeaderView& header = *first->view().horizontalHeader();
        header.moveSection(S::Speed, 0);
        first->view().setColumnWidth(S::Speed, 123);
        first->view().setColumnWidth(S::Name, 77);
        header.hideSection(S::Name);
        first->view().sortByColumn(S::Speed, Qt::DescendingOrder);
    }
    EXPECT_EQ(settings_.getText("Sample", "Columns").substr(0, 32),
              "SampleSpeed:123 SampleKey:" + settings_.getText("Sample", "Columns").substr(26, 6));
    EXPECT_NE(settings_.getText("Sample", "Columns").find("SampleName:-77"), std::string::npos);
    EXPECT_EQ(settings_.getText("Sample", "Sort"), "-SampleSpeed");
    const auto second = makeSheet();
    const QHeaderView& header = *second->view().horizontalHeader();
    EXPECT_EQ(header.visualIndex(S::Speed), 0);
    EXPECT_EQ(second->view().columnWidth(S::Speed), 123);
    EXPECT_TRUE(header.isSectionHidden(S::Name));
    EXPECT_EQ(second->model().storedRow(0), 5u);
    second->view().showColumn(S::Name);
    EXPECT_EQ(second->view().columnWidth(S::Name), 77);
}

TEST_F(SpreadsheetLayoutTest, AListThatWasEmptyGetsItWithItsFirstRows) {
    settings_.setText("Sample", "Columns", "SampleSpeed:123");
    settings_.setText("Sample", "Sort", "-SampleKey");
    table_.removeRows(0, 6);
    auto list = makeSheet();
    SpreadsheetView& view = list->view();
    const int heading = view.columnWidth(S::Key);
    QApplication::clipboard()->setText("A rather long key\tAnn\nB\tBob\n");
    list->commands().action(SpreadsheetCommand::Paste).trigger();
    EXPECT_GT(view.columnWidth(S::Key), heading);
    EXPECT_EQ(view.columnWidth(S::Speed), 123);
    EXPECT_EQ(view.horizontalHeader()->visualIndex(S::Speed), 0);
    EXPECT_EQ(list->model().text(0, S::Key), "B") << "sorted";
    EXPECT_EQ(view.currentIndex(), list->model().index(0, S::Speed)) << "for F2 and for typing";
    view.setColumnWidth(S::Speed, 99);
    list.reset();
    EXPECT_EQ(settings_.getText("Sample", "Columns").substr(0, 15), "SampleSpeed:99 ");
}

TEST_F(SpreadsheetLayoutTest, ColumnsAreChosenByTheKeyboard) {
    ColumnChooser chooser(sheet().view(), sheet().model(), &sheet());
    auto* list = chooser.findChild<QListWidget*>("columnList");
    auto* all = chooser.findChild<QTreeWidget*>("columnTree");
    ASSERT_EQ(list->count(), 10);
    ASSERT_EQ(all->topLevelItemCount(), 10) << "without groups";
    all->setCurrentItem(all->topLevelItem(S::Name));
    QTest::keyClick(all, Qt::Key_Space);
    EXPECT_EQ(list->count(), 9);
    list->setCurrentRow(list->row(list->findItems("Speed", Qt::MatchExactly).value(0)));
    ASSERT_EQ(list->currentRow(), 1);
    chooser.findChild<QPushButton*>("columnUp")->click();
    EXPECT_FALSE(chooser.findChild<QPushButton*>("columnUp")->isEnabled());
    chooser.accept();
    const QHeaderView& header = *sheet().view().horizontalHeader();
    EXPECT_EQ(header.visualIndex(S::Speed), 0);
    EXPECT_TRUE(header.isSectionHidden(S::Name));

    ColumnChooser again(sheet().view(), sheet().model(), &sheet());
    all = again.findChild<QTreeWidget*>("columnTree");
    for (int row = 0; row < all->topLevelItemCount(); ++row)
        all->topLevelItem(row)->setCheckState(0, Qt::Unchecked);
    EXPECT_FALSE(again.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled())
        << "some column must be left";
    again.findChild<QPushButton*>("columnOriginal")->click();
    again.accept();
    EXPECT_EQ(header.visualIndex(S::Speed), int(S::Speed));
    EXPECT_EQ(header.hiddenSectionCount(), 0);
}

TEST_F(SpreadsheetLayoutTest, UnitsInTheHeading) {
    SpreadsheetModel model(TablesTest::context_);
    model.setColumns({{&table_.column<SampleSpeed>(), {}, true}});
    EXPECT_EQ(model.text(0, 0), "22");
    EXPECT_EQ(model.headerData(0, Qt::Horizontal), "Speed\n(MPH)");
    EXPECT_EQ(model.headerData(0, Qt::Horizontal, Qt::AccessibleTextRole), "Speed (MPH)");
}

TEST_F(SpreadsheetLayoutTest, TheFirstColumnOfRecordsStaysInSight) {
    const auto records = makeSheet(SpreadsheetView::Use::Records);
    SpreadsheetView& view = records->view();
    records->resize(400, 150);
    records->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(records.get()));
    EXPECT_FALSE(view.findChild<QTableView*>("frozenColumn")) << "as long as nothing is scrolled";
    view.horizontalScrollBar()->setValue(view.horizontalScrollBar()->maximum());
    auto* frozen = view.findChild<QTableView*>("frozenColumn");
    ASSERT_TRUE(frozen && frozen->isVisible());
    EXPECT_EQ(frozen->geometry(),
              QRect(view.viewport()->x(), view.viewport()->y() - view.horizontalHeader()->height(), view.columnWidth(0),
                    view.viewport()->height() + view.horizontalHeader()->height()));
    view.verticalScrollBar()->setValue(2);
    EXPECT_EQ(frozen->verticalScrollBar()->value(), 2);
    EXPECT_EQ(frozen->rowAt(1), view.rowAt(1));

    const int scrolled = view.horizontalScrollBar()->value();
    QTest::mouseClick(frozen->viewport(), Qt::LeftButton, {}, {5, 5});
    EXPECT_EQ(view.currentIndex(), records->model().index(view.rowAt(5), 0));
    EXPECT_TRUE(view.hasFocus());
    EXPECT_EQ(view.horizontalScrollBar()->value(), scrolled) << "a click does not scroll away what one looks at";
    records->setCurrentCell(2, S::Name);
    EXPECT_EQ(view.visualRect(view.currentIndex()).left(), frozen->width()) << "nothing is covered";
    view.horizontalScrollBar()->setValue(view.horizontalScrollBar()->maximum());
    QTest::mouseClick(frozen->horizontalHeader()->viewport(), Qt::LeftButton, {}, {5, 5});
    EXPECT_EQ(records->model().text(0, S::Key), "K1") << "sorted by it";
    EXPECT_EQ(view.horizontalHeader()->sortIndicatorSection(), 0);
    QTest::keyClick(&view, Qt::Key_Home);
    EXPECT_FALSE(frozen->isVisible());
    view.horizontalHeader()->moveSection(S::Key, 3);
    view.horizontalScrollBar()->setValue(view.horizontalScrollBar()->maximum());
    EXPECT_FALSE(frozen->isVisible()) << "a person has put it elsewhere";
}

// Assistive technology has Qt keep an index for every cell that it has read. Where their hashes are neighbours, moving
// them takes a step for each pair of them: more than a minute for a list of 20,000 rows.
TEST_F(SpreadsheetLayoutTest, CellsLieApartInTheirHash) {
    constexpr std::size_t kColumns = 16; // as in the list of trips: fewer leave gaps
    SampleTable large(20'000);
    SpreadsheetModel model(TablesTest::context_);
    std::vector<ShownColumn> columns;
    for (std::size_t column = 0; column < kColumns; ++column)
        columns.push_back({&large.column(column % large.columnCount())});
    model.setColumns(columns);
    std::vector<bool> used(1u << 20); // as large as a hash of 320,000 is
    for (int row = 0; row < model.rowCount(); ++row)
        for (int column = 0; column < model.columnCount(); ++column)
            used[qHash(model.index(row, column)) % used.size()] = true;
    int run = 0, longest = 0;
    for (const bool place : used) {
        run = place ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    EXPECT_LT(longest, 100);
}

} // namespace
} // namespace quobrix::test
