#pragma once

#include "drawing/drawing.h"

#include <QColor>
#include <QRect>
#include <QRgb>

#include <optional>
#include <span>

class QPainter;
class QTransform;

namespace quobrix {

/// The pixels of an image that is being painted, as far as its painter is clipped to them: written at once, where a
/// painter takes more than twice as long (docs/performance.md).
class Pixels {
public:
    /// Of the image that PAINTER paints, or of the window, as far as it may; nothing where it paints anything else, an
    /// image that can be seen through, or a part of a window that is no rectangle.
    static std::optional<Pixels> of(QPainter& painter);

    void fill(const QRect& pixels, QColor colour);
    /// A smooth line WIDTH pixels wide, at least 1, through LINE, whose points DEVICE, which neither turns nor shears,
    /// makes pixels of, and which follow each other along the x axis. Each
    /// column of pixels is covered from the line's highest to its lowest place within a width's reach, which is the
    /// right share of it wherever the line goes on in the same direction, and what can be seen of it where it goes up
    /// and down within a pixel.
    void drawDense(std::span<const Point> line, const QTransform& device, double width, QColor colour);

private:
    Pixels(uchar* bits, qsizetype bytesPerLine, const QRect& clip)
        : bits_(bits), bytesPerLine_(bytesPerLine), clip_(clip) {}

    QRgb* at(int x, int y) { return reinterpret_cast<QRgb*>(bits_ + y * bytesPerLine_) + x; }

    uchar* bits_;
    qsizetype bytesPerLine_;
    QRect clip_;
};

} // namespace quobrix
