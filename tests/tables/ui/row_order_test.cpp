#include "tables/ui/row_order.h"

#include "tables/sample_table.h"

namespace quobrix::test {
namespace {

class RowOrderTest : public TablesTest {
protected:
    std::vector<RowIndex> sorted(const Column& column, bool downward) {
        order_.reset(column.rowCount());
        order_.sort(column, column.rowCount(), context_, downward);
        return {order_.rows().begin(), order_.rows().end()};
    }

    RowOrder order_;
};

TEST_F(RowOrderTest, FiguresAreOrderedByBaseValueWithBlanksLastAndEqualRowsAsStored) {
    SampleTable table(6);
    table.column<SampleSpeed>().setAll({30, kNoValue, 4, 30, 100, kNoValue});
    EXPECT_EQ(sorted(table.column<SampleSpeed>(), false), (std::vector<RowIndex>{2, 0, 3, 4, 1, 5}));
    EXPECT_EQ(sorted(table.column<SampleSpeed>(), true), (std::vector<RowIndex>{4, 0, 3, 2, 1, 5}));
}

TEST_F(RowOrderTest, TextsAreOrderedAsPeopleReadThem) {
    SampleTable table(7);
    table.column<SampleKey>().setAll({"Unknown #10", "Élodie", "", "unknown #9", "Zoe", "Anna", "anna"});
    EXPECT_EQ(sorted(table.column<SampleKey>(), false), (std::vector<RowIndex>{5, 6, 1, 3, 0, 4, 2}));
    table.column<SampleColour>().setAll({2, 1, 3, 2, Element<std::int32_t>::kNone, 1, 1});
    EXPECT_EQ(sorted(table.column<SampleColour>(), false), (std::vector<RowIndex>{0, 3, 2, 1, 5, 6, 4}))
        << "Green, Grey, Red";
}

TEST_F(RowOrderTest, RowsThatComeAndGoLeaveTheOthersInTheirOrder) {
    SampleTable table(4);
    table.column<SampleSpeed>().setAll({3, 1, 4, 2});
    sorted(table.column<SampleSpeed>(), false); // 1 3 0 2
    order_.insert(RowRuns{{1, 2}});
    EXPECT_EQ((std::vector<RowIndex>{order_.rows().begin(), order_.rows().end()}),
              (std::vector<RowIndex>{3, 5, 0, 4, 1, 2}));
    EXPECT_EQ(order_.placeOf(4), 3u);
    order_.remove(RowRuns{{0, 2}});
    EXPECT_EQ((std::vector<RowIndex>{order_.rows().begin(), order_.rows().end()}), (std::vector<RowIndex>{1, 3, 2, 0}));
    order_.reset(4);
    order_.insert(RowRuns{{2, 3}});
    EXPECT_EQ(order_.size(), 7u);
    EXPECT_EQ(order_.rowAt(2), 2u) << "where it is stored";
}

} // namespace
} // namespace quobrix::test
