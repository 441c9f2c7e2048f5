#pragma once

#include "tables/requirements.h"

#include <functional>
#include <string>

namespace quobrix {

struct TextContext;

/// How a figure in base units reads.
using FigureText = std::function<std::string(double base)>;

/// A range in words: "0 <= x <= 255", "0 < x < 255", "0 <= x < 255", "0 <= x" or "0 < x" by its form; "5" where the
/// bounds are equal; an end at infinity is "+Infinity" or "-Infinity".
std::string rangeText(const Range& range, const FigureText& figureText);
/// The same for a count, as the letter n: "1 <= n <= 20".
std::string countRangeText(const CountRange& range, const TextContext& context);

} // namespace quobrix
