#include "tables/ui/frozen_column.h"

#include "tables/ui/spreadsheet_delegate.h"
#include "tables/ui/spreadsheet_model.h"
#include "tables/ui/spreadsheet_view.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QScrollBar>

namespace quobrix {

FrozenColumn::FrozenColumn(SpreadsheetView& list, SpreadsheetModel& model)
    : QTableView(&list), list_(list), model_(model), edge_(new QWidget(this)) {
    setObjectName(QStringLiteral("frozenColumn"));
    setModel(&model);
    QItemSelectionModel* own = selectionModel();
    setSelectionModel(list.selectionModel());
    delete own;
    auto* delegate = new SpreadsheetDelegate(model, false, this);
    delegate->setCurrentMarked([this] { return list_.hasFocus() || list_.marksCurrent(); });
    setItemDelegate(delegate);
    setFocusPolicy(Qt::NoFocus);
    setFrameStyle(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(list.selectionBehavior());
    setSelectionMode(list.selectionMode());
    setAlternatingRowColors(list.alternatingRowColors());
    setShowGrid(list.showGrid());
    setWordWrap(false);
    setAutoScroll(false);
    setMouseTracking(true);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(list.verticalHeader()->defaultSectionSize());
    QHeaderView& header = *horizontalHeader();
    const QHeaderView& listHeader = *list.horizontalHeader();
    header.setHighlightSections(false);
    header.setSectionsClickable(true);
    header.setMinimumSectionSize(listHeader.minimumSectionSize());
    header.setContextMenuPolicy(Qt::CustomContextMenu);
    hideOthers();
    edge_->setBackgroundRole(QPalette::Mid);
    edge_->setAutoFillBackground(true);

    const auto showSorting = [&header, &listHeader] {
        header.setSortIndicatorShown(listHeader.sortIndicatorSection() == 0);
        header.setSortIndicator(0, listHeader.sortIndicatorOrder());
    };
    showSorting();
    connect(&listHeader, &QHeaderView::sortIndicatorChanged, this, showSorting);
    connect(&model, &QAbstractItemModel::modelReset, this, &FrozenColumn::hideOthers);
    connect(&header, &QHeaderView::sectionClicked, this, &FrozenColumn::headingClicked);
    connect(&header, &QHeaderView::sectionResized, this, [this](int column, int, int width) {
        if (column == 0 && width > 0)
            list_.setColumnWidth(0, width);
    });
    connect(&header, &QWidget::customContextMenuRequested, this, [this, &header](const QPoint& position) {
        emit headingMenuRequested(header.viewport()->mapToGlobal(position));
    });
    connect(list.verticalScrollBar(), &QScrollBar::valueChanged, verticalScrollBar(), &QScrollBar::setValue);
}

void FrozenColumn::hideOthers() {
    for (int column = 1; column < model_.columnCount(); ++column)
        setColumnHidden(column, true);
}

void FrozenColumn::follow() {
    const QRect cells = list_.viewport()->geometry();
    const int heading = list_.horizontalHeader()->height();
    horizontalHeader()->setFixedHeight(heading);
    setColumnWidth(0, list_.columnWidth(0));
    setGeometry(cells.left(), cells.top() - heading, list_.columnWidth(0), heading + cells.height());
    edge_->setGeometry(width() - 1, 0, 1, height());
    edge_->raise();
    show();
    raise();
    updateGeometries(); // or the range to scroll in may be an old one
    verticalScrollBar()->setValue(list_.verticalScrollBar()->value());
}

void FrozenColumn::mousePressEvent(QMouseEvent* event) {
    list_.setFocus(Qt::MouseFocusReason);
    if (list_.finishEdit())
        QTableView::mousePressEvent(event);
}

void FrozenColumn::mouseDoubleClickEvent(QMouseEvent* event) {
    const QModelIndex cell = indexAt(event->position().toPoint());
    if (cell.isValid() && event->button() == Qt::LeftButton)
        emit list_.rowActivated(model_.storedRow(cell.row()));
}

void FrozenColumn::contextMenuEvent(QContextMenuEvent* event) { emit list_.menuRequested(event->globalPos()); }

void FrozenColumn::wheelEvent(QWheelEvent* event) { QApplication::sendEvent(list_.viewport(), event); }

} // namespace quobrix
