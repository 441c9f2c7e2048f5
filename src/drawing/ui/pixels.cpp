#include "drawing/ui/pixels.h"

#include <QImage>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace quobrix {

std::optional<Pixels> Pixels::of(QPainter& painter) {
    auto* image = dynamic_cast<QImage*>(painter.device());
    if (!image || image->format() != QImage::Format_RGB32)
        return {};
    QRect clip = image->rect();
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

void Pixels::cover(int x, int y, QRgb colour, double share) {
    constexpr QRgb kRedAndBlue = 0xFF00FF, kGreen = 0x00FF00; // mixed together: they do not reach into each other
    const auto over = static_cast<QRgb>(share * 256), under = 256 - over;
    QRgb& pixel = *at(x, y);
    const auto mix = [&](QRgb parts) { return (((pixel & parts) * under + (colour & parts) * over) >> 8) & parts; };
    pixel = 0xFF000000 | mix(kRedAndBlue) | mix(kGreen);
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
        const int first = std::max(0, static_cast<int>(std::ceil(from.x - width)));
        const int last = std::min(clip_.width() - 1, static_cast<int>(std::floor(to.x)));
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
        const int x = clip_.left() + column;
        const int first = static_cast<int>(std::floor(top)), last = static_cast<int>(std::ceil(bottom)) - 1;
        if (first == last) {
            cover(x, first, rgb, bottom - top);
            continue;
        }
        cover(x, first, rgb, first + 1 - top);
        for (int y = first + 1; y < last; ++y)
            *at(x, y) = rgb;
        cover(x, last, rgb, bottom - last);
    }
}

} // namespace quobrix
