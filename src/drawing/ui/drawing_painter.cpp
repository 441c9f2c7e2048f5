#include "drawing/ui/drawing_painter.h"

#include "base/ui/qt_text.h"

#include <QFontInfo>
#include <QPaintDevice>
#include <QPainter>
#include <QPalette>
#include <QPolygonF>
namespace quobrix {
namespace {

constexpr FontRole kFontRoles[] = {FontRole::Body, FontRole::Small, FontRole::Strong, FontRole::Heading,
                                   FontRole::Title};

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
        for (const FontRole role : kFontRoles)
            fonts_.push_back(fontOf(role, font));
    }

    void draw(const Line& line) {
        setPen(line.stroke);
        painter_.drawLine(toQt(line.from), toQt(line.to));
    }
    void draw(const Polyline& polyline) {
        setPen(polyline.stroke);
        painter_.setBrush(Qt::NoBrush);
        painter_.drawPolyline(toQt(polyline.points));
    }
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
    /// A cosmetic pen of the same width on the device is faster by hundreds of times than one that is scaled.
    void setPen(const Stroke& stroke) {
        QPen pen(toQt(palette_[stroke.colour]), stroke.width * painter_.deviceTransform().m11());
        pen.setCosmetic(true);
        pen.setCapStyle(Qt::FlatCap);
        painter_.setPen(pen);
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
    return font;
}

FontTextMeasure::FontTextMeasure(const QFont& font, const QPaintDevice& device)
    : fontSize_(pointSize(font) * device.logicalDpiY() / 72) {
    for (const FontRole role : kFontRoles)
        metrics_.emplace_back(fontOf(role, font), &device);
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
