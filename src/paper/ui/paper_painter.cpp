#include "paper/ui/paper_painter.h"

#include "base/ui/qt_text.h"
#include "drawing/ui/drawing_painter.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>

#include <array>
#include <cmath>

namespace quobrix {
namespace {

constexpr int kDotsPerMetreOfPoints = 2835; // 72 an inch
constexpr double kMostPixels = 32'000;      // on a side

/// A device whose pixels are points, and any other unit as well.
const QImage& unitDevice() {
    static const QImage image = [] {
        QImage made(1, 1, QImage::Format_RGB32);
        made.setDotsPerMeterX(kDotsPerMetreOfPoints);
        made.setDotsPerMeterY(kDotsPerMetreOfPoints);
        return made;
    }();
    return image;
}

/// Adds up the widths of the letters, since the font is not kerned; what is not ASCII is shaped.
class PaperMeasure final : public TextMeasure {
public:
    explicit PaperMeasure(const QFont& font) : font_(font, unitDevice()) {}

    double fontSize() const override { return font_.fontSize(); }
    double ascent(FontRole font) const override { return font_.ascent(font); }
    double lineHeight(FontRole font) const override { return font_.lineHeight(font); }
    double width(std::string_view text, FontRole font) const override {
        const std::array<double, kCount>& widths = widthsOf(font);
        double width = 0;
        for (const char c : text) {
            if (c < kFirst || c > kLast)
                return font_.width(text, font);
            width += widths[static_cast<std::size_t>(c - kFirst)];
        }
        return width;
    }

private:
    static constexpr char kFirst = ' ', kLast = '~';
    static constexpr std::size_t kCount = kLast - kFirst + 1;

    const std::array<double, kCount>& widthsOf(FontRole font) const {
        std::array<double, kCount>& widths = widths_[static_cast<std::size_t>(font)];
        if (widths[0] == 0)
            for (std::size_t i = 0; i < kCount; ++i) {
                const char c = static_cast<char>(kFirst + static_cast<char>(i));
                widths[i] = font_.width({&c, 1}, font);
            }
        return widths;
    }

    FontTextMeasure font_;
    mutable std::array<std::array<double, kCount>, kFontRoles> widths_{};
};

Bytes bytesOf(const QByteArray& bytes) { return {bytes.begin(), bytes.end()}; }

} // namespace

QFont paperFont() {
    QFont font;
    // The first is as wide as most of the others, so that pages end where they do elsewhere.
    font.setFamilies({QStringLiteral("Helvetica"), QStringLiteral("Arial"), QStringLiteral("Liberation Sans"),
                      QStringLiteral("Nimbus Sans"), font.family()});
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setKerning(false);
    // Their usual distance, but as one that was asked for: then letters are not joined, as "fi" is in some fonts, which
    // no search of a PDF file would find.
    font.setLetterSpacing(QFont::PercentageSpacing, 100);
    font.setPointSizeF(kPaperFontSize);
    return font;
}

std::unique_ptr<const TextMeasure> paperMeasure(double fontSize) {
    QFont font = paperFont();
    font.setPointSizeF(fontSize);
    return std::make_unique<const PaperMeasure>(font);
}

void paintPage(QPainter& painter, const Drawing& page) { paintDrawing(painter, page, kPaperPalette, paperFont()); }

bool paintPages(QPagedPaintDevice& device, const PageSource& pages, std::size_t first, std::size_t last,
                const std::function<bool(std::size_t done)>& goOn) {
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    painter.scale(device.logicalDpiX() / 72.0, device.logicalDpiY() / 72.0);
    for (std::size_t index = first; index < last; ++index) {
        if (goOn && !goOn(index - first))
            return false;
        if (index > first && !device.newPage())
            return false;
        paintPage(painter, pages.page(index));
    }
    return painter.end();
}

Bytes PaperPainter::pdf(const PageSource& pages, const std::function<bool(std::size_t done)>& goOn) const {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setTitle(toQt(pages.title));
        writer.setCreator(QStringLiteral("Quobrix"));
        // By its name paper stands upright; a size of its own is as it is.
        writer.setPageSize(
            QPageSize(QSizeF(pages.paper.width, pages.paper.height), QPageSize::Point, {}, QPageSize::ExactMatch));
        writer.setPageMargins({});
        if (!paintPages(writer, pages, 0, pages.count, goOn))
            return {};
    }
    return bytesOf(buffer.data());
}

Bytes PaperPainter::png(const Drawing& drawing, double scale) const {
    const double width = std::ceil(drawing.size.width * scale), height = std::ceil(drawing.size.height * scale);
    if (!(width >= 1 && height >= 1 && width <= kMostPixels && height <= kMostPixels))
        return {};
    QImage image(static_cast<int>(width), static_cast<int>(height), QImage::Format_RGB32);
    if (image.isNull())
        return {};
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        painter.scale(scale, scale);
        paintDrawing(painter, drawing, kPaperPalette, paperFont());
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    writer.setText(QStringLiteral("Title"), toQt(drawing.title));
    return writer.write(image) ? bytesOf(buffer.data()) : Bytes();
}

} // namespace quobrix
