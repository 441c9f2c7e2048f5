#include "tables/find_text.h"

#include "base/fold_case.h"
#include "tables/sample_table.h"

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
    std::vector<RowIndex> order_;
};

TEST_F(Finding, GoesRowByRowFromTheCellBehind) {
    EXPECT_EQ(find("anna"), (CellPlace{0, 0}));
    EXPECT_EQ(find("anna", {}, CellPlace{0, 0}), (CellPlace{0, 3}));
    EXPECT_EQ(find("anna", {}, CellPlace{0, 3}), (CellPlace{0, 0})) << "goes on at the start";
    EXPECT_EQ(find("anna", {.wrap = false}, CellPlace{0, 3}), std::nullopt);
    EXPECT_EQ(find("bob", {}, CellPlace{0, 1}), (CellPlace{0, 1})) << "the cell itself is looked at last";
    EXPECT_EQ(find("20", {}, CellPlace{1, 1}), (CellPlace{1, 3}));
    EXPECT_EQ(find("anna", {.backwards = true}), (CellPlace{0, 3}));
    EXPECT_EQ(find("anna", {.backwards = true}, CellPlace{0, 3}), (CellPlace{0, 0}));
    EXPECT_EQ(find("anna", {.backwards = true, .wrap = false}, CellPlace{0, 0}), std::nullopt);
    EXPECT_EQ(find("bob", {}, CellPlace{1, 99}), (CellPlace{0, 1})) << "from a row that is no longer there";
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

TEST_F(Finding, ReadsCellsAsTheyAreShownAndInThatOrder) {
    units_.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
    EXPECT_EQ(find("72 kph"), (CellPlace{1, 1}));
    order_ = {3, 1, 0};
    EXPECT_EQ(find("anna"), (CellPlace{0, 0}));
    EXPECT_EQ(find("berta"), std::nullopt) << "a row that is not shown";
}

} // namespace
} // namespace quobrix::test
