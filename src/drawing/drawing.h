#pragma once

#include <cstddef>
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
};
inline constexpr std::size_t kColourRoles = 11;

/// What a text is for. All fonts of a drawing are sizes and weights of one family.
enum class FontRole { Body, Small, Strong, Heading, Title };

struct FontStyle {
    double scale; ///< in sizes of the body
    bool bold;
};
constexpr FontStyle fontStyle(FontRole role) {
    constexpr FontStyle kStyles[] = {{1, false}, {0.85, false}, {1, true}, {1.15, true}, {1.6, true}};
    return kStyles[static_cast<std::size_t>(role)];
}

struct Stroke {
    ColourRole colour = ColourRole::Rule;
    double width = 1;
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

using DrawingCommand = std::variant<Line, Polyline, Area, Rectangle, Bar, Text>;

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
