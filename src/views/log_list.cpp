#include "views/log_list.h"

#include "base/ui/qt_text.h"
#include "views/record_commands.h"

#include <algorithm>

namespace quobrix {
namespace {

QString emptyText(const LogSpec& spec) {
    return QObject::tr("This spreadsheet is currently empty.\n\nIt will normally display a list of all %1\nthat have "
                       "been downloaded into this file.\n\nTo copy them from the Quobrix, select Quobrix / "
                       "Download Quobrix Data.")
        .arg(toQt(text(spec.records)));
}

} // namespace

LogList::LogList(const ViewContext& context, const LogSpec& spec, QWidget* parent)
    : TSpreadsheet(context.spreadsheet(), {spec.viewName("SummaryView"), toQt(text(spec.title)), emptyText(spec)},
                   parent),
      spec_(spec), recordCommands_(new RecordCommands(*this, context, spec)) {
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
        setColumns(std::move(columns));
        makeCurrent();
        view().setAccessibleDescription(model().storedRows() == 0 ? view().emptyText() : QString());
    }
    emit currentRowChanged();
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
    return Report{text(spec_.title), {std::move(grid)}};
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
