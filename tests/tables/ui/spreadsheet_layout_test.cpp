#include "fixture.h"

#include "tables/ui/column_chooser.h"

#include <QAction>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>

#include <algorithm>

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
    ASSERT_EQ(list->count(), 10);
    list->setCurrentRow(1);
    QTest::keyClick(list, Qt::Key_Space);
    list->setCurrentRow(2);
    chooser.findChild<QPushButton*>("columnUp")->click();
    chooser.findChild<QPushButton*>("columnUp")->click();
    EXPECT_FALSE(chooser.findChild<QPushButton*>("columnUp")->isEnabled());
    chooser.accept();
    const QHeaderView& header = *sheet().view().horizontalHeader();
    EXPECT_EQ(header.visualIndex(S::Speed), 0);
    EXPECT_TRUE(header.isSectionHidden(S::Name));

    ColumnChooser again(sheet().view(), sheet().model(), &sheet());
    list = again.findChild<QListWidget*>("columnList");
    for (int row = 0; row < list->count(); ++row)
        list->item(row)->setCheckState(Qt::Unchecked);
    EXPECT_FALSE(again.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled())
        << "some column must be left";
    again.findChild<QPushButton*>("columnOriginal")->click();
    again.accept();
    EXPECT_EQ(header.visualIndex(S::Speed), int(S::Speed));
    EXPECT_EQ(header.hiddenSectionCount(), 0);
}

TEST_F(SpreadsheetLayoutTest, AColumnIsFittedToItsTextsFromTheCellMenu) {
    goTo(0, S::Key);
    sheet().view().setColumnWidth(S::Key, 300);
    const std::unique_ptr<QMenu> menu(sheet().commands().makeMenu(sheet()));
    const QList<QAction*> actions = menu->actions();
    const auto fit = std::ranges::find(actions, QStringLiteral("Fit &Width"), &QAction::text);
    ASSERT_NE(fit, actions.end());
    (*fit)->trigger();
    EXPECT_LT(sheet().view().columnWidth(S::Key), 300);
}

TEST_F(SpreadsheetLayoutTest, UnitsStandInTheHeadingWhereTheyAreWantedThere) {
    SpreadsheetModel model(TablesTest::context_);
    model.setColumns({{&table_.column<SampleSpeed>(), {}, true}});
    EXPECT_EQ(model.text(0, 0), "22");
    EXPECT_EQ(model.headerData(0, Qt::Horizontal), "Speed\n(MPH)");
    EXPECT_EQ(model.headerData(0, Qt::Horizontal, Qt::AccessibleTextRole), "Speed (MPH)");
}

TEST_F(SpreadsheetLayoutTest, OtherUnitsLeaveSelectionAndScrollingAsTheyAre) {
    goTo(3, S::Speed);
    sheet().view().setColumnWidth(S::Key, 91);
    units_.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
    sheet().showTable(table_);
    EXPECT_EQ(sheet().view().currentIndex().data(), "47 kph");
    EXPECT_EQ(sheet().view().currentIndex().row(), 3);
    EXPECT_EQ(sheet().view().columnWidth(S::Key), 91);
}

} // namespace
} // namespace quobrix::test
