#include "tables/range_text.h"

#include "tables/column.h"
#include "units/unit_system.h"

#include <string_view>

namespace quobrix {
namespace {

std::string write(const Range& range, std::string_view letter, const FigureText& figureText) {
    const auto bound = [&](double value) {
        return value == kInfinity ? std::string("+Infinity") : value == -kInfinity ? "-Infinity" : figureText(value);
    };
    if (range.lower == range.upper)
        return bound(range.lower);
    using Form = Range::Form;
    const bool above = range.form == Form::Open || range.form == Form::Above;
    std::string text = bound(range.lower);
    text.append(above ? " < " : " <= ").append(letter);
    if (range.form == Form::AtLeast || range.form == Form::Above)
        return text;
    return text.append(range.form == Form::Closed ? " <= " : " < ").append(bound(range.upper));
}

} // namespace

std::string rangeText(const Range& range, const FigureText& figureText) { return write(range, "x", figureText); }

std::string countRangeText(const CountRange& range, const TextContext& context) {
    const double most = range.most == CountRange::kUnlimited ? kInfinity : range.most;
    return write({static_cast<double>(range.least), most}, "n",
                 [&](double n) { return context.units.formatNumber(n, 0); });
}

} // namespace quobrix
