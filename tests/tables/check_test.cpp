#include "tables/check.h"
#include "tables/sample_table.h"

namespace quobrix::test {
namespace {

class Checking : public TablesTest {
protected:
    std::string textOf(std::size_t column, const Value& value) {
        const std::vector<Finding> findings = checkValue(table_.column(column), value, context_);
        return findings.empty() ? ShownText() : findings.front().text;
    }
    Severity severityOf(std::size_t column, const Value& value) {
        return checkValue(table_.column(column), value, context_).at(0).severity;
    }
    SampleTable table_;
};

TEST_F(Checking, MissingValuesMatterWhereTheyAreNeeded) {
    EXPECT_EQ(textOf(SampleTable::Key, ""), "This value is required but has not yet been defined.");
    EXPECT_EQ(severityOf(SampleTable::Key, Value()), Severity::Required);
    EXPECT_EQ(severityOf(SampleTable::Count, Value()), Severity::Recommended);
    EXPECT_EQ(textOf(SampleTable::Speed, Value()), "");
    EXPECT_EQ(textOf(SampleTable::Name, ""), "") << "an optional text that is empty is not too short";
}

TEST_F(Checking, RangesAreToldInTheCurrentUnit) {
    units_.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
    EXPECT_EQ(textOf(SampleTable::Speed, 255 / 3.6), "This value, 255 kph, lies outside of the recommended range.\n"
                                                     "The recommended range is 0 kph <= x <= 100 kph.");
    EXPECT_EQ(textOf(SampleTable::Speed, 256 / 3.6), "This value, 256 kph, lies outside of the required range.\n"
                                                     "The required range is 0 kph <= x <= 255 kph.");
    EXPECT_EQ(severityOf(SampleTable::Speed, 101 / 3.6), Severity::Recommended);
    EXPECT_EQ(textOf(SampleTable::Speed, 100 / 3.6), "");
    EXPECT_EQ(textOf(SampleTable::Count, std::int64_t{0}),
              "This value, 0, lies outside of the required range.\nThe required range is 1 <= x.");
}

TEST_F(Checking, CharactersAreCountedNotBytes) {
    EXPECT_EQ(textOf(SampleTable::Name, "x"), "This string does not contain the required number of characters.\n"
                                              "The required number of characters is 2 <= n <= 5.");
    EXPECT_EQ(textOf(SampleTable::Name, "xy"), "This string does not contain the recommended number of characters.\n"
                                               "The recommended number of characters is 3 <= n <= 5.");
    EXPECT_EQ(textOf(SampleTable::Name, "Zoë\u20acå"), "");
}

TEST_F(Checking, OnlyListedSelectionsAreValid) {
    EXPECT_EQ(textOf(SampleTable::Colour, std::int64_t{3}), "");
    EXPECT_EQ(textOf(SampleTable::Colour, std::int64_t{4}), "This is not a valid selection.");
}

TEST_F(Checking, RepeatedKeysAndNames) {
    table_.insertRows(0, 4);
    table_.column<SampleKey>().setAll({"Ärger", "äRGER", "b", ""});
    table_.column<SampleName>().setAll({"Joe", "Ann", "JOE", ""});
    table_.column<SampleCount>().setAll({1, 1, 1, 1});
    TableChecker checker(table_);
    std::vector<std::string> texts;
    for (const Finding& finding : checker.all(context_))
        texts.push_back(std::to_string(finding.row) + " " + std::string(finding.column->key) + ": " + finding.text);
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "0 SampleKey: This value must be unique (case insensitive).",
                         "0 SampleName: It is recommended that this value be unique (case insensitive).",
                         "1 SampleKey: This value must be unique (case insensitive).",
                         "2 SampleName: It is recommended that this value be unique (case insensitive).",
                         "3 SampleKey: This value is required but has not yet been defined.",
                     }));
    table_.column<SampleKey>().set(1, "c");
    EXPECT_TRUE(checker.cell(SampleTable::Key, 0, context_).empty()) << "what is remembered follows the column";
}

TEST_F(Checking, RowCountsAreHeldAgainstTheTable) {
    const auto text = [&](RowIndex rows) {
        SampleTable table(rows, {.editable = true, .required = {0, 3}, .recommended = {1, 2}});
        const std::vector<Finding> findings = TableChecker(table).all(context_);
        return findings.empty() || findings.front().column ? ShownText() : findings.front().text;
    };
    EXPECT_EQ(text(0), "This column contains fewer than the recommended number of rows.");
    EXPECT_EQ(text(2), "");
    EXPECT_EQ(text(3), "This column contains more than the recommended number of rows.");
    EXPECT_EQ(text(4), "This column contains more than the allowable number of rows.");
}

} // namespace
} // namespace quobrix::test
