#include "tables/ui/cell_block.h"

#include "tables/ui/spreadsheet_model.h"
#include "tables/ui/spreadsheet_view.h"

#include <QBuffer>
#include <QHeaderView>
#include <QImage>
#include <QPainter>
#include <QSvgGenerator>

#include <algorithm>
#include <map>
#include <set>

namespace quobrix {
namespace {

// A bitmap of more rows would not fit into what other programs take from a clipboard.
constexpr int kTallestPicture = 16'000;
constexpr int kSidePadding = 6;

/// The measures of a block as it is drawn.
struct Drawing {
    const QTableView& view;
    const SpreadsheetModel& model;
    const CellBlock& block;

    int rowHeight() const { return view.verticalHeader()->defaultSectionSize(); }
    int headerHeight() const { return view.horizontalHeader()->height(); }
    std::size_t rows() const {
        return std::min(block.places.size(), static_cast<std::size_t>(kTallestPicture / rowHeight()));
    }
    QSize size() const {
        int width = 1;
        for (const int column : block.columns)
            width += view.columnWidth(column);
        return {width, headerHeight() + static_cast<int>(rows()) * rowHeight() + 1};
    }
    void draw(QPainter& painter) const;
};

void Drawing::draw(QPainter& painter) const {
    const QSize whole = size();
    const QColor line(0xc0, 0xc4, 0xc8);
    painter.setFont(view.font());
    painter.fillRect(QRect(QPoint(), whole), Qt::white);
    painter.fillRect(QRect(0, 0, whole.width(), headerHeight()), QColor(0xee, 0xf0, 0xf2));
    int x = 0;
    for (const int column : block.columns) {
        const int width = view.columnWidth(column);
        const auto cell = [&](int top, int height) {
            return QRect(x + kSidePadding, top, width - 2 * kSidePadding, height);
        };
        painter.setPen(Qt::black);
        painter.drawText(cell(0, headerHeight()), Qt::AlignCenter, model.headerData(column, Qt::Horizontal).toString());
        const int right = model.isFigure(column) ? Qt::AlignRight : Qt::AlignLeft;
        for (std::size_t row = 0; row < rows(); ++row) {
            const QRect area = cell(headerHeight() + static_cast<int>(row) * rowHeight(), rowHeight());
            const QString text = model.text(block.places[row], column).replace(QLatin1Char('\n'), QLatin1Char(' '));
            painter.drawText(area, right | Qt::AlignVCenter | Qt::TextSingleLine,
                             painter.fontMetrics().elidedText(text, Qt::ElideRight, area.width()));
        }
        painter.setPen(line);
        painter.drawLine(x, 0, x, whole.height() - 1);
        x += width;
    }
    painter.setPen(line);
    painter.drawLine(x, 0, x, whole.height() - 1);
    painter.drawLine(0, 0, x, 0);
    for (std::size_t row = 0; row <= rows(); ++row) {
        const int y = headerHeight() + static_cast<int>(row) * rowHeight();
        painter.drawLine(0, y, x, y);
    }
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
    const Drawing drawing{view, model, block};
    QImage image(drawing.size() * view.devicePixelRatioF(), QImage::Format_RGB32);
    image.setDevicePixelRatio(view.devicePixelRatioF());
    QPainter painter(&image);
    drawing.draw(painter);
    return image;
}

QByteArray drawSvg(const QTableView& view, const SpreadsheetModel& model, const CellBlock& block) {
    const Drawing drawing{view, model, block};
    QBuffer buffer;
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setResolution(view.logicalDpiX());
    generator.setSize(drawing.size());
    generator.setViewBox(QRect(QPoint(), drawing.size()));
    generator.setTitle(view.accessibleName());
    QPainter painter(&generator);
    drawing.draw(painter);
    painter.end();
    return buffer.data();
}

} // namespace quobrix
