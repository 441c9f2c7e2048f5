#include "tables/ui/shown_rows.h"

#include "tables/sample_table.h"

namespace quobrix::test {
namespace {

class ShownRowsTest : public TablesTest {
protected:
    using Rows = std::vector<RowIndex>;

    Rows sorted(const Column& column, bool downward) {
        shown_.reset(column.rowCount());
        shown_.sort(column, context_, downward);
        return rows();
    }
    Rows rows() const { return {shown_.rows().begin(), shown_.rows().end()}; }

    ShownRows shown_;
};

TEST_F(ShownRowsTest, FiguresAreOrderedByBaseValueWithBlanksLastAndEqualRowsAsStored) {
    SampleTable table(6);
    table.column<SampleSpeed>().setAll({30, kNoValue, 4, 30, 100, kNoValue});
    EXPECT_EQ(sorted(table.column<SampleSpeed>(), false), (std::vector<RowIndex>{2, 0, 3, 4, 1, 5}));
    EXPECT_EQ(sorted(table.column<SampleSpeed>(), true), (std::vector<RowIndex>{4, 0, 3, 2, 1, 5}));
}

TEST_F(ShownRowsTest, TextsAreOrderedAsPeopleReadThem) {
    SampleTable table(7);
    table.column<SampleKey>().setAll({"Unknown #10", "Élodie", "", "unknown #9", "Zoe", "Anna", "anna"});
    EXPECT_EQ(sorted(table.column<SampleKey>(), false), (std::vector<RowIndex>{5, 6, 1, 3, 0, 4, 2}));
    table.column<SampleColour>().setAll({2, 1, 3, 2, Element<std::int32_t>::kNone, 1, 1});
    EXPECT_EQ(sorted(table.column<SampleColour>(), false), (std::vector<RowIndex>{0, 3, 2, 1, 5, 6, 4}))
        << "Green, Grey, Red";
}

TEST_F(ShownRowsTest, RowsThatComeAndGoLeaveTheOthersInTheirOrder) {
    SampleTable table(4);
    table.column<SampleSpeed>().setAll({3, 1, 4, 2});
    sorted(table.column<SampleSpeed>(), false); // 1 3 0 2
    shown_.rowsInserted(RowRuns{{1, 2}});
    EXPECT_EQ(rows(), (Rows{3, 5, 0, 4}));
    shown_.show(RowRuns{{1, 2}});
    EXPECT_EQ(rows(), (Rows{3, 5, 0, 4, 1, 2}));
    EXPECT_EQ(shown_.placeOf(4), 3u);
    shown_.rowsRemoved(RowRuns{{0, 2}});
    EXPECT_EQ(rows(), (Rows{1, 3, ShownRows::kGone, 2, ShownRows::kGone, 0}));
    shown_.dropGone();
    EXPECT_EQ(rows(), (Rows{1, 3, 2, 0}));
    shown_.unsort();
    shown_.rowsInserted(RowRuns{{2, 3}});
    shown_.show(RowRuns{{2, 3}});
    EXPECT_EQ(rows(), (Rows{0, 1, 2, 3, 4, 5, 6})) << "where they are stored";
}

TEST_F(ShownRowsTest, ARowThatIsNotShownHasNoPlace) {
    SampleTable table(6);
    table.column<SampleSpeed>().setAll({30, kNoValue, 4, 20, 100, kNoValue});
    shown_.reset(6, [](RowIndex row) { return row >= 1 && row <= 4; });
    EXPECT_EQ(rows(), (Rows{1, 2, 3, 4}));
    EXPECT_EQ(shown_.placeOf(0), std::nullopt);
    EXPECT_EQ(shown_.placeOf(1), 0u);
    EXPECT_EQ(shown_.placeOf(5), std::nullopt);
    EXPECT_EQ(shown_.placeOf(6), std::nullopt) << "there is none";
    shown_.sort(table.column<SampleSpeed>(), context_, true);
    EXPECT_EQ(rows(), (Rows{4, 3, 2, 1}));
    EXPECT_EQ(shown_.stored(), 6u);
    shown_.unsort();
    EXPECT_EQ(rows(), (Rows{1, 2, 3, 4}));
    shown_.reset(6, [](RowIndex) { return false; });
    EXPECT_EQ(shown_.placeOf(0), std::nullopt);
    shown_.rowsInserted(RowRuns{{3, 1}});
    shown_.show(RowRuns{{3, 1}});
    EXPECT_EQ(rows(), Rows{3});
}

} // namespace
} // namespace quobrix::test
