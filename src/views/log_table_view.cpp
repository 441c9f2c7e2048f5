#include "views/log_table_view.h"

#include "base/ui/qt_text.h"
#include "texts/source_text.h"

namespace quobrix {

ShownText tableTitle(const LogSpec& spec, const Table& log, RowIndex row, SourceText table,
                     const TextContext& context) {
    return ShownText::asItIs(recordTitle(spec, log, row, context) + " " + text(table));
}

LogTableView::LogTableView(const ViewContext& context, const LogSpec& spec, QWidget* parent)
    : QTabWidget(parent), context_(context), spec_(spec) {
    setObjectName(toQt(spec.viewName("TableView")));
    setAccessibleName(tr("%1 Tables").arg(toQt(spec.recordHeading())));
    setTabPosition(QTabWidget::South);
    setDocumentMode(true);
    for (const RecordTable& table : spec.tables(nullptr, std::nullopt, context.text())) {
        tables_.push_back(new TSpreadsheet(context.spreadsheet(),
                                           {std::string(table.name), toQt(text(table.title)), toQt(table.emptyText)}));
        addTab(tables_.back(), toQt(text(table.title)));
    }
}

void LogTableView::showRecord(const Table* log, std::optional<RowIndex> row) {
    title_ = row ? recordTitle(spec_, *log, *row, context_.text()) : std::string();
    std::vector<RecordTable> tables = spec_.tables(log, row, context_.text());
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        std::vector<ShownColumn> columns;
        for (const RecordTable::Shown& shown : tables[i].columns)
            columns.push_back({shown.column, toQt(shown.heading)});
        SpreadsheetModel::RowTitle rowTitle;
        if (tables[i].rowTitle)
            rowTitle = [title = tables[i].rowTitle](RowIndex at) { return toQt(title(at)); };
        tables_[i]->setColumns(std::move(columns), std::move(rowTitle));
        tables_[i]->view().setAccessibleName(
            toQt(row ? tableTitle(spec_, *log, *row, tables[i].title, context_.text()) : text(tables[i].title)));
        tables_[i]->view().setEmptyText(toQt(tables[i].emptyText));
    }
    shown_ = std::move(tables); // only now are the columns of those before shown no more
}

std::optional<ExportContent> LogTableView::exported() const {
    const TSpreadsheet& table = *tables_[static_cast<std::size_t>(currentIndex())];
    return table.model().rowCount() > 0 ? std::optional(exportedFrom(table)) : std::nullopt;
}

/// Samples are the first table of every log that has some.
std::optional<RowIndex> LogTableView::currentSample() const {
    return currentIndex() == 0 && !tables_.empty() ? tables_.front()->currentRow() : std::nullopt;
}

Report LogTableView::printable() const {
    Report report{title_, {}};
    for (TSpreadsheet* table : tables_)
        if (Grid grid = shownCells(*table); !grid.rows.empty()) {
            report.blocks.emplace_back(Heading{tabText(indexOf(table)).toStdString()});
            report.blocks.emplace_back(std::move(grid));
        }
    return report;
}

} // namespace quobrix
