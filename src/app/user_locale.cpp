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
    grouping.sizes[0] = static_cast<std::uint8_t>(groups[groups.size() - 1].size());
    const auto next = static_cast<std::uint8_t>(groups[groups.size() - 2].size());
    grouping.sizes[1] = next == grouping.sizes[0] ? std::uint8_t(0) : next;
    return grouping;
}

} // namespace

TextLocale userLocale() {
    const QLocale locale = QLocale::system();
    TextLocale result;
    result.numbers.decimalSeparator = locale.decimalPoint().toStdString();
    result.numbers.thousandsSeparator = locale.groupSeparator().toStdString();
    result.numbers.grouping = groupingOf(locale);
    result.am = locale.amText().toStdString();
    result.pm = locale.pmText().toStdString();
    return result;
}

} // namespace quobrix
