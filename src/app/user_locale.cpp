#include "app/user_locale.h"

#include <QLocale>

namespace quobrix {
namespace {

/// The sizes of the digit groups, from a long number as the locale writes it: "1,23,45,67,890" has 3, 2, 2 ….
DigitGrouping groupingOf(const QLocale& locale) {
    DigitGrouping grouping;
    const QStringList groups = locale.toString(qlonglong(1234567890123)).split(locale.groupSeparator());
    if (groups.size() < 3)
        return grouping;
    const auto size = [&](qsizetype fromRight) { // some digits are of two code units
        return static_cast<std::uint8_t>(groups[groups.size() - fromRight].size() / locale.zeroDigit().size());
    };
    grouping.sizes[0] = size(1);
    const std::uint8_t next = size(2);
    grouping.sizes[1] = next == grouping.sizes[0] ? std::uint8_t(0) : next;
    return grouping;
}

} // namespace

TextLocale textLocale(const QLocale& locale) {
    TextLocale result;
    result.numbers.decimalSeparator = locale.decimalPoint().toStdString();
    result.numbers.thousandsSeparator = locale.groupSeparator().toStdString();
    result.numbers.grouping = groupingOf(locale);
    result.am = locale.amText().toStdString();
    result.pm = locale.pmText().toStdString();
    return result;
}

TextLocale userLocale() { return textLocale(QLocale::system()); }

} // namespace quobrix
