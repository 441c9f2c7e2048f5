#include "tables/find_text.h"

#include "base/fold_case.h"
#include "tables/sample_table.h"

#include <numeric>

namespace quobrix::test {
namespace {

class Finding : public TablesTest {
protected:
    Finding() {
        table_.column<SampleKey>().setAll({"Anna", "Bob", "Berta", "annabel"});
        table_.column<SampleSpeed>().setAll({10, 20, kNoValue, 120});
    }
    std::optional<CellPlace> find(std::string_view needle, FindOptions options = {},
                                  std::optional<CellPlace> from = {}) {
        const Column* columns[] = {&table_.column(SampleTable::Key), &table_.column(SampleTable::Speed)};
        return findText(columns, order_, context_, needle, options, from);
    }
    SampleTable table_{4};
    std::vector<RowIndex> order_{0, 1, 2, 3};
};

TEST_F(Finding, GoesRowByRowFromTheCellBehind) {
    EXPECT_EQ(find("anna"), (CellPlace{0, 0}));
    EXPECT_EQ(find("20", {}, CellPlace{1, 1}), (CellPlace{1, 3}));
    EXPECT_EQ(find("anna", {.backwards = true}), (CellPlace{0, 3}));
    EXPECT_EQ(find("bob", {}, CellPlace{1, 99}), (CellPlace{0, 1})) << "from a row that is no longer there";
}

/// However it goes about it, what it finds is the first cell in the direction of the search.
TEST_F(Finding, FindsTheNextCellFromAnyOther) {
    constexpr std::size_t kRows = 37, kColumns = 3;
    SampleTable table(kRows);
    const std::vector<const Column*> columns = {&table.column(SampleTable::Name), &table.column(SampleTable::Key),
                                                &table.column(SampleTable::Number)};
    for (RowIndex row = 0; row < kRows; ++row) {
        table.column<SampleName>().set(row, row % 11 == 3 ? "2" : "");
        table.column<SampleKey>().set(row, row > 20 && row < 25 ? "122" : "1");
    }
    order_.clear();
    for (RowIndex row = 0; row < kRows; ++row)
        order_.push_back((row * 10 + 5) % kRows);
    const auto reads = [&](std::size_t cell) {
        return columns[cell % kColumns]->text(order_[cell / kColumns], context_).find('2') != std::string::npos;
    };
    constexpr std::size_t kCells = kRows * kColumns;
    for (const bool backwards : {false, true})
        for (const bool wrap : {false, true})
            for (std::size_t from = 0; from < kCells; ++from) {
                std::optional<CellPlace> expected;
                for (std::size_t step = 1; step <= kCells && !expected; ++step) {
                    const std::size_t cell = (from + (backwards ? kCells - step : step)) % kCells;
                    if (!wrap && (backwards ? cell >= from : cell <= from))
                        break;
                    if (reads(cell))
                        expected = CellPlace{cell % kColumns, cell / kColumns};
                }
                const FindOptions options{.backwards = backwards, .wrap = wrap};
                const CellPlace place{from % kColumns, from / kColumns};
                EXPECT_EQ(findText(columns, order_, context_, "2", options, place), expected)
                    << from << (backwards ? " back" : "") << (wrap ? " around" : "");
            }
}

TEST_F(Finding, HeedsCaseAndWholeCells) {
    EXPECT_EQ(find("anna", {.matchCase = true}), (CellPlace{0, 3}));
    EXPECT_EQ(find("anna", {.wholeCell = true}, CellPlace{0, 0}), (CellPlace{0, 0}));
    EXPECT_EQ(find("Berta "), std::nullopt);
    EXPECT_EQ(find(""), std::nullopt);
}

TEST_F(Finding, FindsWhatTheFoldedTextHolds) {
    const std::vector<std::string> texts = {"Änne's RÜCKFAHRT",          "änne",  "ÉTÉ à Paris 7", "remark re-Remark",
                                            "Unknown #12, 10 \xC3 \xFF", "k@[`{", "nana nanan",    ""};
    table_.insertRows(4, texts.size() - 4);
    table_.column<SampleKey>().setAll(texts);
    order_.resize(texts.size());
    std::iota(order_.begin(), order_.end(), RowIndex{0});
    for (const char* needle : {"ä", "Änne", "rückfahrt", "été", "7", "REMARK", "re-r", "nanan", "#12", "\xFF", "\xC3 ",
                               "K@[`{", "[", "`", "{", "annex", "nanan nana"})
        for (const bool whole : {false, true}) {
            std::vector<std::size_t> expected, found;
            for (std::size_t row = 0; row < texts.size(); ++row)
                if (const std::string text = foldCase(texts[row]), part = foldCase(needle);
                    whole ? text == part : text.find(part) != std::string::npos)
                    expected.push_back(row);
            std::optional<CellPlace> hit;
            while ((hit = find(needle, {.wholeCell = whole, .wrap = false}, hit)))
                found.push_back(hit->row);
            EXPECT_EQ(found, expected) << needle;
        }
}

} // namespace
} // namespace quobrix::test
