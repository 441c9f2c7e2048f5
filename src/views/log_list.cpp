#include "views/log_list.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "model/record_filter.h"
#include "model/record_totals.h"
#include "tables/ui/cell_block.h"
#include "texts/text.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "views/filter_bar.h"
#include "views/record_commands.h"
#include "views/totals_line.h"

#include <QBoxLayout>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

// ms of a step of the filter, from which on it waits until a person has typed a word
constexpr qint64 kSlowStep = 50;

QString emptyText(const LogSpec& spec) {
    return QObject::tr("This file has no %1 yet.\n\nTo copy them from the Quobrix, select Quobrix / "
                       "Download Quobrix Data.")
        .arg(toQt(text(spec.records)));
}

/// Where there were records that can be brought back.
QString emptiedText(const LogSpec& spec) {
    return QObject::tr("This file has no %1 any more.\n\nUndo (Ctrl+Z) brings back what was deleted.")
        .arg(toQt(text(spec.records)));
}

} // namespace

LogList::LogList(const ViewContext& context, const LogSpec& spec, QWidget* parent)
    : TSpreadsheet(context.spreadsheet(), {spec.viewName("SummaryView"), toQt(text(spec.title)), emptyText(spec)},
                   parent),
      spec_(spec), context_(context), recordCommands_(new RecordCommands(*this, context, spec)),
      filter_(new FilterBar(context, spec)), totals_(new TotalsLine), update_(new QTimer(this)) {
    auto* lines = static_cast<QBoxLayout*>(layout());
    lines->insertWidget(0, filter_);
    lines->addWidget(totals_);
    filter_->hide();
    totals_->hide();
    setTabOrder(filter_->lastField(), &view());
    connect(filter_, &FilterBar::changed, this, &LogList::applyFilter);
    connect(filter_, &FilterBar::left, &view(), qOverload<>(&QWidget::setFocus));
    connect(this, &TSpreadsheet::filterLifted, this, [this] {
        filter_->clear();
        showCount();
    });
    update_->setSingleShot(true);
    connect(update_, &QTimer::timeout, this, &LogList::updateTotals);
    for (const auto signal : {&SpreadsheetModel::shownRowsChanged, &SpreadsheetModel::othersEdited})
        connect(&model(), signal, this, [this] { updateLater(true); });
    connect(&model(), &SpreadsheetModel::rowsEdited, this, [this] { updateLater(true); });
    connect(&model(), &QAbstractItemModel::modelReset, this, [this] { updateLater(true); });
    connect(&model(), &QAbstractItemModel::dataChanged, this, [this] { updateLater(true); });
    connect(&view(), &SpreadsheetView::selectionAltered, this, [this] { updateLater(false); });
    connect(this, &TSpreadsheet::currentRowChanged, this, [this] {
        if (const auto row = currentRow(); row && log_)
            current_ = spec_.keyOf(*log_, *row);
    });
}

void LogList::show(const Table* log) {
    std::vector<ShownColumn> columns;
    if (log)
        for (const PersistentType* type : spec_.listable(*log)) {
            const bool chosen = columns.size() >= spec_.summary.size();
            columns.push_back(
                {.column = &log->columnOf(*type), .hiddenAtFirst = chosen, .group = toQt(spec_.groupOf(*type))});
        }
    log_ = log;
    {
        const QSignalBlocker onlyOneChange(this);
        const bool sameRows = model().shows(columns);
        setColumns(std::move(columns));
        if (!sameRows && model().filtered())
            applyFilter();
        makeCurrent();
    }
    showCount();
    filter_->namesChanged();
    updateLater(true);
    emit currentRowChanged();
}

void LogList::filterBy(const DrivingChoice& choice) {
    filter_->want(choice.month ? nullptr : choice.period, rangeOf(choice, currentTime(), context_.zone), choice.vehicle,
                  choice.driver);
}

void LogList::openFilter() {
    if (!filter_->isHidden())
        filter_->open();
}

void LogList::applyFilter() {
    const RecordCriteria& criteria = filter_->criteria();
    QElapsedTimer time;
    time.start();
    RowFilter filter;
    if (criteria.any() && log_) {
        std::vector<const Column*> columns;
        for (const int column : shownColumns(view()))
            columns.push_back(&model().column(column));
        wanted_.assign(log_->rowCount(), false);
        for (const RowIndex row : findRecords(spec_, *log_, columns, criteria, context_.text()))
            wanted_[row] = true;
        filter = [this](RowIndex row) { return row >= wanted_.size() || wanted_[row]; };
    }
    if (!setFilter(std::move(filter)))
        return; // an entry that is refused has to be seen to first
    filter_->setSlow(time.elapsed() > kSlowStep);
    showCount();
}

void LogList::showCount() {
    const bool records = model().storedRows() > 0;
    hadRecords_ = hadRecords_ || records;
    view().setEmptyText(hadRecords_ && context_.document.edits().canUndo() ? emptiedText(spec_) : emptyText(spec_));
    filter_->setVisible(records);
    totals_->setVisible(records);
    filter_->setCount(static_cast<std::size_t>(model().rowCount()), model().storedRows());
    view().setAccessibleDescription(model().rowCount() == 0 ? view().emptyText() : QString());
}

void LogList::updateLater(bool shown) {
    shownChanged_ = shownChanged_ || shown;
    update_->start(0);
}

void LogList::updateTotals() {
    const Table* log = context_.document.log(spec_);
    if (!log)
        return;
    const auto totals = [&](std::vector<RowIndex> rows) {
        const TableRows records{log, std::move(rows)};
        return toQt(totalsText(spec_, {&records, 1}, context_.text()));
    };
    if (std::exchange(shownChanged_, false)) {
        if (model().storedRows() == 0 && filter_->criteria().any()) {
            filter_->clear();
            setFilter({});
        }
        showCount();
        filter_->namesChanged();
        const auto rows = model().rows();
        totals_->sayShown(totals({rows.begin(), rows.end()}));
    }
    const std::vector<RowIndex> selected = recordCommands_->selectedRows();
    totals_->saySelected(selected.empty() ? QString() : totals(selected));
}

void LogList::addToMenu(QMenu& menu, QAction* before) { recordCommands_->addTo(menu, before); }

void LogList::deleteSelection() {
    if (deletesRecords())
        deleteRows([this](const std::vector<RowIndex>& rows) { return recordCommands_->mayDelete(rows); });
    else
        TSpreadsheet::deleteSelection();
}

std::optional<Report> LogList::printable(const std::optional<RecordRange>& range) {
    Grid grid = shownCells(*this, range);
    if (grid.rows.empty())
        return {};
    return Report{text(spec_.title), {std::move(grid)}, true};
}

void LogList::makeCurrent() {
    const std::span<const RowIndex> rows = model().rows();
    if (rows.empty())
        return;
    std::optional<RowIndex> row = current_ ? spec_.rowOf(*log_, *current_) : std::nullopt;
    if (!row || !model().placeOf(*row))
        row = *std::ranges::max_element(rows);
    if (currentRow() != row)
        setCurrentRow(*row);
}

} // namespace quobrix
