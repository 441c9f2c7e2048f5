#include "drawing/ui/drawing_painter.h"

#include "base/ui/qt_text.h"
#include "drawing/ui/pixels.h"

#include <QFontInfo>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>

namespace quobrix {
namespace {

/// So many points cost little whatever the pen, and look better in one piece.
constexpr qsizetype kFewPoints = 64;
constexpr double kDense = 3;       // pixels a point
constexpr double kWidestDense = 3; // pixels

QPointF toQt(Point point) { return {point.x, point.y}; }
QRectF toQt(const Box& box) { return {box.left, box.top, box.width, box.height}; }
QColor toQt(Colour colour) { return {colour.red, colour.green, colour.blue}; }
QPolygonF toQt(const std::vector<Point>& points) {
    QPolygonF polygon;
    polygon.reserve(static_cast<qsizetype>(points.size()));
    for (const Point point : points)
        polygon += toQt(point);
    return polygon;
}

/// Fonts may be given in pixels, too.
double pointSize(const QFont& font) { return font.pointSizeF() > 0 ? font.pointSizeF() : QFontInfo(font).pointSizeF(); }

/// FRONT over GROUND, where FRONT covers it by SHARE.
Colour mixed(const QColor& front, const QColor& ground, double share) {
    const auto mix = [&](int a, int b) { return static_cast<std::uint8_t>(a * share + b * (1 - share) + 0.5); };
    return {mix(front.red(), ground.red()), mix(front.green(), ground.green()), mix(front.blue(), ground.blue())};
}

class Painter {
public:
    Painter(QPainter& painter, const Drawing& drawing, const Palette& palette, QFont font)
        : painter_(painter), palette_(palette) {
        // Points of the device, whatever its resolution: fonts in pixels come in whole ones only.
        font.setPointSizeF(drawing.fontSize * 72 / painter.device()->logicalDpiY());
        for (std::size_t role = 0; role < kFontRoles; ++role)
            fonts_.push_back(fontOf(static_cast<FontRole>(role), font));
    }

    void draw(const Line& line) {
        setPen(line.stroke);
        painter_.drawLine(toQt(line.from), toQt(line.to));
    }
    void draw(const Polyline& polyline) {
        const double width = setPen(polyline.stroke);
        if (isDense(polyline, width))
            if (std::optional<Pixels> image = Pixels::of(painter_))
                return image->drawDense(polyline.points, painter_.deviceTransform(), std::max(width, 1.0),
                                        toQt(palette_[polyline.stroke.colour]));
        painter_.setBrush(Qt::NoBrush);
        const QPolygonF points = toQt(polyline.points);
        if (width <= 1 || points.size() <= kFewPoints) {
            painter_.drawPolyline(points);
        } else if (polyline.stroke.dash == Dash::Solid) {
            QVector<QLineF> lines;
            lines.reserve(points.size());
            for (qsizetype i = 1; i < points.size(); ++i)
                lines.emplace_back(points[i - 1], points[i]);
            painter_.drawLines(lines);
        } else { // dashes go on from one point to the next
            const int passes = static_cast<int>(std::ceil(width));
            const double unit = polyline.stroke.width / width;
            setPen({polyline.stroke.colour, unit, polyline.stroke.dash});
            for (int i = 0; i < passes; ++i) {
                const double off = (i - (passes - 1) / 2.0) * unit;
                painter_.drawPolyline(points.translated(off / 2, off));
            }
        }
    }
    void draw(const Segments& segments) {
        const bool pixels = makesPixels() && segments.stroke.dash == Dash::Solid;
        QVector<QRect> crisp;
        QVector<QLineF> lines;
        for (std::size_t i = 0; i + 1 < segments.points.size(); i += 2) {
            const Point from = segments.points[i], to = segments.points[i + 1];
            if (pixels && (from.x == to.x || from.y == to.y))
                crisp.append(pixelsOf(from, to, segments.stroke.width));
            else
                lines.emplace_back(toQt(from), toQt(to));
        }
        fillPixels(crisp, segments.stroke.colour);
        setPen(segments.stroke);
        painter_.drawLines(lines);
    }
    void draw(const Columns& columns) {
        if (!makesPixels())
            return drawOutline(columns);
        const QTransform device = painter_.deviceTransform();
        const auto column = [&](std::size_t i) {
            return pixelAt((columns.left + static_cast<double>(i) * columns.width) * device.m11() + device.dx());
        };
        const auto row = [&](double y) { return pixelAt(y * device.m22() + device.dy()); };
        QVector<QRect> pixels;
        pixels.reserve(static_cast<qsizetype>(columns.spans.size()));
        for (std::size_t i = 0; i < columns.spans.size(); ++i) {
            const Columns::Span& span = columns.spans[i];
            const QRect pixel(QPoint(column(i), row(span.top)), QPoint(column(i + 1) - 1, row(span.bottom) - 1));
            if (pixel.isValid())
                pixels.append(pixel);
        }
        fillPixels(pixels, columns.fill);
    }
    void draw(const Marks& marks) {
        setPen({ColourRole::Ground, 1});
        painter_.setBrush(toQt(palette_[marks.fill]));
        for (const Point place : marks.places)
            painter_.drawPolygon(toQt(outline(marks, place)));
    }
    void draw(const Clip& clip) {
        painter_.save();
        painter_.setClipRect(toQt(clip.box), Qt::IntersectClip);
    }
    void draw(const EndClip&) { painter_.restore(); }
    void draw(const Area& area) {
        setFill(area.fill);
        painter_.drawPolygon(toQt(area.points));
    }
    void draw(const Rectangle& rectangle) { painter_.fillRect(toQt(rectangle.box), toQt(palette_[rectangle.fill])); }
    void draw(const Bar& bar) {
        setFill(bar.fill);
        painter_.drawRoundedRect(toQt(bar.box), Bar::kRadius, Bar::kRadius);
    }
    void draw(const Text& text) {
        painter_.setFont(fonts_[static_cast<std::size_t>(text.font)]);
        painter_.setPen(toQt(palette_[text.colour]));
        QPointF place = toQt(text.place);
        const QString line = quobrix::toQt(text.text);
        if (text.anchor != Anchor::Start)
            place.rx() -= QFontMetricsF(painter_.font(), painter_.device()).horizontalAdvance(line) *
                          (text.anchor == Anchor::Middle ? 0.5 : 1);
        painter_.drawText(place, line);
    }

private:
    /// On a device of pixels; on paper and in files of shapes they are made later, at a resolution that nobody knows
    /// yet.
    bool makesPixels() const { return painter_.paintEngine()->type() == QPaintEngine::Raster; }
    static int pixelAt(double device) { return static_cast<int>(std::lround(device)); }
    /// What a line that runs along an axis covers, in whole pixels of the device, one at least.
    QRect pixelsOf(Point from, Point to, double width) const {
        const QTransform device = painter_.deviceTransform();
        const double half = width * device.m11() / 2;
        const auto span = [&](double a, double b, bool along) { // the first pixel and how many
            if (a > b)
                std::swap(a, b);
            const int first = pixelAt(along ? a : a - half);
            return std::pair(first, std::max(1, pixelAt(along ? b - first : 2 * half)));
        };
        const bool level = from.y == to.y;
        const auto [x, columns] = span(from.x * device.m11() + device.dx(), to.x * device.m11() + device.dx(), level);
        const auto [y, rows] = span(from.y * device.m22() + device.dy(), to.y * device.m22() + device.dy(), !level);
        return {x, y, columns, rows};
    }
    /// Whole pixels of the device leave no seams, and are painted many times as fast as what is smoothed.
    void fillPixels(const QVector<QRect>& pixels, ColourRole fill) {
        if (std::optional<Pixels> image = Pixels::of(painter_)) {
            for (const QRect& each : pixels)
                image->fill(each, toQt(palette_[fill]));
            return;
        }
        const QTransform device = painter_.deviceTransform(), world = painter_.worldTransform();
        painter_.setWorldTransform(device.inverted() * world);
        painter_.setRenderHint(QPainter::Antialiasing, false);
        setFill(fill);
        painter_.drawRects(pixels);
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setWorldTransform(world);
    }
    /// Of points that follow each other along the x axis, too close for the eye to tell one from the next.
    bool isDense(const Polyline& polyline, double width) const {
        const std::vector<Point>& points = polyline.points;
        if (polyline.stroke.dash != Dash::Solid || static_cast<qsizetype>(points.size()) <= kFewPoints ||
            width > kWidestDense)
            return false;
        const double columns = (points.back().x - points.front().x) * painter_.deviceTransform().m11();
        return columns < static_cast<double>(points.size()) * kDense && std::ranges::is_sorted(points, {}, &Point::x);
    }
    /// Where pixels are made later, rectangles side by side would show seams.
    void drawOutline(const Columns& columns) {
        setFill(columns.fill);
        QPainterPath path;
        double left = columns.left;
        std::vector<QPointF> below;
        for (const Columns::Span& span : columns.spans) {
            const double right = left + columns.width;
            if (span.bottom > span.top) {
                if (below.empty())
                    path.moveTo(left, span.top);
                for (const double x : {left, right}) {
                    path.lineTo(x, span.top);
                    below.emplace_back(x, span.bottom);
                }
            } else {
                close(path, below);
            }
            left = right;
        }
        close(path, below);
        painter_.drawPath(path);
    }
    static void close(QPainterPath& path, std::vector<QPointF>& below) {
        for (auto point = below.rbegin(); point != below.rend(); ++point)
            path.lineTo(*point);
        if (!below.empty())
            path.closeSubpath();
        below.clear();
    }
    /// A cosmetic pen of the same width on the device is faster by hundreds of times than one that is scaled. Returns
    /// that width, in pixels of the device: up to 1, many points that go up and down cost little, above it very much.
    double setPen(const Stroke& stroke) {
        const double scale = painter_.deviceTransform().m11(), width = stroke.width * scale;
        QPen pen(toQt(palette_[stroke.colour]), width);
        pen.setCosmetic(true);
        pen.setCapStyle(Qt::FlatCap);
        if (const std::span<const double> lengths = dashLengths(stroke.dash); !lengths.empty()) {
            QVector<qreal> pattern; // in widths of the pen
            for (const double length : lengths)
                pattern.append(length * scale / std::max(width, 1.0));
            pen.setDashPattern(pattern);
        }
        painter_.setPen(pen);
        return width;
    }
    void setFill(ColourRole role) {
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(toQt(palette_[role]));
    }

    QPainter& painter_;
    const Palette& palette_;
    std::vector<QFont> fonts_; ///< by role
};

} // namespace

QFont fontOf(FontRole role, QFont font) {
    const FontStyle style = fontStyle(role);
    font.setPointSizeF(pointSize(font) * style.scale);
    font.setBold(style.bold);
    if (style.family)
        font.setFamily(QString::fromLatin1(style.family));
    return font;
}

FontTextMeasure::FontTextMeasure(const QFont& font, const QPaintDevice& device)
    : fontSize_(pointSize(font) * device.logicalDpiY() / 72) {
    for (std::size_t role = 0; role < kFontRoles; ++role)
        metrics_.emplace_back(fontOf(static_cast<FontRole>(role), font), &device);
}

double FontTextMeasure::width(std::string_view text, FontRole font) const {
    return metrics_[static_cast<std::size_t>(font)].horizontalAdvance(quobrix::toQt(text));
}
double FontTextMeasure::ascent(FontRole font) const { return metrics_[static_cast<std::size_t>(font)].ascent(); }
double FontTextMeasure::lineHeight(FontRole font) const { return metrics_[static_cast<std::size_t>(font)].height(); }

Palette screenPalette(const QPalette& palette) {
    const QColor ground = palette.color(QPalette::Base);
    const auto over = [&](QPalette::ColorRole role, double share = 1) {
        const QColor colour = palette.color(role);
        return mixed(colour, ground, colour.alphaF() * share);
    };
    Palette result = ground.lightnessF() < 0.5 ? kDarkPalette : kLightPalette;
    result[ColourRole::Text] = over(QPalette::WindowText);
    result[ColourRole::SecondaryText] = over(QPalette::PlaceholderText);
    result[ColourRole::Ground] = over(QPalette::Base);
    result[ColourRole::HeadingGround] = over(QPalette::WindowText, 0.06);
    result[ColourRole::Rule] = over(QPalette::WindowText, 0.25);
    result[ColourRole::Track] = over(QPalette::WindowText, 0.08);
    result[ColourRole::Accent] = over(QPalette::Highlight);
    return result;
}

void paintDrawing(QPainter& painter, const Drawing& drawing, const Palette& palette, const QFont& font) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    Painter carrier(painter, drawing, palette, font);
    for (const DrawingCommand& command : drawing.commands)
        std::visit([&](const auto& what) { carrier.draw(what); }, command);
    painter.restore();
}

} // namespace quobrix
