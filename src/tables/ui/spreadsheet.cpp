#include "tables/ui/spreadsheet.h"

#include "base/ui/qt_text.h"
#include "messages/prompter.h"
#include "tables/ui/cell_clipboard.h"
#include "tables/ui/cell_mark.h"
#include "tables/ui/column_chooser.h"
#include "tables/ui/find_bar.h"
#include "texts/text.h"
#include "ui/passing_menu.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QMimeData>
#include <QStatusTipEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <fmt/format.h>

#include <algorithm>

namespace quobrix {

TSpreadsheet::TSpreadsheet(const SpreadsheetContext& context, const SpreadsheetSpec& spec, QWidget* parent)
    : QWidget(parent), context_(context), model_(context.text, context.edits),
      view_(new SpreadsheetView(model_, spec.use, spec.emptyText, this)), commands_(new SpreadsheetCommands(*this)),
      layout_(context.settings, spec.name, *view_, model_), sortTimer_(new QTimer(this)) {
    setObjectName(toQt(spec.name));
    view_->setObjectName(toQt(spec.name) + QStringLiteral("Cells"));
    view_->setAccessibleName(spec.title);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(view_, 1);
    setFocusProxy(view_);
    addEditCommands();
    addSortCommands();
    addWindowCommands();

    sortTimer_->setSingleShot(true);
    sortTimer_->setInterval(0);
    connect(sortTimer_, &QTimer::timeout, this, [this] {
        sortLater_ = false;
        view_->sortAgain();
    });
    connect(view_, &SpreadsheetView::rowActivated, this, &TSpreadsheet::rowActivated);
    connect(view_, &SpreadsheetView::currentRowChanged, this, [this] {
        if (sortLater_)
            sortTimer_->start();
        emit currentRowChanged();
    });
    connect(view_, &SpreadsheetView::selectionAltered, commands_, &SpreadsheetCommands::refresh);
    connect(view_, &SpreadsheetView::menuRequested, this, &TSpreadsheet::showMenu);
    connect(view_, &SpreadsheetView::headingMenuRequested, this, &TSpreadsheet::showHeaderMenu);
    connect(view_, &SpreadsheetView::cutRefused, this, &TSpreadsheet::cut);
    connect(view_, &SpreadsheetView::deleteRefused, this, [this] {
        if (finishEdit())
            deleteSelection();
    });
    connect(&model_, &SpreadsheetModel::shownRowsChanged, this, [this] {
        commands_->refresh();
        emit orderChanged();
    });
    connect(&model_, &QAbstractItemModel::modelReset, commands_, &SpreadsheetCommands::refresh);
    connect(&model_, &SpreadsheetModel::firstRowsInserted, this, &TSpreadsheet::showFirstRows);
    connect(&model_, &SpreadsheetModel::rowsEdited, this, &TSpreadsheet::rowsEdited);
    connect(&model_, &SpreadsheetModel::othersEdited, this, [this] {
        if (layout_.restored()) // for names, which are not as long as the keys were
            layout_.fitToTexts();
        if (model_.sorted())
            sortTimer_->start();
    });
    connect(&model_, &SpreadsheetModel::editHistoryChanged, this, &TSpreadsheet::followHistory);
    followHistory();
}

TSpreadsheet::~TSpreadsheet() {
    layout_.remember();
    delete findBar_; // while view and model are there
    delete view_;
}

void TSpreadsheet::setColumns(std::vector<ShownColumn> columns, SpreadsheetModel::RowTitle rowTitle) {
    if (!rowTitle && model_.shows(columns))
        return model_.valuesChanged();
    view_->finishEdit();
    // A reset of the model takes widths and order of the columns with it only when their number changes.
    if (layout_.restored() && columns.size() != model_.columns().size()) {
        layout_.remember();
        layout_.forget();
    }
    view_->verticalHeader()->setVisible(rowTitle != nullptr || rowNumbers_);
    const Table* of = columns.empty() ? nullptr : columns.front().column->table();
    removable_ = of && of->spec().rows.removable && context_.edits && view_->use() == SpreadsheetView::Use::Records;
    model_.setColumns(std::move(columns), std::move(rowTitle));
    if (!layout_.restored() && model_.rowCount() > 0)
        return layout_.restore();
    if (!layout_.restored())
        layout_.hideUnchosen();
    layout_.fitToTexts();
}

bool TSpreadsheet::setFilter(RowFilter filter) {
    if (!finishEdit())
        return false;
    view_->setFilter(std::move(filter));
    restoreLayout();
    return true;
}

void TSpreadsheet::unitsChanged() {
    model_.valuesChanged();
    if (layout_.restored())
        layout_.fitToTexts();
}

void TSpreadsheet::restoreLayout() {
    if (!layout_.restored() && model_.rowCount() > 0)
        layout_.restore();
}

void TSpreadsheet::showFirstRows() {
    restoreLayout();
    view_->goTo(model_.index(0, shownColumns(*view_).front()));
}

void TSpreadsheet::setCurrentRow(RowIndex row) {
    // A person stays in the column; one that is out of view gives way to the leftmost that is in view, so that the list
    // does not scroll sideways.
    const QHeaderView& header = *view_->horizontalHeader();
    int column = view_->currentIndex().column();
    const int edge = view_->frozenWidth();
    const int left = column < 0 ? -1 : header.sectionViewportPosition(column);
    const bool frozen = edge > 0 && column == 0;
    if (!frozen && (left < edge || left >= view_->viewport()->width() || header.isSectionHidden(column))) {
        column = header.logicalIndexAt(edge + 1);
        const int begin = header.sectionViewportPosition(column);
        const int next = header.logicalIndexAt(begin + header.sectionSize(column) + 1);
        if (begin < edge && next >= 0) // of that one only the end is
            column = next;
    }
    setCurrentCell(row, std::max(0, column));
}

void TSpreadsheet::setCurrentCell(RowIndex row, int column) {
    if (row >= model_.storedRows())
        return;
    const bool hidden = !model_.placeOf(row);
    if (hidden && !setFilter({}))
        return;
    const QModelIndex cell = model_.index(*model_.placeOf(row), column);
    view_->goTo(cell);
    if (hidden) {
        view_->say(tr("The filter has been taken off, since it hid this row."), cell);
        emit filterLifted();
    }
}

void TSpreadsheet::showCell(std::string_view columnKey, RowIndex row) {
    const int column = model_.indexOf(columnKey);
    if (column < 0 || view_->isColumnHidden(column))
        setCurrentRow(row);
    else
        setCurrentCell(row, column);
}

std::optional<RowIndex> TSpreadsheet::neighbour(RowIndex row, int step) const {
    const auto place = model_.placeOf(row);
    const int other = place ? *place + step : -1;
    return other >= 0 && other < model_.rowCount() ? std::optional(model_.storedRow(other)) : std::nullopt;
}

const Table* TSpreadsheet::table() const {
    return model_.columns().empty() ? nullptr : model_.columns().front().column->table();
}

std::optional<CellSource> TSpreadsheet::currentSource() const {
    const QModelIndex cell = view_->currentIndex();
    if (!cell.isValid())
        return {};
    const Column& column = model_.column(cell.column());
    const RowIndex row = model_.storedRow(cell.row());
    return row < column.rowCount() ? column.sourceOf(row) : std::nullopt;
}

// What is told

void TSpreadsheet::tell(MessageOf<1> id, const std::string& why) {
    if (context_.prompter)
        context_.prompter->tell(makeMessage(id, why));
    else
        view_->say(toQt(why), view_->currentIndex());
}

void TSpreadsheet::report(const EditOutcome& outcome, MessageOf<1> refusal) {
    if (!outcome.ok())
        return tell(refusal, outcome.refusal);
    if (!outcome.notice.empty())
        tell(MessageId::RowLimit, outcome.notice);
}

// Commands

void TSpreadsheet::addEditCommands() {
    using enum SpreadsheetCommand;
    const auto editable = [this] { return model_.anyEditable() && model_.rowCount() > 0; };
    const auto selected = [this] { return view_->selectionModel()->hasSelection(); };
    commands_->handle(
        Copy, [this] { copy(); }, selected);
    commands_->handle(
        CopyMetafile, [this] { copyPicture(true); }, selected);
    commands_->handle(
        CopyBitmap, [this] { copyPicture(false); }, selected);
    commands_->handle(
        SelectAll, [this] { view_->selectAll(); }, [this] { return model_.rowCount() > 0; });
    commands_->handle(
        Cut, [this] { cut(); }, [this] { return canEmpty(blockToEdit(*view_, model_)); });
    commands_->handle(
        Paste, [this] { paste(); }, [this, editable] { return editable() || takesFirstRows(); });
    commands_->handle(
        Delete,
        [this] {
            if (finishEdit())
                deleteSelection();
        },
        [this] { return canDelete(); });
    commands_->handle(
        Undo, [this] { stepHistory(&TableEdits::undo); },
        [this] { return context_.edits && context_.edits->canUndo(); });
    commands_->handle(
        Redo, [this] { stepHistory(&TableEdits::redo); },
        [this] { return context_.edits && context_.edits->canRedo(); });
    for (const SpreadsheetCommand command : {Add, Insert, InsertAfter})
        commands_->ruleOut(command, tr("No entries can be added to this spreadsheet."));
}

void TSpreadsheet::addSortCommands() {
    using enum SpreadsheetCommand;
    const auto rows = [this] { return model_.rowCount() > 0; };
    const auto column = [this] { return view_->currentIndex().column(); };
    const auto cell = [this] { return view_->currentIndex().isValid(); };
    commands_->handle(
        SortUp, [this, column] { sortBy(column(), Qt::AscendingOrder); }, cell);
    commands_->handle(
        SortDown, [this, column] { sortBy(column(), Qt::DescendingOrder); }, cell);
    commands_->handle(
        StoredOrder, [this] { sortBy(-1, Qt::AscendingOrder); }, [this] { return model_.sorted(); });
    commands_->handle(
        FitWidth, [this, column] { view_->resizeColumnToContents(column()); }, cell);
    commands_->handle(
        Columns, [this] { chooseColumns(); }, rows);
    commands_->handle(
        Find, [this] { findBar().open(); }, rows);
    commands_->handle(
        FindNext, [this] { findBar().findNext(); }, rows);
    commands_->handle(
        FindPrevious, [this] { findBar().findPrevious(); }, rows);
}

void TSpreadsheet::addWindowCommands() {
    using enum SpreadsheetCommand;
    if (!context_.windows)
        return;
    const SpreadsheetWindows& windows = *context_.windows;
    const auto cell = [this] { return view_->currentIndex().isValid(); };
    const auto column = [this]() -> const Column& { return model_.column(view_->currentIndex().column()); };
    if (windows.source)
        commands_->handle(
            GoToSource,
            [this, &windows] {
                if (const auto source = currentSource(); source && finishEdit())
                    windows.source(*source);
            },
            [this] { return currentSource().has_value(); });
    if (windows.exported)
        commands_->handle(
            Export,
            [this, &windows] {
                if (finishEdit())
                    windows.exported(*this);
            },
            [this] { return model_.rowCount() > 0; });
    if (windows.requirements)
        commands_->handle(
            Requirements, [&windows, column] { windows.requirements(column()); }, cell);
    if (windows.errors)
        commands_->handle(
            Errors,
            [this, &windows] {
                if (const Table* shown = table(); shown && finishEdit())
                    windows.errors(*shown);
            },
            [this] { return !model_.columns().empty(); });
    if (windows.unitSystems)
        commands_->handle(UnitSystems, windows.unitSystems);
    if (windows.help)
        commands_->handle(
            Help, [&windows, column] { windows.help(column().spec().key); }, cell);
}

/// Records are copied as they are highlighted, but the cell of one in which a person writes by itself: so can it be
/// pasted into another.
void TSpreadsheet::copy() {
    if (!finishEdit())
        return;
    const CellBlock block = selectedBlock(*view_);
    copyCells(model_, block.places.size() == 1 ? blockToEdit(*view_, model_) : block, context_.text.units);
}

void TSpreadsheet::cut() {
    if (!finishEdit())
        return;
    const CellBlock block = blockToEdit(*view_, model_);
    if (canEmpty(block))
        copyCells(model_, block, context_.text.units);
    emptyCells(block, tr("cut").toStdString(), MessageId::CannotDelete);
}

void TSpreadsheet::copyPicture(bool drawing) {
    const CellBlock block = selectedBlock(*view_);
    auto* picture = new QMimeData;
    if (drawing)
        picture->setData(QStringLiteral("image/svg+xml"), drawSvg(*view_, model_, block));
    else
        picture->setImageData(drawBitmap(*view_, model_, block));
    QApplication::clipboard()->setMimeData(picture);
}

bool TSpreadsheet::takesFirstRows() const {
    return model_.rowCount() == 0 && model_.anyEditable() && table() && table()->spec().rows.editable;
}

void TSpreadsheet::paste() {
    if (!finishEdit())
        return;
    const CellBlock block = blockToEdit(*view_, model_);
    const std::optional<ClipboardCells> clipboard = cellsOnClipboard(context_.text.units);
    const bool asFirstRows = takesFirstRows();
    if ((block.empty() && !asFirstRows) || !clipboard || !table())
        return tell(MessageId::CannotPaste, text(kIncompatiblePaste));
    const TabbedText& cells = clipboard->texts;
    const bool one = cells.rows() == 1 && cells.columns() == 1 && !asFirstRows;
    const auto first = static_cast<std::size_t>(asFirstRows ? 0 : block.places.front());
    const std::size_t end = std::min(static_cast<std::size_t>(model_.rowCount()), first + cells.rows());
    std::vector<std::size_t> columns;
    std::vector<RowIndex> rows;
    for (const int column : one ? block.columns : shownColumns(*view_, asFirstRows ? -1 : block.columns.front()))
        columns.push_back(model_.tableColumn(column));
    if (one)
        for (const int place : block.places)
            rows.push_back(model_.storedRow(place));
    else
        for (std::size_t place = first; place < end; ++place)
            rows.push_back(model_.storedRow(static_cast<int>(place)));

    const TextContext form{*clipboard->form, context_.text.zone};
    EditOutcome outcome = editRows(tr("paste"), [&](const Table& of) {
        return one ? context_.edits->fill(of.id(), columns, rows, cells.cell(0, 0), form, tr("paste").toStdString())
                   : context_.edits->paste(of.id(), columns, rows, cells, form);
    });
    if (outcome.row != Finding::kNoRow) { // one cell of the clipboard does not fit: which, and why
        const std::string heading = plainHeading(table()->column(outcome.column).spec());
        outcome.refusal = ShownText::asItIs(text(kIncompatiblePaste) + "\n\n" +
                                            text(TextId::PasteRefusedAt, outcome.row + 1, heading, outcome.refusal));
    }
    report(outcome, MessageId::CannotPaste);
}

EditOutcome TSpreadsheet::editRows(const QString& description, const std::function<EditOutcome(const Table&)>& edit) {
    if (table()->store() || !makesTable())
        return edit(*table());
    return context_.edits->group(description.toStdString(), [&] {
        const Table* made = makeTable();
        return made ? edit(*made) : refused(text(TextId::CannotBeRead, text(table()->spec().title)));
    });
}

void TSpreadsheet::emptyCells(const CellBlock& block, std::string_view description, MessageOf<1> refusal) {
    if (!table() || !context_.edits)
        return;
    if (block.empty())
        return tell(refusal, cannotDelete(*table(), {}));
    std::vector<std::size_t> columns;
    std::vector<RowIndex> rows;
    for (const int column : block.columns) {
        if (!model_.isEditable(column))
            return tell(refusal, cannotDelete(*table(), {.otherCells = true, .onReadOnlyCell = true}));
        columns.push_back(model_.tableColumn(column));
    }
    for (const int place : block.places)
        rows.push_back(model_.storedRow(place));
    report(context_.edits->fill(table()->id(), columns, rows, {}, context_.text, description), refusal);
}

bool TSpreadsheet::canEmpty(const CellBlock& block) const {
    if (!table() || !context_.edits || block.empty() || !context_.edits->lockedBecause().empty())
        return false;
    return std::ranges::all_of(block.columns, [&](int shown) {
        const Column& column = model_.column(shown);
        const auto free = [&](int place) { return model_.lockedBecause(place, shown).isEmpty(); };
        return model_.isEditable(shown) && column.requirements().need != Need::Required &&
               column.parse({}, context_.text).ok() && std::ranges::all_of(block.places, free);
    });
}

DeleteSelection TSpreadsheet::selectionToDelete() const {
    DeleteSelection selection;
    const CellBlock block = blockToEdit(*view_, model_);
    for (const int place : block.wholePlaces)
        selection.wholeRows.push_back(model_.storedRow(place));
    selection.otherCells = block.wholePlaces.size() < block.places.size();
    if (selection.otherCells)
        for (const int column : block.columns)
            selection.onReadOnlyCell |= !model_.isEditable(column);
    return selection;
}

bool TSpreadsheet::canDeleteRows() const {
    return table() && context_.edits && context_.edits->lockedBecause().empty() &&
           cannotDelete(*table(), selectionToDelete()).empty();
}

void TSpreadsheet::deleteRows(const MayDelete& mayDelete) {
    const Table* shown = table();
    if (!shown || !context_.edits)
        return;
    DeleteSelection selection = selectionToDelete();
    if (std::string why = cannotDelete(*shown, selection); !why.empty())
        return tell(MessageId::CannotDelete, why);
    if (mayDelete && !mayDelete(selection.wholeRows))
        return;
    report(context_.edits->removeRows(shown->id(), std::move(selection.wholeRows)), MessageId::CannotDelete);
    if (view_->currentIndex().isValid() && !view_->selectionModel()->hasSelection())
        view_->goTo(view_->currentIndex());
}

/// Delete is about the records that are highlighted, and not about a cell of theirs in which a person writes.
bool TSpreadsheet::deletesRecords() const {
    const int current = view_->currentIndex().column();
    return removable_ && current >= 0 && !model_.isEditable(current);
}

bool TSpreadsheet::canDelete() const {
    if (!deletesRecords())
        return canEmpty(blockToEdit(*view_, model_));
    return view_->selectionModel()->hasSelection() && context_.edits->lockedBecause().empty();
}

void TSpreadsheet::deleteSelection() {
    if (deletesRecords())
        deleteRows();
    else
        emptyCells(blockToEdit(*view_, model_), tr("delete").toStdString(), MessageId::CannotDelete);
}

void TSpreadsheet::stepHistory(void (TableEdits::*step)()) {
    if (!finishEdit())
        return;
    lastEdited_.reset();
    (context_.edits->*step)();
    if (lastEdited_ && model_.placeOf(*lastEdited_))
        setCurrentCell(*lastEdited_, std::max(0, view_->currentIndex().column()));
}

void TSpreadsheet::followHistory() {
    commands_->refresh();
    if (!context_.edits)
        return;
    const auto tip = [this](SpreadsheetCommand command, const QString& words, std::string_view what) {
        commands_->describe(command, toQt(what));
        if (!what.empty())
            commands_->action(command).setStatusTip(words.arg(toQt(what)));
    };
    tip(SpreadsheetCommand::Undo, tr("Takes back %1."), context_.edits->undoDescription());
    tip(SpreadsheetCommand::Redo, tr("Makes again %1."), context_.edits->redoDescription());
}

// Order

FindBar& TSpreadsheet::findBar() {
    if (!findBar_) {
        findBar_ = new FindBar(*view_, model_, context_.text, this);
        static_cast<QBoxLayout*>(layout())->insertWidget(layout()->indexOf(view_) + 1, findBar_);
        connect(&model_, &QAbstractItemModel::modelReset, findBar_, &FindBar::cellsChanged);
        connect(&model_, &QAbstractItemModel::dataChanged, findBar_, &FindBar::cellsChanged);
        connect(&model_, &SpreadsheetModel::shownRowsChanged, findBar_, &FindBar::cellsChanged);
    }
    return *findBar_;
}

void TSpreadsheet::sortBy(int column, Qt::SortOrder order) {
    if (finishEdit())
        view_->sortByColumn(column, order);
}

void TSpreadsheet::rowsEdited(RowIndex row, std::size_t rows) {
    lastEdited_ = row;
    if (!model_.sorted())
        return;
    // A row must not run away while a person is in it: it is put in order when they leave it.
    const auto current = currentRow();
    if (current && *current >= row && *current < row + rows && isAncestorOf(QApplication::focusWidget()))
        sortLater_ = true;
    else
        sortTimer_->start();
}

void TSpreadsheet::chooseColumns() {
    if (finishEdit() && ColumnChooser(*view_, model_, this).exec() == QDialog::Accepted)
        layout_.fitToTexts(); // of those that were not shown before
}

// Menus

void TSpreadsheet::showMenu(const QPoint& position) {
    commands_->refresh();
    QMenu* menu = commands_->makeMenu(*this);
    addToMenu(*menu, menu->actions().constFirst());
    const QModelIndex cell = view_->currentIndex();
    if (const auto finding = cell.isValid() ? model_.mark(cell.row(), cell.column()) : std::nullopt) {
        const int size = fontMetrics().height();
        auto* why = new QAction(QIcon(markPixmap(finding->severity, size, devicePixelRatioF())),
                                toQt(finding->text).simplified().replace(QLatin1Char('&'), QLatin1String("&&")), menu);
        why->setObjectName(QStringLiteral("SpreadsheetFinding"));
        connect(why, &QAction::triggered, &commands_->action(SpreadsheetCommand::Requirements), &QAction::trigger);
        menu->insertAction(menu->actions().constFirst(), why);
        menu->insertSeparator(menu->actions().at(1));
    }
    menu->popup(position);
}

void TSpreadsheet::showHeaderMenu(int column, const QPoint& position) {
    QHeaderView& header = *view_->horizontalHeader();
    if (column < 0 || !finishEdit())
        return;
    auto* menu = new PassingMenu("SpreadsheetHeaderMenu", *this);
    menu->addAction(tr("Sort &Up"), this, [this, column] { sortBy(column, Qt::AscendingOrder); });
    menu->addAction(tr("Sort &Down"), this, [this, column] { sortBy(column, Qt::DescendingOrder); });
    menu->addAction(&commands_->action(SpreadsheetCommand::StoredOrder));
    menu->addSeparator();
    menu->addAction(tr("&Fit Width"), this, [this, column] { view_->resizeColumnToContents(column); });
    menu->addAction(tr("&Hide"), this, [&header, column] { header.hideSection(column); })
        ->setEnabled(header.count() - header.hiddenSectionCount() > 1);
    menu->addAction(&commands_->action(SpreadsheetCommand::Columns));
    menu->popup(position);
}

} // namespace quobrix
