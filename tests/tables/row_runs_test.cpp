#include "tables/sample_table.h"

#include <random>
#include <set>

namespace quobrix::test {
namespace {

TEST(RowRuns, TakeRowsOutAndPutThemBack) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const std::size_t count = 1 + random() % 40;
        std::vector<std::string> all;
        std::vector<RowIndex> going;
        std::vector<std::string> staying;
        for (RowIndex row = 0; row < count; ++row) {
            all.push_back("a text too long to lie within a string " + std::to_string(row));
            if (random() % 3 == 0)
                going.push_back(row);
            else
                staying.push_back(all.back());
        }
        const RowRuns runs = runsOf(going);
        ASSERT_EQ(countRows(runs), going.size());
        SampleKey column;
        column.setAll(all);
        column.removeRows(runs);
        ASSERT_EQ(column.values(), staying);
        column.insertRows(runs);
        ASSERT_EQ(column.storedRows(), count);

        const RowShift shift(runs);
        const std::set<RowIndex> gone(going.begin(), going.end());
        for (RowIndex row = 0, kept = 0; row < count; ++row) {
            ASSERT_EQ(shift.goes(row), gone.contains(row));
            ASSERT_EQ(column.at(row), gone.contains(row) ? "" : all[row]);
            if (!gone.contains(row)) {
                ASSERT_EQ(shift.without(row), kept);
                ASSERT_EQ(shift.with(kept), row);
                ++kept;
            }
        }
    }
}

} // namespace
} // namespace quobrix::test
