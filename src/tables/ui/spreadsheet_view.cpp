#include "tables/ui/spreadsheet_view.h"

#include "tables/ui/spreadsheet_delegate.h"
#include "tables/ui/spreadsheet_model.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace quobrix {
namespace {

// Rows that are measured to find a column's first width.
constexpr int kMeasuredRows = 50;

} // namespace

SpreadsheetView::SpreadsheetView(SpreadsheetModel& model, Use use, QString emptyText, QWidget* parent)
    : QTableView(parent), model_(model), use_(use), emptyText_(std::move(emptyText)) {
    setModel(&model);
    setItemDelegate(new SpreadsheetDelegate(model, this));
    setSelectionBehavior(use == Use::Records ? SelectRows : SelectItems);
    setSelectionMode(ExtendedSelection);
    setAlternatingRowColors(use == Use::Records);
    setShowGrid(use == Use::Cells);
    setWordWrap(false);
    setTabKeyNavigation(false); // Tab leaves the list, the arrow keys move in it
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);
    QHeaderView& header = *horizontalHeader();
    header.setSectionsMovable(true);
    header.setHighlightSections(false);
    header.setStretchLastSection(true);
    header.setResizeContentsPrecision(0); // the headings' own texts only
    header.setSortIndicatorClearable(true);
    header.setSortIndicator(-1, Qt::AscendingOrder);
    setSortingEnabled(true);

    connect(this, &QTableView::doubleClicked, this, [this](const QModelIndex& cell) {
        if (use_ == Use::Records)
            emit rowActivated(model_.storedRow(cell.row()));
    });
}

SpreadsheetView::~SpreadsheetView() { setModel(nullptr); } // which ends before this base does

std::optional<RowIndex> SpreadsheetView::currentRow() const {
    const QModelIndex cell = currentIndex();
    return cell.isValid() ? std::optional(model_.storedRow(cell.row())) : std::nullopt;
}

int SpreadsheetView::sizeHintForColumn(int column) const {
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    int width = 0;
    for (int row = 0; row < std::min(model_.rowCount(), kMeasuredRows); ++row)
        width = std::max(width, itemDelegate()->sizeHint(option, model_.index(row, column)).width());
    return width;
}

void SpreadsheetView::keyPressEvent(QKeyEvent* event) {
    if (use_ == Use::Records && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        if (const auto row = currentRow())
            emit rowActivated(*row);
        return;
    }
    QTableView::keyPressEvent(event);
}

void SpreadsheetView::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (model_.rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(24, 24, -24, -24), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}

void SpreadsheetView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    if (current.row() != previous.row() || current.isValid() != previous.isValid())
        emit currentRowChanged();
}

} // namespace quobrix
