#include "plots/curve.h"

#include "plots/reduction.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quobrix {
namespace {

using Points = std::vector<Point>;

constexpr double kAround = 8;              // units that lines go on beyond the area
constexpr double kHalfLine = 0.5;          // of what is drawn along the edge
constexpr double kRoomForDots = 12;        // between two samples
constexpr std::size_t kPolygonPoints = 64; // polygons of more are slow
constexpr double kSparse = 3;              // pixels a sample
constexpr double kRoomForPolygons = 4;     // pixels a sample

/// The part of a segment within BOX (Liang and Barsky, 1984), from 0 at its beginning to 1 at its end.
bool clipSegment(Point from, Point to, const Box& box, double& begin, double& end) {
    const double dx = to.x - from.x, dy = to.y - from.y;
    const double toEdges[][2] = {{-dx, from.x - box.left},
                                 {dx, box.left + box.width - from.x},
                                 {-dy, from.y - box.top},
                                 {dy, box.top + box.height - from.y}};
    begin = 0;
    end = 1;
    for (const auto& [step, room] : toEdges) {
        if (step == 0) {
            if (room < 0)
                return false;
        } else if (const double at = room / step; step < 0) {
            begin = std::max(begin, at);
        } else {
            end = std::min(end, at);
        }
    }
    return begin <= end;
}

Point between(Point from, Point to, double part) {
    return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
}

/// Until the next sample, a value stays as it is.
Points asSteps(const Points& line, double lastWidth) {
    Points steps;
    for (const Point& point : line) {
        if (!steps.empty())
            steps.push_back({point.x, steps.back().y});
        steps.push_back(point);
    }
    steps.push_back({line.back().x + lastWidth, line.back().y});
    return steps;
}

/// LINE, with points where it crosses TOP and BOTTOM, beyond which it is laid on them.
Points flattened(const Points& line, double top, double bottom) {
    Points flat;
    const auto add = [&](Point point) { flat.push_back({point.x, std::clamp(point.y, top, bottom)}); };
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (i > 0) {
            const Point from = line[i - 1], to = line[i];
            double crossings[2] = {(top - from.y) / (to.y - from.y), (bottom - from.y) / (to.y - from.y)};
            if (crossings[0] > crossings[1])
                std::swap(crossings[0], crossings[1]);
            for (const double part : crossings)
                if (part > 0 && part < 1) // not where the line is level
                    add(between(from, to, part));
        }
        add(line[i]);
    }
    return flat;
}

/// What lies between LINE and BASE, in polygons that overlap by a segment: side by side they would show a seam.
void addPolygons(std::vector<Points>& areas, const Points& line, double base) {
    for (std::size_t begin = 0; begin + 1 < line.size(); begin += kPolygonPoints) {
        const std::size_t end = std::min(begin + kPolygonPoints + 2, line.size());
        Points area(line.begin() + static_cast<std::ptrdiff_t>(begin), line.begin() + static_cast<std::ptrdiff_t>(end));
        area.push_back({area.back().x, base});
        area.push_back({line[begin].x, base});
        areas.push_back(std::move(area));
    }
}

/// The same as columns of pixels, each as high as the line goes in it.
Columns columnsUnder(const Points& line, double base, double left, double right, double pixel) {
    const auto count = static_cast<std::size_t>(std::lround((right - left) / pixel));
    const auto columnAt = [&](double x) {
        const double column = std::floor((x - left) / pixel);
        return static_cast<std::size_t>(std::clamp(column, 0.0, static_cast<double>(count - 1)));
    };
    const std::size_t first = columnAt(line.front().x), last = columnAt(line.back().x);
    Columns columns{left + static_cast<double>(first) * pixel, pixel,
                    std::vector<Columns::Span>(last - first + 1, {base, base})};
    const auto include = [&](std::size_t column, double y) {
        Columns::Span& span = columns.spans[column - first];
        span.top = std::min(span.top, y);
        span.bottom = std::max(span.bottom, y);
    };
    for (std::size_t i = 1; i < line.size(); ++i) {
        const Point from = line[i - 1], to = line[i];
        const std::size_t begin = columnAt(from.x), end = columnAt(to.x);
        include(begin, from.y);
        include(end, to.y);
        for (std::size_t column = begin; column < end; ++column) { // where it crosses into the next one
            const double edge = left + static_cast<double>(column + 1) * pixel;
            const double y = between(from, to, std::clamp((edge - from.x) / (to.x - from.x), 0.0, 1.0)).y;
            include(column, y);
            include(column + 1, y);
        }
    }
    return columns;
}

} // namespace

std::vector<std::vector<Point>> clippedLine(const std::vector<Point>& line, const Box& box) {
    const auto within = [right = box.left + box.width, bottom = box.top + box.height, &box](Point point) {
        return point.x >= box.left && point.x <= right && point.y >= box.top && point.y <= bottom;
    };
    std::vector<Points> pieces;
    bool open = false; // the last piece ends where the next segment begins
    for (std::size_t i = 1; i < line.size(); ++i) {
        double begin = 0, end = 1;
        if (within(line[i - 1]) && within(line[i])) {
            end = 1;
        } else if (!clipSegment(line[i - 1], line[i], box, begin, end)) {
            open = false;
            continue;
        }
        if (!open || begin > 0) {
            pieces.emplace_back().reserve(line.size() - i + 1);
            pieces.back().push_back(begin > 0 ? between(line[i - 1], line[i], begin) : line[i - 1]);
        }
        pieces.back().push_back(end < 1 ? between(line[i - 1], line[i], end) : line[i]);
        open = end >= 1;
    }
    return pieces;
}

CurveShape shapeOf(const PlotSamples& samples, const PanelLayout& panel, const PlotLayout& layout, bool steps,
                   bool areas, bool dots) {
    CurveShape shape;
    const PlaceScale& axis = layout.axis;
    const auto columns = static_cast<std::size_t>(std::lround(layout.width() / layout.pixel));
    const Reduction reduction =
        reduce(samples, axis.from, (axis.to - axis.from) / static_cast<double>(columns), columns);
    const Box& area = panel.area;
    const Box around{area.left - kAround, area.top - kAround, area.width + 2 * kAround, area.height + 2 * kAround};
    // One side of the line may be far away: what is near is cut out of it exactly.
    const Box across{area.left, -1e18, area.width, 2e18};
    const double base = panel.scale.y(panel.baseline), bottom = area.top + area.height;
    std::size_t drawn = 0;
    for (const std::vector<PlotSamples::Sample>& run : reduction.runs)
        drawn += run.size();
    dots = dots && !reduction.reduced && static_cast<double>(drawn) * kRoomForDots < layout.width();
    const bool polygons = static_cast<double>(drawn) * kRoomForPolygons < static_cast<double>(columns);
    shape.sparse = static_cast<double>(drawn) * kSparse < static_cast<double>(columns);
    for (const std::vector<PlotSamples::Sample>& run : reduction.runs) {
        Points line;
        line.reserve(run.size());
        for (const PlotSamples::Sample& sample : run)
            line.push_back({axis.x(samples.at(sample.number)), panel.scale.y(sample.value)});
        if (dots || line.size() == 1)
            for (const Point& point : line)
                if (point.x >= area.left && point.x <= area.left + area.width && point.y >= area.top &&
                    point.y <= bottom)
                    shape.dots.push_back(point);
        if (steps)
            line = asSteps(line, axis.x(axis.from + samples.step()) - axis.left);
        // What is beyond a common maximum runs along the edge: a line that ends there looks as if nothing was recorded.
        const bool beyond = std::ranges::any_of(line, [&](Point at) { return at.y < area.top || at.y > bottom; });
        std::ranges::move(clippedLine(beyond ? flattened(line, area.top + kHalfLine, bottom) : line, around),
                          std::back_inserter(shape.lines));
        if (!areas)
            continue;
        for (const Points& piece : clippedLine(line, across)) {
            const Points flat = flattened(piece, area.top, bottom);
            if (polygons)
                addPolygons(shape.areas, flat, base);
            else
                shape.columns.push_back(columnsUnder(flat, base, area.left, area.left + area.width, layout.pixel));
        }
    }
    return shape;
}

} // namespace quobrix
