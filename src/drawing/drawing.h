#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace quobrix {

/// Places and lengths of a drawing count from its top left corner, to the right and down, in units of its own: points
/// (1/72 inch) on paper, device-independent pixels on a screen.
struct Point {
    double x = 0, y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0, height = 0;
    bool operator==(const Size&) const = default;
};

struct Box {
    double left = 0, top = 0, width = 0, height = 0;
    bool operator==(const Box&) const = default;
};

/// What a colour is for; a Palette says which it is in light, in dark and on paper.
enum class ColourRole {
    Text,
    SecondaryText, ///< what names a value stands back behind it
    Ground,        ///< what all else stands on
    HeadingGround, ///< behind the headings of a table
    Rule,          ///< lines that part cells and sections
    Track,         ///< the whole that a bar is a part of
    Accent,        ///< bars
    StepLow,       ///< steps of a scale from harmless to grave
    StepMiddle,
    StepHigh,
    StepTop,
    Curve,     ///< the one line of a plot
    CurveArea, ///< between that line and zero
    Line1,     ///< lines over one another that are told apart
    Line2,
    Line3,
    Line4,
    Line5,
    Line6,
};
inline constexpr std::size_t kColourRoles = 19;
inline constexpr ColourRole kLineColours[] = {ColourRole::Line1, ColourRole::Line2, ColourRole::Line3,
                                              ColourRole::Line4, ColourRole::Line5, ColourRole::Line6};

/// What a text is for. The fonts of a drawing are sizes and weights of one family, but for Fine, which fits between
/// lines: Arial where there is one, 6 points where the body has 9.
enum class FontRole { Body, Small, Strong, Heading, Title, Fine };
inline constexpr std::size_t kFontRoles = 6;

struct FontStyle {
    double scale; ///< in sizes of the body
    bool bold;
    const char* family = nullptr; ///< none: the drawing's
};
constexpr FontStyle fontStyle(FontRole role) {
    constexpr FontStyle kStyles[kFontRoles] = {{1, false},   {0.85, false}, {1, true},
                                               {1.15, true}, {1.6, true},   {2.0 / 3, false, "Arial"}};
    return kStyles[static_cast<std::size_t>(role)];
}

/// How a line is broken.
enum class Dash { Solid, Dashed, Dotted, DashDotted, LongDashed, DashDoubleDotted };
/// Of lines beside each other; dots, the faintest, are for the last, whose colour is the strongest.
inline constexpr Dash kDashes[] = {Dash::Solid,      Dash::Dashed,           Dash::DashDotted,
                                   Dash::LongDashed, Dash::DashDoubleDotted, Dash::Dotted};
/// Lengths of what is drawn and what is left out, in turn; none of a solid line.
std::span<const double> dashLengths(Dash dash);

struct Stroke {
    ColourRole colour = ColourRole::Rule;
    double width = 1;
    Dash dash = Dash::Solid;
    bool operator==(const Stroke&) const = default;
};

struct Line {
    Point from, to;
    Stroke stroke{};
    bool operator==(const Line&) const = default;
};

struct Polyline {
    std::vector<Point> points;
    Stroke stroke{};
    bool operator==(const Polyline&) const = default;
};

/// What lies between its points, filled.
struct Area {
    std::vector<Point> points;
    ColourRole fill = ColourRole::Accent;
    bool operator==(const Area&) const = default;
};

/// Filled, without an outline.
struct Rectangle {
    Box box;
    ColourRole fill = ColourRole::Ground;
    bool operator==(const Rectangle&) const = default;
};

/// Lines that do not hang together, from each point of an even place to the next one.
struct Segments {
    std::vector<Point> points;
    Stroke stroke{};
    bool operator==(const Segments&) const = default;
};

/// Rectangles side by side, each from its top to its bottom; one whose bottom is not below its top is left out. Where a
/// line changes more than once in a pixel, they fill what is under it far faster than a polygon.
struct Columns {
    struct Span {
        double top = 0, bottom = 0;
        bool operator==(const Span&) const = default;
    };
    double left = 0, width = 1; ///< of the first, of each
    std::vector<Span> spans;
    ColourRole fill = ColourRole::CurveArea;
    bool operator==(const Columns&) const = default;
};

/// Shapes that can be told apart without their colours.
enum class MarkShape { Dot, TriangleDown, TriangleUp, ArrowDown, ArrowUp };

/// The same shape at several places, within a line of the ground's colour.
struct Marks {
    MarkShape shape = MarkShape::Dot;
    double size = 8; ///< width and height, around the place
    std::vector<Point> places;
    ColourRole fill = ColourRole::Curve;
    bool operator==(const Marks&) const = default;
};
/// The corners of the mark at PLACE.
std::vector<Point> outline(const Marks& marks, Point place);

/// Of what follows only that within BOX is seen, until EndClip. Clips do not lie within one another.
struct Clip {
    Box box;
    bool operator==(const Clip&) const = default;
};
struct EndClip {
    bool operator==(const EndClip&) const = default;
};

/// A rectangle with rounded corners.
struct Bar {
    static constexpr double kRadius = 3;

    Box box;
    ColourRole fill = ColourRole::Accent;
    bool operator==(const Bar&) const = default;
};

/// Which part of a text lies at its place.
enum class Anchor { Start, Middle, End };

/// One line of UTF-8 text.
struct Text {
    Point place; ///< on the baseline
    std::string text;
    Anchor anchor = Anchor::Start;
    FontRole font = FontRole::Body;
    ColourRole colour = ColourRole::Text;
    bool operator==(const Text&) const = default;
};

using DrawingCommand =
    std::variant<Line, Polyline, Area, Rectangle, Bar, Text, Segments, Columns, Marks, Clip, EndClip>;

/// A picture as a list of commands, later ones over earlier ones. Who makes it has measured its texts with a
/// TextMeasure; who carries it out only paints.
struct Drawing {
    std::string title{};       ///< what assistive technology calls it
    std::string description{}; ///< what it shows, in words
    Size size{};
    double fontSize = 0; ///< of the body, in units of the drawing
    std::vector<DrawingCommand> commands{};
    bool operator==(const Drawing&) const = default;
};

/// COMMAND, moved by OFFSET.
DrawingCommand moved(DrawingCommand command, Point offset);

} // namespace quobrix
