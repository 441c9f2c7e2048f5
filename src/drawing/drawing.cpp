#include "drawing/drawing.h"

#include <cmath>
#include <numbers>

namespace quobrix {
namespace {

// In halves of a mark's size, from its place.
constexpr Point kTriangle[] = {{-1, -0.85}, {1, -0.85}, {0, 0.85}};
constexpr Point kArrow[] = {{-0.4, -1}, {0.4, -1}, {0.4, 0}, {1, 0}, {0, 1}, {-1, 0}, {-0.4, 0}};
constexpr int kDotCorners = 12;

void move(Point& point, Point offset) {
    point.x += offset.x;
    point.y += offset.y;
}
void move(std::vector<Point>& points, Point offset) {
    for (Point& point : points)
        move(point, offset);
}
void move(Box& box, Point offset) {
    box.left += offset.x;
    box.top += offset.y;
}
void move(Line& line, Point offset) {
    move(line.from, offset);
    move(line.to, offset);
}
void move(Polyline& polyline, Point offset) { move(polyline.points, offset); }
void move(Area& area, Point offset) { move(area.points, offset); }
void move(Rectangle& rectangle, Point offset) { move(rectangle.box, offset); }
void move(Bar& bar, Point offset) { move(bar.box, offset); }
void move(Text& text, Point offset) { move(text.place, offset); }
void move(Segments& segments, Point offset) { move(segments.points, offset); }
void move(Columns& columns, Point offset) {
    columns.left += offset.x;
    for (Columns::Span& span : columns.spans)
        span = {span.top + offset.y, span.bottom + offset.y};
}
void move(Marks& marks, Point offset) { move(marks.places, offset); }
void move(Clip& clip, Point offset) { move(clip.box, offset); }
void move(EndClip&, Point) {}

} // namespace

std::span<const double> dashLengths(Dash dash) {
    static constexpr double kDashed[] = {7, 3}, kDotted[] = {2, 2}, kDashDotted[] = {8, 3, 2, 3},
                            kLongDashed[] = {14, 4}, kDashDoubleDotted[] = {8, 3, 2, 2, 2, 3};
    switch (dash) {
    case Dash::Solid:
        return {};
    case Dash::Dashed:
        return kDashed;
    case Dash::Dotted:
        return kDotted;
    case Dash::DashDotted:
        return kDashDotted;
    case Dash::LongDashed:
        return kLongDashed;
    case Dash::DashDoubleDotted:
        return kDashDoubleDotted;
    }
    return {};
}

std::vector<Point> outline(const Marks& marks, Point place) {
    const double half = marks.size / 2;
    std::vector<Point> corners;
    const auto add = [&](std::span<const Point> shape, double down) {
        for (const Point& corner : shape)
            corners.push_back({place.x + half * corner.x, place.y + half * corner.y * down});
    };
    switch (marks.shape) {
    case MarkShape::Dot:
        for (int i = 0; i < kDotCorners; ++i) {
            const double angle = 2 * std::numbers::pi * i / kDotCorners;
            corners.push_back({place.x + half * std::cos(angle), place.y + half * std::sin(angle)});
        }
        break;
    case MarkShape::TriangleDown:
    case MarkShape::TriangleUp:
        add(kTriangle, marks.shape == MarkShape::TriangleDown ? 1 : -1);
        break;
    case MarkShape::ArrowDown:
    case MarkShape::ArrowUp:
        add(kArrow, marks.shape == MarkShape::ArrowDown ? 1 : -1);
        break;
    }
    return corners;
}

DrawingCommand moved(DrawingCommand command, Point offset) {
    std::visit([&](auto& what) { move(what, offset); }, command);
    return command;
}

} // namespace quobrix
