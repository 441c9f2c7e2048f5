#pragma once

#include "drawing/palette.h"
#include "drawing/text_measure.h"

#include <QFont>
#include <QFontMetricsF>

#include <vector>

class QPaintDevice;
class QPainter;
class QPalette;

namespace quobrix {

/// FONT in the size and weight of ROLE.
QFont fontOf(FontRole role, QFont font);

/// Measures texts in a font of the toolkit, in units of a device: a widget's are device-independent pixels, and those
/// of one of 72 dots an inch are points.
class FontTextMeasure final : public TextMeasure {
public:
    FontTextMeasure(const QFont& font, const QPaintDevice& device);

    double fontSize() const override { return fontSize_; }
    double width(std::string_view text, FontRole font) const override;
    double ascent(FontRole font) const override;
    double lineHeight(FontRole font) const override;

private:
    double fontSize_;
    std::vector<QFontMetricsF> metrics_; ///< by role
};

/// The colours of the window that PALETTE is of.
Palette screenPalette(const QPalette& palette);

/// Carries DRAWING out in the family of FONT, its top left corner at the origin of PAINTER and its unit that of
/// PAINTER: on a widget, an image or a page, whose resolution is PAINTER's transformation.
void paintDrawing(QPainter& painter, const Drawing& drawing, const Palette& palette, const QFont& font);

} // namespace quobrix
