#include "views/log_list.h"

#include "support/view_fixture.h"

#include <QApplication>
#include <QDialog>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <set>

namespace quobrix {
namespace {

class LogListTest : public test::ViewTest {
protected:
    template <class C>
    ShownColumn shown() {
        return {&document_.trips().column<C>()};
    }
};

TEST_F(LogListTest, AnswersFromItsColumns) {
    test::addTrip(document_, 1'000'000'000);
    SpreadsheetModel model(context_.text());
    model.setColumns({shown<TTripLogRecordColumn>(), shown<TTripLogDistanceColumn>(), shown<TTripLogVinColumn>(),
                      shown<TTripLogPanicBrakesSummaryColumn>()});
    ASSERT_EQ(model.rowCount(), 1);
    ASSERT_EQ(model.columnCount(), 4);
    const auto data = [&](int column, int role) { return model.data(model.index(0, column), role); };
    EXPECT_EQ(data(1, Qt::DisplayRole).toString(), "12,000.00 m");
    EXPECT_EQ(data(2, Qt::DisplayRole).toString(), "Unknown #1");
    EXPECT_TRUE(data(1, Qt::TextAlignmentRole).value<Qt::Alignment>().testFlag(Qt::AlignRight));
    EXPECT_TRUE(data(2, Qt::TextAlignmentRole).value<Qt::Alignment>().testFlag(Qt::AlignLeft));
    EXPECT_EQ(data(1, Qt::ToolTipRole).toString(), "The distance traveled during this trip.");
    const QString vin = QLatin1String(test::kVin); // what is behind a name, or behind "Unknown"
    EXPECT_EQ(data(2, Qt::ToolTipRole).toString(),
              vin + "\nThe name or identification number of the vehicle associated with this trip.");
    EXPECT_EQ(data(2, Qt::AccessibleDescriptionRole).toString(), "Vehicle " + vin);

    const auto header = [&](int column, int role) { return model.headerData(column, Qt::Horizontal, role).toString(); };
    EXPECT_EQ(header(0, Qt::DisplayRole), "Trip");
    EXPECT_EQ(header(2, Qt::DisplayRole), "Vehicle") << "the mnemonic mark is not shown";
    EXPECT_EQ(header(3, Qt::DisplayRole), "Brakes\nExtreme");
    EXPECT_EQ(header(3, Qt::AccessibleTextRole), "Brakes Extreme");
    EXPECT_EQ(header(3, Qt::UserRole), "TTripLogPanicBrakesSummaryColumn");
}

TEST_F(LogListTest, KeepsItsCurrentRecord) {
    test::addTrip(document_, 2'000);
    test::addTrip(document_, 3'000);
    LogList list(context_, logSpec(LogId::Trips));
    list.show(&document_.trips());
    EXPECT_EQ(list.currentRow(), 1u) << "the latest trip";
    document_.trips().column<TTripLogRecordColumn>().set(0, {2'000, 0});
    document_.trips().column<TTripLogRecordColumn>().set(1, {3'000, 0});
    list.setCurrentRow(0);

    document_.trips().insertRows(0, 1); // an older trip of another logger
    list.show(&document_.trips());
    EXPECT_EQ(list.currentRow(), 1u);

    list.setCurrentCell(1, 3);
    list.show(&document_.trips()); // as after a save
    EXPECT_EQ(list.view().currentIndex().column(), 3) << "nobody has moved";

    document_.newDocument();
    list.show(&document_.trips());
    EXPECT_EQ(list.currentRow(), std::nullopt);
}

TEST_F(LogListTest, AnEmptyListSaysHowRecordsCome) {
    LogList list(context_, logSpec(LogId::Trips));
    const auto text = [&] {
        list.show(&document_.trips());
        return list.view().emptyText();
    };
    EXPECT_TRUE(text().contains("Download Quobrix Data"));
    test::addTrip(document_, 1'000);
    EXPECT_TRUE(list.setFilter([](RowIndex) { return false; }));
    EXPECT_TRUE(text().contains("Show All"));
    EXPECT_TRUE(document_.edits().removeRows(document_.trips().id(), {0}).ok());
    EXPECT_TRUE(text().contains("Undo")) << "what was deleted";
}

TEST_F(LogListTest, TheCurrentRecordStaysInSight) {
    for (int n = 0; n < 60; ++n)
        test::addTrip(document_, 1'000 + n);
    LogList list(context_, logSpec(LogId::Trips));
    list.show(&document_.trips());
    list.resize(400, 300); // narrower than its columns
    list.QWidget::show();
    QApplication::processEvents();
    const auto inSight = [&] {
        const QRect row = list.view().visualRect(list.view().currentIndex());
        return row.isValid() && list.view().viewport()->rect().contains(row.center()) &&
               row.bottom() <= list.view().viewport()->rect().bottom();
    };
    EXPECT_EQ(list.currentRow(), 59u);
    EXPECT_TRUE(inSight()) << "whole, above the scroll bar";
    list.resize(400, 220);
    QApplication::processEvents();
    EXPECT_TRUE(inSight());
    list.view().verticalScrollBar()->setValue(0);
    list.resize(400, 260);
    QApplication::processEvents();
    EXPECT_FALSE(inSight()) << "a person has scrolled away from it";
    list.view().sortByColumn(0, Qt::DescendingOrder);
    list.view().sortByColumn(0, Qt::AscendingOrder);
    EXPECT_TRUE(inSight()) << "wherever it goes";
    ASSERT_TRUE(list.setFilter([](RowIndex row) { return row > 57; }));
    list.view().horizontalScrollBar()->setValue(10);
    ASSERT_TRUE(list.setFilter({}));
    QApplication::processEvents();
    EXPECT_TRUE(inSight()) << "where the scroll bar had no place before";
    EXPECT_EQ(list.view().horizontalScrollBar()->value(), 10);
}

TEST_F(LogListTest, EveryFigureCanBeChosenOnceInItsGroup) {
    document_.store().singleton<TAccidentLogTable>();
    test::addTrip(document_, 0);
    for (const LogId id : {LogId::Troubles, LogId::Activity, LogId::Accidents})
        document_.log(logSpec(id))->insertRows(0, 1);
    for (const LogSpec& spec : logs()) {
        SCOPED_TRACE(spec.className());
        const Table& log = *document_.log(spec);
        LogList list(context_, spec);
        list.show(&log);
        const auto& columns = list.model().columns();
        std::set<std::uint32_t> figures;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const Column& column = *columns[i].column;
            EXPECT_TRUE(figures.insert((column.repeatsSibling() ? *column.repeats() : column.type()).id()).second)
                << column.type().name;
            EXPECT_EQ(list.view().isColumnHidden(static_cast<int>(i)), i >= spec.summary.size());
            EXPECT_NE(columns[i].group, "Other") << column.type().name;
        }
        for (std::size_t i = 0; i < log.columnCount(); ++i) {
            const Column& column = log.column(i);
            EXPECT_TRUE(column.kind() == ColumnKind::Table || column.repeatsSibling() ||
                        figures.contains(column.type().id()))
                << column.type().name;
        }
    }
}

TEST_F(LogListTest, AColumnIsAddedFromItsGroup) {
    test::addTrip(document_, 0);
    for (const bool again : {false, true}) { // what was chosen is remembered
        LogList list(context_, logSpec(LogId::Trips));
        list.show(&document_.trips());
        const int threshold = list.model().indexOf("TTripLogHardBrakeThresholdColumn");
        EXPECT_EQ(list.view().isColumnHidden(threshold), !again);
        QTimer::singleShot(0, &list, [&] {
            auto* chooser = QApplication::activeModalWidget();
            ASSERT_TRUE(chooser);
            auto* all = chooser->findChild<QTreeWidget*>("columnTree");
            const QTreeWidgetItem* trip = all->topLevelItem(0);
            EXPECT_EQ(trip->text(0), "Trip");
            EXPECT_EQ(trip->child(0)->text(0), "Trip");
            EXPECT_EQ(trip->childCount(), 7);
            auto* item =
                all->findItems("Hard Brake Threshold", Qt::MatchExactly | Qt::MatchRecursive).value(0, nullptr);
            ASSERT_TRUE(item);
            EXPECT_EQ(item->parent()->text(0), "Brakes");
            EXPECT_EQ(item->checkState(0), again ? Qt::Checked : Qt::Unchecked);
            if (again) {
                chooser->findChild<QPushButton*>("columnOriginal")->click();
                EXPECT_EQ(item->checkState(0), Qt::Unchecked);
            } else {
                all->setCurrentItem(item);
                QTest::keyClick(all, Qt::Key_Space);
                chooser->findChild<QPushButton*>("columnUp")->click();
            }
            static_cast<QDialog*>(chooser)->accept();
        });
        list.commands().action(SpreadsheetCommand::Columns).trigger();
        EXPECT_EQ(list.view().isColumnHidden(threshold), again);
        const QHeaderView& header = *list.view().horizontalHeader();
        const int count = static_cast<int>(logSpec(LogId::Trips).summary.size());
        EXPECT_EQ(header.visualIndex(threshold), again ? count : count - 1);
        EXPECT_TRUE(again || header.sectionSize(threshold) >= header.sectionSizeHint(threshold));
    }
}

TEST_F(LogListTest, HeadingsAndCommentsHaveRoom) {
    LogList list(context_, logSpec(LogId::Trips));
    const QHeaderView& header = *list.view().horizontalHeader();
    for (const RowIndex rows : {0, 1}) {
        list.show(&document_.trips());
        ASSERT_EQ(document_.trips().rowCount(), rows);
        for (int column = 0; column < header.count(); ++column)
            EXPECT_TRUE(header.isSectionHidden(column) || header.sectionSize(column) >= header.sectionSizeHint(column))
                << column;
        test::addTrip(document_, 1'000'000'000);
    }
    const int comments = list.model().indexOf("TTripLogCommentsColumn");
    EXPECT_GT(header.sectionSize(comments), header.sectionSizeHint(comments) + 40);
    const int width = header.sectionSize(comments);
    list.resize(5000, 300);
    list.QWidget::show();
    QApplication::processEvents();
    EXPECT_EQ(header.sectionSize(comments), width) << "as wide as its content, however wide the window is";
}

TEST_F(LogListTest, LongNamesGetRoom) {
    test::addTrip(document_, 0);
    LogList list(context_, logSpec(LogId::Trips));
    list.show(&document_.trips());
    const int vehicle = list.model().indexOf("TTripLogVinColumn");
    const int distance = list.model().indexOf("TTripLogDistanceColumn");
    const auto width = [&](int column) { return list.view().columnWidth(column); };
    const auto name = [&](const char* text) {
        return document_.edits().type(document_.vehicles().id(), 1, 0, text, context_.text()).ok();
    };
    list.view().setColumnWidth(distance, 200);
    const int before = width(vehicle);
    ASSERT_TRUE(name("The red van of the northern depot"));
    EXPECT_GT(width(vehicle), before + 50);
    EXPECT_EQ(width(distance), 200);
    list.view().setColumnWidth(vehicle, 70);
    ASSERT_TRUE(name("The blue van of the southern depot"));
    EXPECT_EQ(width(vehicle), 70);
}

} // namespace
} // namespace quobrix
