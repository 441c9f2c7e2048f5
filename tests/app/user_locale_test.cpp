#include "app/user_locale.h"

#include "units/date_time.h"

#include <QLocale>

#include <gtest/gtest.h>

namespace quobrix {
namespace {

TEST(UserLocale, BecomesTheNumberFormatOfThePlace) {
    const auto text = [](const char* name) {
        return TUnitSystem(textLocale(QLocale(QLatin1String(name)))).formatNumber(-12345678.5, 2);
    };
    EXPECT_EQ(text("en_US"), "-12,345,678.50");
    EXPECT_EQ(text("de_DE"), "-12.345.678,50");
    EXPECT_EQ(text("de_CH"), "-12’345’678.50");
    EXPECT_EQ(text("en_IN"), "-1,23,45,678.50");
    EXPECT_EQ(text("ar_EG"), "-12٬345٬678٫50");
    EXPECT_EQ(text("ccp"), "-1,23,45,678.50") << "a script whose digits take two code units";
    EXPECT_EQ(text("C"), "-12,345,678.50");
}

TEST(UserLocale, HasItsWordsForTheHalvesOfTheDay) {
    TUnitSystem units(textLocale(QLocale(QStringLiteral("el_GR"))));
    EXPECT_EQ(timeText(units, {2009, 3, 4, 9, 5}), "09:05 π.μ.");
    EXPECT_EQ(parseTime(units, "9:05 Μ.Μ."), (DateTime{1970, 1, 1, 21, 5}));
}

} // namespace
} // namespace quobrix
