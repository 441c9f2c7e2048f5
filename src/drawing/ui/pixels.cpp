#include "drawing/ui/pixels.h"

#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QRegion>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace quobrix {
namespace {

/// Lays COLOUR over a SHARE, 0 to 1, of PIXEL.
void cover(QRgb& pixel, QRgb colour, double share) {
    constexpr QRgb kRedAndBlue = 0xFF00FF, kGreen = 0x00FF00; // mixed together: they do not reach into each other
    const auto over = static_cast<QRgb>(share * 256), under = 256 - over;
    const auto mix = [&](QRgb parts) { return (((pixel & parts) * under + (colour & parts) * over) >> 8) & parts; };
    pixel = 0xFF000000 | mix(kRedAndBlue) | mix(kGreen);
}

// Faster than those of the library, for what is below 2^31.
/// Of what is at least -1; -1 of what is below.
int floorFrom(double value) { return static_cast<int>(std::max(value + 1, 0.0)) - 1; }
/// 0 at least.
int ceilFrom(double value) {
    const int whole = static_cast<int>(std::max(value, 0.0));
    return whole + (whole < value);
}

} // namespace

std::optional<Pixels> Pixels::of(QPainter& painter) {
    // A widget's pixels are those of its window.
    auto* image = dynamic_cast<QImage*>(painter.paintEngine()->paintDevice());
    if (!image || image->format() != QImage::Format_RGB32)
        return {};
    QRect clip = image->rect();
    if (const QRegion seen = painter.paintEngine()->systemClip(); !seen.isEmpty()) {
        if (seen.rectCount() > 1)
            return {};
        clip &= seen.boundingRect();
    }
    if (painter.hasClipping())
        clip &= painter.deviceTransform().mapRect(painter.clipBoundingRect()).toRect();
    return Pixels(image->bits(), image->bytesPerLine(), clip);
}

void Pixels::fill(const QRect& pixels, QColor colour) {
    const QRect seen = pixels & clip_;
    const QRgb rgb = colour.rgb();
    for (int y = seen.top(); y <= seen.bottom(); ++y)
        std::fill_n(at(seen.left(), y), seen.width(), rgb);
}

void Pixels::drawDense(std::span<const Point> line, const QTransform& device, double width, QColor colour) {
    if (line.empty() || clip_.isEmpty())
        return;
    struct Reach {
        double top = std::numeric_limits<double>::max(), bottom = std::numeric_limits<double>::lowest();
        void include(double y) {
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    };
    std::vector<Reach> columns(static_cast<std::size_t>(clip_.width()));
    const double before = clip_.left() + 0.5 - width / 2; // where the first column's reach begins
    const auto onDevice = [scaleX = device.m11(), scaleY = device.m22(), dx = device.dx() - before,
                           dy = device.dy()](Point point) {
        return Point{point.x * scaleX + dx, point.y * scaleY + dy};
    };
    Point from = onDevice(line.front()); // from the first column on
    for (const Point& next : line.subspan(1)) {
        const Point to = onDevice(next);
        const int first = ceilFrom(from.x - width);
        const int last = std::min(clip_.width() - 1, floorFrom(to.x));
        if (first == last && from.x >= first && to.x <= first + width) {
            columns[static_cast<std::size_t>(first)].include(from.y);
            columns[static_cast<std::size_t>(first)].include(to.y);
        } else {
            const double slope = to.x > from.x ? (to.y - from.y) / (to.x - from.x) : 0;
            for (int column = first; column <= last; ++column) {
                Reach& reach = columns[static_cast<std::size_t>(column)];
                const double left = column, right = left + width;
                reach.include(from.x >= left ? from.y : from.y + (left - from.x) * slope);
                reach.include(to.x <= right ? to.y : from.y + (right - from.x) * slope);
            }
        }
        from = to;
    }
    const QRgb rgb = colour.rgb();
    const double clipTop = clip_.top(), clipBottom = clip_.bottom() + 1.0;
    for (int column = 0; column < clip_.width(); ++column) {
        const Reach& reach = columns[static_cast<std::size_t>(column)];
        if (reach.top > reach.bottom)
            continue;
        const double middle = (reach.top + reach.bottom) / 2;
        const double height = reach.bottom - reach.top;
        const double half = std::sqrt(height * height + width * width) / 2;
        if (middle + half <= clipTop || middle - half >= clipBottom)
            continue;
        const double top = std::max(middle - half, clipTop), bottom = std::min(middle + half, clipBottom);
        const int first = static_cast<int>(top), last = ceilFrom(bottom) - 1;
        uchar* pixel = bits_ + first * bytesPerLine_ + (clip_.left() + column) * static_cast<qsizetype>(sizeof(QRgb));
        const auto at = [](uchar* bytes) -> QRgb& { return *reinterpret_cast<QRgb*>(bytes); };
        if (first >= last) {
            cover(at(pixel), rgb, bottom - top);
            continue;
        }
        cover(at(pixel), rgb, first + 1 - top);
        for (int y = first + 1; y < last; ++y)
            at(pixel += bytesPerLine_) = rgb;
        cover(at(pixel + bytesPerLine_), rgb, bottom - last);
    }
}

} // namespace quobrix
