#include "tables/ui/cell_clipboard.h"

#include "tables/ui/spreadsheet_model.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace quobrix {
namespace {

/// Cells as this program writes them for itself: figures are not rounded to what is shown.
const QString kExactCells = QStringLiteral("application/x-quobrix-cells");

template <class TextOf>
QByteArray blockText(const CellBlock& block, const TextOf& textOf) {
    TabbedText text(block.columns.size());
    for (const int place : block.places)
        for (const int column : block.columns)
            text.add(textOf(place, column).toStdString());
    return QByteArray::fromStdString(text.text());
}

} // namespace

void copyCells(const SpreadsheetModel& model, const CellBlock& block) {
    auto* data = new QMimeData;
    data->setText(
        QString::fromUtf8(blockText(block, [&](int place, int column) { return model.text(place, column); })));
    data->setData(kExactCells, blockText(block, [&](int place, int column) { return model.exactText(place, column); }));
    QGuiApplication::clipboard()->setMimeData(data);
}

std::optional<TabbedText> cellsOnClipboard() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data)
        return {};
    const QByteArray bytes = data->hasFormat(kExactCells) ? data->data(kExactCells) : data->text().toUtf8();
    return TabbedText::parse({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

} // namespace quobrix
