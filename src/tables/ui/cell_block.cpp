#include "tables/ui/cell_block.h"

#include "drawing/svg.h"
#include "drawing/ui/drawing_painter.h"
#include "tables/ui/spreadsheet_model.h"
#include "tables/ui/spreadsheet_view.h"

#include <QHeaderView>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <map>
#include <set>

namespace quobrix {
namespace {

// A bitmap of more rows would not fit into what other programs take from a clipboard.
constexpr int kTallestPicture = 16'000;
constexpr double kSidePadding = 6;

Drawing drawCells(const QTableView& view, const SpreadsheetModel& model, const CellBlock& block) {
    const FontTextMeasure measure(view.font(), view);
    const double lineHeight = measure.lineHeight(FontRole::Body), ascent = measure.ascent(FontRole::Body);
    const double headerHeight = view.horizontalHeader()->height();
    const double rowHeight = view.verticalHeader()->defaultSectionSize();
    const std::size_t rows = std::min(block.places.size(), static_cast<std::size_t>(kTallestPicture / rowHeight));
    const double bottom = headerHeight + static_cast<double>(rows) * rowHeight;
    double right = 0;
    for (const int column : block.columns)
        right += view.columnWidth(column);

    Drawing drawing;
    drawing.title = view.accessibleName().toStdString();
    drawing.size = {right + 1, bottom + 1};
    drawing.fontSize = measure.fontSize();
    drawing.commands.push_back(Rectangle{{0, 0, right + 1, bottom + 1}, ColourRole::Ground});
    drawing.commands.push_back(Rectangle{{0, 0, right + 1, headerHeight}, ColourRole::HeadingGround});
    // In the middle of their pixels.
    const auto rule = [&](Point from, Point to) {
        drawing.commands.push_back(Line{{from.x + 0.5, from.y + 0.5}, {to.x + 0.5, to.y + 0.5}});
    };
    double left = 0;
    for (const int column : block.columns) {
        const double width = view.columnWidth(column);
        const auto put = [&](const QString& text, double top, Anchor anchor) {
            std::string shown = elided(text.toStdString(), FontRole::Body, width - 2 * kSidePadding, measure);
            const double x = anchor == Anchor::Start ? left + kSidePadding
                             : anchor == Anchor::End ? left + width - kSidePadding
                                                     : left + width / 2;
            if (!shown.empty())
                drawing.commands.push_back(Text{{x, top + ascent}, std::move(shown), anchor});
        };
        const QStringList heading = model.headerData(column, Qt::Horizontal).toString().split(QLatin1Char('\n'));
        double top = (headerHeight - lineHeight * static_cast<double>(heading.size())) / 2;
        for (const QString& line : heading) {
            put(line, top, Anchor::Middle);
            top += lineHeight;
        }
        top = headerHeight + (rowHeight - lineHeight) / 2;
        for (std::size_t row = 0; row < rows; ++row) {
            put(model.text(block.places[row], column).replace(QLatin1Char('\n'), QLatin1Char(' ')), top,
                model.isFigure(column) ? Anchor::End : Anchor::Start);
            top += rowHeight;
        }
        rule({left, 0}, {left, bottom});
        left += width;
    }
    rule({right, 0}, {right, bottom});
    rule({0, 0}, {right, 0});
    for (std::size_t row = 0; row <= rows; ++row) {
        const double y = headerHeight + static_cast<double>(row) * rowHeight;
        rule({0, y}, {right, y});
    }
    return drawing;
}

} // namespace

CellBlock selectedBlock(const SpreadsheetView& view) {
    // From the ranges of the selection: all cells of a large table are one range, and a million indexes.
    std::map<int, int> cells; // how many of each place
    std::set<int> columns;
    for (const QItemSelectionRange& range : view.selectionModel()->selection()) {
        int width = 0;
        for (int column = range.left(); column <= range.right(); ++column)
            if (!view.isColumnHidden(column)) {
                columns.insert(view.horizontalHeader()->visualIndex(column));
                ++width;
            }
        for (int place = range.top(); place <= range.bottom(); ++place)
            cells.try_emplace(cells.end(), place)->second += width;
    }
    const int all = view.horizontalHeader()->count() - view.horizontalHeader()->hiddenSectionCount();
    CellBlock block;
    for (const auto& [place, width] : cells) {
        block.places.push_back(place);
        if (width == all)
            block.wholePlaces.push_back(place);
    }
    for (const int visual : columns)
        block.columns.push_back(view.horizontalHeader()->logicalIndex(visual));
    return block;
}

CellBlock blockToEdit(const SpreadsheetView& view, const SpreadsheetModel& model) {
    CellBlock block = selectedBlock(view);
    const int current = view.currentIndex().column();
    if (view.use() == SpreadsheetView::Use::Records && current >= 0 && model.isEditable(current))
        block.columns = {current};
    return block;
}

std::vector<int> shownColumns(const QTableView& view, int from) {
    const QHeaderView& header = *view.horizontalHeader();
    std::vector<int> columns;
    for (int place = from < 0 ? 0 : header.visualIndex(from); place < header.count(); ++place)
        if (const int column = header.logicalIndex(place); !header.isSectionHidden(column))
            columns.push_back(column);
    return columns;
}

QImage drawBitmap(const QTableView& view, const SpreadsheetModel& model, const CellBlock& block) {
    const Drawing drawing = drawCells(view, model, block);
    const QSizeF size = QSizeF(drawing.size.width, drawing.size.height) * view.devicePixelRatioF();
    QImage image(size.toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(view.devicePixelRatioF());
    QPainter painter(&image);
    paintDrawing(painter, drawing, kPaperPalette, view.font());
    return image;
}

QByteArray drawSvg(const QTableView& view, const SpreadsheetModel& model, const CellBlock& block) {
    return QByteArray::fromStdString(writeSvg(drawCells(view, model, block), kPaperPalette));
}

} // namespace quobrix
