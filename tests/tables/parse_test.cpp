#include "tables/sample_table.h"

#include <cmath>
#include <random>

namespace quobrix::test {
namespace {

TextLocale german() {
    TextLocale locale;
    locale.numbers.decimalSeparator = ",";
    locale.numbers.thousandsSeparator = ".";
    return locale;
}

class Parsing : public TablesTest {
protected:
    Parsed parse(std::size_t column, std::string_view text) { return table_.column(column).parse(text, context_); }
    SampleTable table_{1};
};

TEST_F(Parsing, BooleansAreWordsInAnyCase) {
    for (const char* yes : {"Yes", "YES", "true", "1", " yes "})
        EXPECT_EQ(parse(SampleTable::Flag, yes).value, Value(true)) << yes;
    for (const char* no : {"No", "no", "FALSE", "0"})
        EXPECT_EQ(parse(SampleTable::Flag, no).value, Value(false)) << no;
    for (const char* neither : {"", "y", "2", "maybe"})
        EXPECT_EQ(parse(SampleTable::Flag, neither).refusal, "Hey, that's not a boolean!") << neither;
}

TEST_F(Parsing, IntegersHaveNoDecimalsAndFitTheirColumn) {
    EXPECT_EQ(parse(SampleTable::Count, "1,234").value, Value(std::int64_t{1234}));
    EXPECT_EQ(parse(SampleTable::Count, " -7 ").value, Value(std::int64_t{-7}));
    EXPECT_EQ(parse(SampleTable::Count, "").value, Value());
    EXPECT_EQ(parse(SampleTable::Count, "2147483647").value, Value(std::int64_t{2147483647}));
    for (const char* none : {"1.0", "1e3", "x", "12,34", "99999999999999999999", "--1"})
        EXPECT_EQ(parse(SampleTable::Count, none).refusal, "Hey, that's not an integer!") << none;
    for (const char* large : {"2147483648", "-2147483648", "99999999999"})
        EXPECT_EQ(parse(SampleTable::Count, large).refusal, "This number is too large to be kept here.") << large;
}

TEST_F(Parsing, FiguresMayNameAnyUnitOfTheirType) {
    units_.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
    for (const char* text : {"90", "90 kph", "90kph", "90 KPH", "90.0", "9e1", "25 m/s"})
        EXPECT_EQ(parse(SampleTable::Speed, text).value, Value(25.0)) << text;
    EXPECT_NEAR(std::get<double>(parse(SampleTable::Speed, "60 MPH").value), 26.8224, 1e-9);
    for (const char* none : {"fast", "90 kPa", "1 2", "nan", "inf", "1e999", "kph"})
        EXPECT_EQ(parse(SampleTable::Speed, none).refusal, "Hey, that's not a number!") << none;
}

TEST_F(Parsing, TheShownBoundOfARangeIsTheBound) {
    units_.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
    units_.setDecimals(UnitTypeId::Speed, 1);
    const double bound = 255 / 3.6; // 158.4497… MPH
    EXPECT_EQ(parse(SampleTable::Speed, "158.45").value, Value(bound));
    EXPECT_NE(parse(SampleTable::Speed, "158.4").value, Value(bound)) << "what lies inside stays as it was typed";
    EXPECT_NE(parse(SampleTable::Speed, "159").value, Value(bound));
}

TEST_F(Parsing, DatesFollowTheChosenOrder) {
    units_.setUnit(UnitTypeId::Date, UnitId::DayMonthYear);
    EXPECT_EQ(parse(SampleTable::Time, "4/3/09 15:04").value,
              Value(secondsFromFields({.year = 2009, .month = 3, .day = 4, .hour = 15, .minute = 4})));
    units_.setUnit(UnitTypeId::Date, UnitId::MonthDayYear);
    EXPECT_EQ(parse(SampleTable::Time, "3/4/2009").value,
              Value(secondsFromFields({.year = 2009, .month = 3, .day = 4})));
    for (const char* none : {"13/1/2009", "yesterday", "3/4", "3/4/2038"})
        EXPECT_EQ(parse(SampleTable::Time, none).refusal, "Hey, that's not a date!") << none;
}

TEST_F(Parsing, SelectionsAreNamedOrBegun) {
    EXPECT_EQ(parse(SampleTable::Colour, "red").value, Value(std::int64_t{1}));
    EXPECT_EQ(parse(SampleTable::Colour, "Gree").value, Value(std::int64_t{2}));
    EXPECT_EQ(parse(SampleTable::Colour, "").value, Value());
    for (const char* none : {"Gr", "Blue", "Reddish"})
        EXPECT_EQ(parse(SampleTable::Colour, none).refusal, "This is not a valid selection.") << none;
}

TEST_F(Parsing, ElapsedTimesHaveThreeFields) {
    EXPECT_EQ(parse(SampleTable::Elapsed, "100:00:01").value, Value(std::int64_t{360001}));
    for (const char* none : {"1:2", "1:60:00", "-1:00:00", "1:2:3:4", "999999999:00:00", "a:b:c"})
        EXPECT_FALSE(parse(SampleTable::Elapsed, none).ok()) << none;
}

TEST_F(Parsing, EditorsGiveBackTheVeryFigure) {
    std::mt19937_64 random(4);
    std::uniform_real_distribution<double> exponents(-6, 9);
    RealColumn& column = table_.column<SampleRecorded>(); // has no range that would take a hand in it
    int unequal = 0, figures = 0;
    for (const TextLocale& locale : {TextLocale(), german()})
        for (const UnitId unit : unitTypeRecord(UnitTypeId::Speed).units) {
            units_.setLocale(locale);
            units_.setUnit(UnitTypeId::Speed, unit);
            for (int i = 0; i < 500; ++i, ++figures) {
                const double value = std::pow(10, exponents(random)) * (i % 2 ? 1 : -1);
                column.set(0, value);
                const Parsed parsed = column.parse(column.editText(0, context_), context_);
                ASSERT_TRUE(parsed.ok()) << column.editText(0, context_);
                unequal += parsed.value != Value(value);
                EXPECT_NEAR(std::get<double>(parsed.value), value, std::abs(value) * 1e-15);
            }
        }
    EXPECT_LT(unequal, figures / 10) << "only by a last digit that no shown figure stands for";
}

TEST_F(Parsing, EditorsKeepTheSecondsOfATime) {
    DateTimeColumn& column = table_.column<SampleTime>();
    for (const UnitId clock : {UnitId::AmPm, UnitId::Hour24})
        for (const std::int32_t time : {0, 59, 43200, 1236179045, 2145916799}) {
            units_.setUnit(UnitTypeId::Time, clock);
            column.set(0, time);
            EXPECT_EQ(column.parse(column.editText(0, context_), context_).value, Value(std::int64_t{time}))
                << column.editText(0, context_);
        }
}

} // namespace
} // namespace quobrix::test
