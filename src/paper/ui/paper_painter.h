#pragma once

#include "paper/painter.h"

#include <QFont>

class QPagedPaintDevice;
class QPainter;

namespace quobrix {

/// The font of paper. What is measured in it holds for every device: it is neither hinted nor kerned.
QFont paperFont();

/// Measures texts in the font of paper, as fast as by a table.
std::unique_ptr<const TextMeasure> paperMeasure(double fontSize = kPaperFontSize);

/// Carries PAGE out on paper, or what looks like it, one unit of PAINTER being a point.
void paintPage(QPainter& painter, const Drawing& page);

/// Paints PAGES from FIRST up to LAST on DEVICE, which has no margins.
/// GO_ON is asked before each and told how many have been painted; false ends it. False if not all have been painted.
bool paintPages(QPagedPaintDevice& device, const PageSource& pages, std::size_t first, std::size_t last,
                const std::function<bool(std::size_t done)>& goOn = {});

/// The painter of a program with a QGuiApplication.
class PaperPainter : public FilePainter {
public:
    std::unique_ptr<const TextMeasure> measure(double fontSize) const override { return paperMeasure(fontSize); }
    Bytes pdf(const PageSource& pages) const override { return pdf(pages, {}); }
    /// Empty if GO_ON has ended it.
    Bytes pdf(const PageSource& pages, const std::function<bool(std::size_t done)>& goOn) const;
    Bytes png(const Drawing& drawing, double scale) const override;
};

} // namespace quobrix
