#include "views/page.h"

#include "model/quobrix_document.h"
#include "tables/ui/cell_block.h"

#include <QHeaderView>

namespace quobrix {

SpreadsheetContext ViewContext::spreadsheet() const { return {text(), settings, &document.edits(), prompter, windows}; }

QString Page::title() const {
    QStringList parts;
    for (const PathPart& part : path())
        parts << part.text;
    return parts.join(kPathSeparator);
}

Grid shownCells(TSpreadsheet& spreadsheet, const std::optional<RecordRange>& range) {
    const SpreadsheetModel& model = spreadsheet.model();
    const std::vector<int> columns = shownColumns(spreadsheet.view());
    const bool titles = !spreadsheet.view().verticalHeader()->isHidden();
    Grid grid;
    if (titles)
        grid.columns.push_back({{}, false});
    for (const int column : columns)
        grid.columns.push_back({model.plainHeading(column).toStdString(), model.isFigure(column)});
    for (int place = 0; place < model.rowCount(); ++place) {
        const auto number = static_cast<std::int64_t>(model.storedRow(place)) + 1;
        if (range && (number < range->first || number > range->last))
            continue;
        std::vector<std::string>& cells = grid.rows.emplace_back();
        if (titles)
            cells.push_back(model.headerData(place, Qt::Vertical).toString().toStdString());
        for (const int column : columns)
            cells.push_back(model.text(place, column).toStdString());
    }
    return grid;
}

ExportContent exportedFrom(const TSpreadsheet& spreadsheet) {
    const SpreadsheetModel& model = spreadsheet.model();
    ExportContent content{.title = ShownText::asItIs(spreadsheet.view().accessibleName().toStdString())};
    ExportRecords& records = content.records.emplace_back();
    for (const int column : shownColumns(spreadsheet.view())) {
        const ShownColumn& shown = model.columns()[static_cast<std::size_t>(column)];
        records.columns.push_back({shown.column, shown.heading.toStdString()});
    }
    records.rows.assign(model.rows().begin(), model.rows().end());
    return content;
}

void retextTables(const QWidget& widget) {
    for (TSpreadsheet* spreadsheet : widget.findChildren<TSpreadsheet*>())
        spreadsheet->unitsChanged();
}

} // namespace quobrix
