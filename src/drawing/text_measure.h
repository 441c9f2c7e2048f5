#pragma once

#include "drawing/drawing.h"

#include <functional>
#include <limits>
#include <string_view>

namespace quobrix {

/// How large texts come out, in units of the drawing that is being made. Layout asks nothing else about fonts, so that
/// it can be computed, and tested, without one.
class TextMeasure {
public:
    virtual ~TextMeasure() = default;

    /// The size of the body's font.
    virtual double fontSize() const = 0;
    /// The length of one line of UTF-8 text.
    virtual double width(std::string_view text, FontRole font) const = 0;
    /// What a line takes above its baseline, and from one line to the next.
    virtual double ascent(FontRole font) const { return 0.95 * fontSize() * fontStyle(font).scale; }
    virtual double lineHeight(FontRole font) const { return 1.25 * fontSize() * fontStyle(font).scale; }
};

/// Measures by the widths of Helvetica, which Arial, Liberation Sans and Nimbus Sans share: for SVG and HTML, whose
/// fonts are known only where they are read.
class TableTextMeasure final : public TextMeasure {
public:
    explicit TableTextMeasure(double fontSize) : fontSize_(fontSize) {}

    double fontSize() const override { return fontSize_; }
    double width(std::string_view text, FontRole font) const override;

private:
    double fontSize_;
};

/// Makes a drawing for a medium: as wide as ROOM, unless it cannot be so narrow or has a size of its own, and no higher
/// where that can be helped.
using DrawingMaker = std::function<Drawing(Size room, const TextMeasure& measure)>;
/// The height of the room on what scrolls.
inline constexpr double kUnlimited = std::numeric_limits<double>::infinity();

/// TEXT as it is if it is no wider than WIDTH, else its beginning and "…"; empty if not even that fits.
std::string elided(std::string_view text, FontRole font, double width, const TextMeasure& measure);

/// The lines of TEXT, broken between words where they would be wider than WIDTH, and within a word that is wider than a
/// line. At least one line, of one character at least.
std::vector<std::string> wrapped(std::string_view text, FontRole font, double width, const TextMeasure& measure);

} // namespace quobrix
