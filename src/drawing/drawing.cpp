#include "drawing/drawing.h"

namespace quobrix {
namespace {

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

} // namespace

DrawingCommand moved(DrawingCommand command, Point offset) {
    std::visit([&](auto& what) { move(what, offset); }, command);
    return command;
}

} // namespace quobrix
