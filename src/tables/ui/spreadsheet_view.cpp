#include "tables/ui/spreadsheet_view.h"

#include "base/ui/qt_text.h"
#include "tables/ui/cell_block.h"
#include "tables/ui/cell_editor.h"
#include "tables/ui/cell_note.h"
#include "tables/ui/frozen_column.h"
#include "tables/ui/spreadsheet_delegate.h"
#include "tables/ui/spreadsheet_model.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStatusTipEvent>
#include <QTimer>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace quobrix {
namespace {

// Rows that are measured to find a column's first width.
constexpr int kMeasuredRows = 50;

/// The widths of a text's characters added up, without what their neighbours make of them. To measure the text itself
/// takes many times as long.
class RoughWidth {
public:
    explicit RoughWidth(const QFontMetrics& metrics) : metrics_(metrics) {}

    int of(const QString& text) {
        int width = 0;
        for (const QChar character : text) {
            const auto [known, isNew] = widths_.try_emplace(character.unicode());
            if (isNew)
                known->second = metrics_.horizontalAdvance(character);
            width += known->second;
        }
        return width;
    }

private:
    QFontMetrics metrics_;
    std::unordered_map<char16_t, int> widths_;
};

bool isEnter(const QKeyEvent& event) { return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter; }

} // namespace

SpreadsheetView::SpreadsheetView(SpreadsheetModel& model, Use use, QString emptyText, QWidget* parent)
    : QTableView(parent), model_(model), use_(use), emptyText_(std::move(emptyText)), note_(new CellNote(viewport())) {
    setModel(&model);
    auto* delegate = new SpreadsheetDelegate(model, use == Use::Cells, this);
    setItemDelegate(delegate);
    delegate->setCurrentMarked([this] { return marksCurrent_; });
    connect(delegate, &SpreadsheetDelegate::leaveRequested, this, &SpreadsheetView::leaveEditor);
    setSelectionBehavior(use == Use::Records ? SelectRows : SelectItems);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
    setAlternatingRowColors(use == Use::Records);
    setShowGrid(use == Use::Cells);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setMouseTracking(true); // for the status tips of the cells
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);
    QHeaderView& header = *horizontalHeader();
    header.setSectionsMovable(true);
    header.setHighlightSections(false);
    header.setResizeContentsPrecision(0); // the headings' own texts only
    header.setSortIndicatorClearable(true);
    header.setSortIndicator(-1, Qt::AscendingOrder);
    header.viewport()->installEventFilter(this);
    header.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&header, &QWidget::customContextMenuRequested, this, [this, &header](const QPoint& position) {
        emit headingMenuRequested(header.logicalIndexAt(position), header.viewport()->mapToGlobal(position));
    });
    for (const auto signal : {&QHeaderView::sectionResized, &QHeaderView::sectionMoved})
        connect(&header, signal, this, &SpreadsheetView::placeFrozen);
    setSortingEnabled(true);
    connect(&header, &QHeaderView::sortIndicatorChanged, this, &SpreadsheetView::showCurrentRow); // once it is sorted
    // What assistive technology reads of a cell is kept by row and column, and the toolkit forgets to move it along.
    connect(&model, &QAbstractItemModel::layoutChanged, this, [this] {
        QAccessibleTableModelChangeEvent moved(this, QAccessibleTableModelChangeEvent::ModelReset);
        if (QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(this))
            read->tableInterface()->modelChange(&moved);
    });
}

SpreadsheetView::~SpreadsheetView() {
    delete frozen_;
    frozen_ = nullptr;
    setModel(nullptr); // which ends before this base does
}

std::optional<RowIndex> SpreadsheetView::currentRow() const {
    const QModelIndex cell = currentIndex();
    const RowIndex row = cell.isValid() ? model_.storedRow(cell.row()) : ShownRows::kGone;
    return row == ShownRows::kGone ? std::nullopt : std::optional(row);
}

void SpreadsheetView::goTo(const QModelIndex& cell) {
    const auto rows = use_ == Use::Records ? QItemSelectionModel::Rows : QItemSelectionModel::NoUpdate;
    selectionModel()->setCurrentIndex(cell, QItemSelectionModel::ClearAndSelect | rows);
    executeDelayedItemsLayout();
    scrollTo(cell);
}

void SpreadsheetView::showCurrentRow() {
    executeDelayedItemsLayout(); // else the scroll bar knows only the rows that were there before
    QScrollBar& sideways = *horizontalScrollBar();
    const int before = sideways.value();
    if (currentIndex().isValid())
        scrollTo(currentIndex());
    sideways.setValue(before);
}

int SpreadsheetView::sizeHintForColumn(int column) const {
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    RoughWidth roughWidth(option.fontMetrics);
    int widest = -1;
    int rowOfWidest = -1;
    for (int row = 0; row < std::min(model_.rowCount(), kMeasuredRows); ++row)
        if (const int width = roughWidth.of(model_.text(row, column)); width > widest) {
            widest = width;
            rowOfWidest = row;
        }
    return rowOfWidest < 0 ? 0 : itemDelegate()->sizeHint(option, model_.index(rowOfWidest, column)).width();
}

// Editing. The base class opens and closes editors; whether a value is taken is decided here.

QWidget* SpreadsheetView::editor() const { return edited_.isValid() ? indexWidget(edited_) : nullptr; }

bool SpreadsheetView::edit(const QModelIndex& cell, EditTrigger trigger, QEvent* event) {
    const bool wanted =
        (editTriggers() & trigger) && trigger != NoEditTriggers && cell.isValid() && model_.isEditable(cell.column());
    if (!wanted || isEditing())
        return QTableView::edit(cell, trigger, event);
    if (trigger == AnyKeyPressed) { // which asks for every key
        const auto* key = dynamic_cast<const QKeyEvent*>(event);
        const QString text = key ? key->text() : QString();
        if (text.isEmpty() || !text.front().isPrint() || model_.isCheckBox(cell.column()))
            return false;
    }
    if (const QString reason = model_.lockedBecause(cell.row(), cell.column()); !reason.isEmpty()) {
        say(reason, cell);
        return true;
    }
    edited_ = cell;
    accepted_ = false;
    const bool opened = QTableView::edit(cell, trigger, event);
    if (auto* list = qobject_cast<QComboBox*>(editor()); list && trigger != AnyKeyPressed)
        QTimer::singleShot(0, list, &QComboBox::showPopup);
    if (QWidget* widget = editor())
        whenEdited(*widget, note_, [this] {
            accepted_ = false;
            note_->hide();
        });
    return opened;
}

EditOutcome SpreadsheetView::commit() {
    QWidget* const widget = editor();
    const QModelIndex cell = edited_;
    if (!widget || accepted_)
        return {};
    EditOutcome outcome = model_.type(cell.row(), cell.column(), editorText(*widget));
    accepted_ = outcome.ok();
    if (accepted_)
        note_->hide();
    else
        say(toQt(outcome.refusal), cell);
    return outcome;
}

void SpreadsheetView::commitData(QWidget* widget) {
    if (widget == editor())
        commit();
}

void SpreadsheetView::closeEditor(QWidget* widget, QAbstractItemDelegate::EndEditHint hint) {
    const bool given = hint == QAbstractItemDelegate::RevertModelCache;
    if (widget == editor() && !given && !accepted_)
        return;
    note_->hide();
    edited_ = QPersistentModelIndex();
    QTableView::closeEditor(widget, QAbstractItemDelegate::NoHint);
}

bool SpreadsheetView::finishEdit() {
    QWidget* const widget = editor();
    if (!widget)
        return true;
    if (const EditOutcome outcome = commit(); !outcome.ok()) {
        scrollTo(edited_);
        widget->setFocus();
        emit entryRefused(outcome);
        return false;
    }
    closeEditor(widget, QAbstractItemDelegate::NoHint);
    return true;
}

void SpreadsheetView::leaveEditor(int rowStep, int columnStep) {
    if (finishEdit())
        moveBy(rowStep, columnStep);
}

void SpreadsheetView::toggle(const QModelIndex& cell) {
    if (const QString reason = model_.lockedBecause(cell.row(), cell.column()); !reason.isEmpty())
        return say(reason, cell);
    const bool checked = model_.isChecked(cell.row(), cell.column());
    const EditOutcome outcome =
        model_.type(cell.row(), cell.column(), checked ? QStringLiteral("No") : QStringLiteral("Yes"));
    if (!outcome.ok())
        say(toQt(outcome.refusal), cell);
}

void SpreadsheetView::reset() {
    edited_ = QPersistentModelIndex();
    rowBeforeFilter_.reset();
    note_->hide();
    QTableView::reset();
}

// What is said of cells

void SpreadsheetView::say(const QString& text, const QModelIndex& cell) {
    scrollTo(cell);
    note_->show(text, visualRect(cell));
    hinted_ = false;
    QStatusTipEvent tip(text.simplified());
    QApplication::sendEvent(this, &tip);
}

QString SpreadsheetView::note() const { return note_->text(); }

void SpreadsheetView::showStatus(const QModelIndex& cell) {
    if (!hasFocus() && !marksCurrent_) // or that of finding
        return;
    hinted_ = true;
    QStatusTipEvent tip(model_.data(cell, Qt::StatusTipRole).toString());
    QApplication::sendEvent(this, &tip);
}

// The first column

/// A list of records that is scrolled sideways keeps its first column in sight, unless a person has put it elsewhere.
bool SpreadsheetView::wantsFrozen() const {
    return use_ == Use::Records && horizontalScrollBar()->value() > 0 && horizontalHeader()->visualIndex(0) == 0 &&
           !isColumnHidden(0) && columnWidth(0) < viewport()->width() / 2;
}

void SpreadsheetView::placeFrozen() {
    if (!frozen_ || frozenHeld_)
        return;
    if (wantsFrozen())
        frozen_->follow();
    else
        frozen_->hide();
}

/// As a click on any heading does: upward, downward, not at all.
void SpreadsheetView::sortByFrozen() {
    if (!finishEdit())
        return;
    const QHeaderView& header = *horizontalHeader();
    if (header.sortIndicatorSection() != 0)
        sortByColumn(0, Qt::AscendingOrder);
    else if (header.sortIndicatorOrder() == Qt::AscendingOrder)
        sortByColumn(0, Qt::DescendingOrder);
    else
        sortByColumn(-1, Qt::AscendingOrder);
}

int SpreadsheetView::frozenWidth() const { return frozen_ && !frozen_->isHidden() ? frozen_->width() : 0; }

void SpreadsheetView::updateGeometries() {
    QTableView::updateGeometries();
    placeFrozen();
}

void SpreadsheetView::scrollTo(const QModelIndex& cell, ScrollHint hint) {
    QScrollBar& sideways = *horizontalScrollBar();
    const int before = sideways.value();
    if (frozenWidth() > 0 && cell.column() == 0) { // which is in sight; the list scrolls up and down only
        const QScopedValueRollback held(frozenHeld_, true);
        QTableView::scrollTo(cell, hint);
        sideways.setValue(before);
        return;
    }
    QTableView::scrollTo(cell, hint);
    if (const int covered = frozenWidth() - visualRect(cell).left(); covered > 0 && frozenWidth() > 0)
        sideways.setValue(sideways.value() - covered);
}

void SpreadsheetView::markCurrent(bool marked) {
    marksCurrent_ = marked;
    update(currentIndex());
    if (frozen_)
        frozen_->viewport()->update();
}

// Moving

void SpreadsheetView::sortAgain() {
    const auto row = currentRow();
    const int before = currentIndex().row();
    model_.sortAgain();
    if (row) // scrolled by rows: as many as it has moved
        verticalScrollBar()->setValue(verticalScrollBar()->value() + currentIndex().row() - before);
}

void SpreadsheetView::setFilter(RowFilter filter) {
    if (const auto row = currentRow()) {
        rowBeforeFilter_ = row;
        const auto goes = [&](int place) { return filter && !filter(model_.storedRow(place)); };
        const int here = currentIndex().row();
        int place = here;
        while (place < model_.rowCount() && goes(place))
            ++place;
        if (place == model_.rowCount())
            for (place = here - 1; place >= 0 && goes(place);)
                --place;
        if (place >= 0 && place != here)
            selectionModel()->setCurrentIndex(model_.index(place, currentIndex().column()),
                                              QItemSelectionModel::NoUpdate);
    }
    model_.setFilter(std::move(filter));
    if (model_.rowCount() == 0)
        return;
    if (rowBeforeFilter_ && !currentIndex().isValid())
        goTo(model_.index(model_.placeOf(*rowBeforeFilter_).value_or(0), shownColumns(*this).front()));
    else if (currentIndex().isValid() && !selectionModel()->hasSelection())
        goTo(currentIndex());
    else
        showCurrentRow();
}

bool SpreadsheetView::moveBy(int rowStep, int columnStep) {
    const QHeaderView& header = *horizontalHeader();
    int row = currentIndex().row() + rowStep;
    int visual = header.visualIndex(currentIndex().column());
    while (columnStep != 0) { // to the next cell for editing, over the ends of rows
        visual += columnStep;
        if (visual < 0 || visual >= header.count()) {
            row += columnStep;
            visual = columnStep > 0 ? 0 : header.count() - 1;
            if (row < 0 || row >= model_.rowCount())
                return false;
        }
        const int column = header.logicalIndex(visual);
        if (!header.isSectionHidden(column) && model_.isEditable(column))
            break;
    }
    if (row < 0 || row >= model_.rowCount())
        return false;
    goTo(model_.index(row, header.logicalIndex(visual)));
    return true;
}

bool SpreadsheetView::focusNextPrevChild(bool next) {
    if (use_ == Use::Cells && model_.anyEditable() && currentIndex().isValid() && moveBy(0, next ? 1 : -1))
        return true;
    return QAbstractScrollArea::focusNextPrevChild(next);
}

void SpreadsheetView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    note_->hide();
    showStatus(current);
    emit selectionAltered();
    if (current.row() != previous.row() || current.isValid() != previous.isValid())
        emit currentRowChanged();
}

void SpreadsheetView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTableView::selectionChanged(selected, deselected);
    emit selectionAltered();
}

void SpreadsheetView::scrollContentsBy(int dx, int dy) {
    QTableView::scrollContentsBy(dx, dy);
    if (dx != 0 && !frozen_ && wantsFrozen()) {
        frozen_ = new FrozenColumn(*this, model_);
        connect(frozen_, &FrozenColumn::headingClicked, this, &SpreadsheetView::sortByFrozen);
        connect(frozen_, &FrozenColumn::headingMenuRequested, this,
                [this](const QPoint& position) { emit headingMenuRequested(0, position); });
    }
    if (dx != 0)
        placeFrozen();
    if (!isEditing())
        note_->hide();
    else if (note_->isVisible())
        note_->show(note_->text(), visualRect(edited_));
}

// Keys and mouse

void SpreadsheetView::focusInEvent(QFocusEvent* event) {
    QTableView::focusInEvent(event);
    if (QWidget* const widget = editor()) // one that is still open when its window becomes active again
        widget->setFocus(event->reason());
    if (frozen_)
        frozen_->viewport()->update();
}

void SpreadsheetView::focusOutEvent(QFocusEvent* event) {
    QTableView::focusOutEvent(event);
    if (frozen_)
        frozen_->viewport()->update();
    const bool passing = event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason;
    if (!passing && std::exchange(hinted_, false)) {
        QStatusTipEvent nothing{QString()}; // the cell may be out of view
        QApplication::sendEvent(this, &nothing);
    }
}

void SpreadsheetView::keyPressEvent(QKeyEvent* event) {
    const QModelIndex cell = currentIndex();
    const bool shift = event->modifiers().testFlag(Qt::ShiftModifier);
    const bool control = event->modifiers().testFlag(Qt::ControlModifier);
    if (isEnter(*event)) {
        if (use_ == Use::Cells)
            moveBy(shift ? -1 : 1, 0);
        else if (const auto row = currentRow())
            emit rowActivated(*row);
    } else if (event->key() == Qt::Key_Space && shift && cell.isValid()) {
        selectionModel()->select(cell, QItemSelectionModel::Rows | QItemSelectionModel::Select);
    } else if (event->key() == Qt::Key_Space && control && cell.isValid() && use_ == Use::Cells) {
        selectionModel()->select(cell, QItemSelectionModel::Columns | QItemSelectionModel::Select);
    } else if (event->key() == Qt::Key_Space && cell.isValid() && model_.isCheckBox(cell.column())) {
        toggle(cell);
    } else if (event->key() == Qt::Key_Tab && control) {
        QAbstractScrollArea::focusNextPrevChild(true);
    } else if (event->key() == Qt::Key_Backtab && control) {
        QAbstractScrollArea::focusNextPrevChild(false);
    } else if (event->key() == Qt::Key_F10 && shift) { // which not every system makes a context menu of
        requestMenu({});
    } else if (event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier) {
        emit deleteRefused(); // while the command is available, it takes the key
    } else if (event->key() == Qt::Key_X && event->modifiers() == Qt::ControlModifier) {
        emit cutRefused();
    } else if (event->key() == Qt::Key_Backspace && cell.isValid()) {
        if (edit(cell, EditKeyPressed, event) && isEditing())
            clearEditor(*editor());
    } else {
        QTableView::keyPressEvent(event);
        if (event->key() == Qt::Key_Home) // the first column need not be scrolled to
            horizontalScrollBar()->setValue(0);
    }
}

QModelIndex SpreadsheetView::checkBoxAt(const QMouseEvent& event) const {
    const QModelIndex cell = indexAt(event.position().toPoint());
    if (!cell.isValid() || event.button() != Qt::LeftButton || !model_.isCheckBox(cell.column()))
        return {};
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(cell);
    return SpreadsheetDelegate::checkBoxRect(option).contains(event.position().toPoint()) ? cell : QModelIndex();
}

void SpreadsheetView::mousePressEvent(QMouseEvent* event) {
    if (!finishEdit())
        return;
    note_->hide();
    QTableView::mousePressEvent(event);
    pressedBox_ = checkBoxAt(*event);
}

void SpreadsheetView::mouseReleaseEvent(QMouseEvent* event) {
    QTableView::mouseReleaseEvent(event);
    const QPersistentModelIndex pressed = std::exchange(pressedBox_, QPersistentModelIndex());
    if (pressed.isValid() && checkBoxAt(*event) == pressed)
        toggle(pressed);
}

void SpreadsheetView::mouseDoubleClickEvent(QMouseEvent* event) {
    QTableView::mouseDoubleClickEvent(event);
    pressedBox_ = checkBoxAt(*event); // a second click on a box is another one
    const QModelIndex cell = indexAt(event->position().toPoint());
    if (use_ == Use::Records && cell.isValid() && !model_.isEditable(cell.column()) &&
        event->button() == Qt::LeftButton)
        emit rowActivated(model_.storedRow(cell.row()));
}

bool SpreadsheetView::eventFilter(QObject* object, QEvent* event) {
    // A click on a heading sorts; with Ctrl it selects the column.
    const bool click = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease;
    if (object == horizontalHeader()->viewport() && click) {
        const auto& mouse = *static_cast<QMouseEvent*>(event);
        if (!finishEdit())
            return true;
        if (use_ == Use::Cells && mouse.button() == Qt::LeftButton && mouse.modifiers() == Qt::ControlModifier) {
            const int column = horizontalHeader()->logicalIndexAt(mouse.position().toPoint());
            if (event->type() == QEvent::MouseButtonPress && column >= 0) {
                const bool selected = selectionModel()->isColumnSelected(column);
                selectionModel()->select(model_.index(0, column),
                                         (selected ? QItemSelectionModel::Deselect : QItemSelectionModel::Select) |
                                             QItemSelectionModel::Columns);
            }
            return true;
        }
    }
    return QTableView::eventFilter(object, event);
}

void SpreadsheetView::contextMenuEvent(QContextMenuEvent* event) {
    const bool fromKeyboard = event->reason() == QContextMenuEvent::Keyboard;
    if (!QApplication::activePopupWidget()) // some systems send a key and this event for it
        requestMenu(fromKeyboard ? std::nullopt : std::optional(event->pos()));
}

void SpreadsheetView::requestMenu(std::optional<QPoint> position) {
    if (!finishEdit())
        return;
    if (!position) { // from the keyboard: for the current cell
        scrollTo(currentIndex());
        position = currentIndex().isValid() ? visualRect(currentIndex()).center() : QPoint();
    }
    emit menuRequested(viewport()->mapToGlobal(*position));
}

void SpreadsheetView::setEmptyText(const QString& text) {
    emptyText_ = text;
    viewport()->update();
}

void SpreadsheetView::resizeEvent(QResizeEvent* event) {
    const QModelIndex cell = currentIndex();
    const QRect row = visualRect(cell);
    // One whose end is below the edge was gone to before there was a scroll bar.
    const bool seen = cell.isValid() && row.top() >= 0 && row.top() < std::max(event->oldSize().height(), 1);
    QTableView::resizeEvent(event);
    if (seen || !isVisible())
        showCurrentRow();
}

void SpreadsheetView::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (model_.rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(24, 24, -24, -24), Qt::AlignCenter | Qt::TextWordWrap, emptyText());
}

QString SpreadsheetView::emptyText() const {
    return model_.storedRows() > 0 ? tr("The filter shows none of the rows.\n\nShow All takes it off.") : emptyText_;
}

} // namespace quobrix
