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

TEST_F(ShownRowsTest, FiguresAreOrderedByBaseValue) {
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

} // namespace
} // namespace quobrix::test
