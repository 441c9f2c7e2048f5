#include "tables/range_text.h"
#include "tables/requirements_text.h"
#include "tables/sample_table.h"

namespace quobrix::test {
namespace {

using Form = Range::Form;

TEST(RangeText, IsWrittenByItsForm) {
    const auto text = [](Range range) {
        return rangeText(range, [](double figure) { return std::to_string(static_cast<int>(figure)); });
    };
    EXPECT_EQ(text({0, 255, Form::Closed}), "0 <= x <= 255");
    EXPECT_EQ(text({0, 255, Form::Open}), "0 < x < 255");
    EXPECT_EQ(text({0, 255, Form::ClosedBelow}), "0 <= x < 255");
    EXPECT_EQ(text({0, kInfinity, Form::AtLeast}), "0 <= x");
    EXPECT_EQ(text({0, kInfinity, Form::Above}), "0 < x");
    EXPECT_EQ(text({0, kInfinity, Form::Open}), "0 < x < +Infinity");
    EXPECT_EQ(text({-kInfinity, 5, Form::Closed}), "-Infinity <= x <= 5");
    EXPECT_EQ(text({7, 7, Form::Closed}), "7");
    EXPECT_EQ(text({7, 7, Form::Open}), "7");
}

TEST(Range, HasItsBoundsByItsForm) {
    EXPECT_TRUE(Range({0, 1, Form::Closed}).contains(0) && Range({0, 1, Form::Closed}).contains(1));
    EXPECT_FALSE(Range({0, 1, Form::Open}).contains(0) || Range({0, 1, Form::Open}).contains(1));
    EXPECT_TRUE(Range({0, 1, Form::ClosedBelow}).contains(0) && !Range({0, 1, Form::ClosedBelow}).contains(1));
    EXPECT_TRUE(Range({0, kInfinity, Form::AtLeast}).contains(0) && !Range({0, kInfinity, Form::Above}).contains(0));
    EXPECT_TRUE(Range({3, 3, Form::Open}).contains(3) && !Range({3, 3}).contains(4));
    EXPECT_FALSE(Range({0, 1}).contains(std::numeric_limits<double>::quiet_NaN()));
}

class RequirementsText : public TablesTest {
protected:
    std::string of(std::size_t column) { return requirementsText(table_.column(column), context_); }
    SampleTable table_;
};

TEST_F(RequirementsText, SaysWhatEachKindOfColumnTakes) {
    EXPECT_EQ(of(SampleTable::Key), "A text string, such as The Quick Brown Fox.\n\nRequired? Yes\n\n"
                                    "Must Be Unique? Yes (case insensitive)");
    EXPECT_EQ(of(SampleTable::Name),
              "A text string, such as The Quick Brown Fox.\n\nRequired? No. This is optional.\n\n"
              "Required Characters : 2 <= n <= 5\n\nRecommended Characters : 3 <= n <= 5\n\n"
              "Should Be Unique? Yes (case insensitive)");
    EXPECT_EQ(of(SampleTable::Count), "An integer number, such as -1, 0 or 10.\n\nRequired? No\n\nRecommended? Yes\n\n"
                                      "Required Range : 1 <= x");
    EXPECT_EQ(of(SampleTable::Flag),
              "A boolean value, such as Yes, No, True or False.\n\nRequired? No. This is optional.");
    EXPECT_NE(of(SampleTable::Colour).find("\n\nRange : Restricted to the list of available selections."),
              std::string::npos);
    EXPECT_NE(of(SampleTable::Recorded).find("\n\nThis is not editable; see Help for more information."),
              std::string::npos);
}

} // namespace
} // namespace quobrix::test
