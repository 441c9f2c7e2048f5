#pragma once

#include "drawing/palette.h"

#include <string>

namespace quobrix {

/// DRAWING as a file of SVG 1.1, UTF-8, in the colours of PALETTE.
std::string writeSvg(const Drawing& drawing, const Palette& palette);

/// The same as a part of an HTML page. Its colours and font are the page's: cssColours() declares them.
std::string writeInlineSvg(const Drawing& drawing);

/// A CSS variable for each role, as the declarations of a rule.
std::string cssColours(const Palette& palette);
/// The use of one: "var(--accent)".
std::string cssColour(ColourRole role);

/// The fonts that texts are written in, by name; all but the last are as wide as TableTextMeasure takes them for.
inline constexpr const char* kFontFamily = "Helvetica, Arial, 'Liberation Sans', 'Nimbus Sans', sans-serif";

} // namespace quobrix
