#include "cli/record_writer.h"

#include "export/csv.h"
#include "export/json.h"

#include <utility>

namespace quobrix::cli {

Grid recordGrid(const Selection& selection, const UserUnits& units) {
    Grid grid;
    for (const ExportRecords& part : selection.records([&](const Table& t) { return selection.listColumns(t); })) {
        if (grid.columns.empty()) {
            if (part.file)
                grid.columns.push_back({fileHeading(), false});
            for (const ExportColumn& each : part.columns) {
                const ColumnKind kind = each.column->kind();
                grid.columns.push_back(
                    {plainHeading(each.column->spec()), kind == ColumnKind::Integer || kind == ColumnKind::Real});
            }
        }
        for (const RowIndex row : part.rows) {
            std::vector<std::string>& cells = grid.rows.emplace_back();
            if (part.file)
                cells.push_back(*part.file);
            for (const ExportColumn& each : part.columns)
                cells.push_back(each.column->text(row, units.context()));
        }
    }
    return grid;
}

std::vector<ExportRecords> recordsFor(const Selection& selection, Format format, Owned owned) {
    const Repeats repeats = format == Format::Json ? Repeats::Keep : Repeats::LeaveOut;
    return selection.records([=](const Table& table) { return exportColumns(table, repeats, owned); });
}

void writeRecords(std::span<const ExportRecords> records, Format format, const UserUnits& units,
                  const ExportSink& sink) {
    if (format == Format::Json)
        writeJson(records, sink);
    else
        writeCsv(records, units.context(), sink);
}

} // namespace quobrix::cli
