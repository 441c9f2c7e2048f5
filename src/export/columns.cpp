#include "export/columns.h"

#include "export/records.h"
#include "model/log_columns.h"
#include "model/parameters.h"
#include "tables/table.h"

namespace quobrix {
namespace {

std::string_view kindName(const Column& column) {
    if (dynamic_cast<const SpeedSamplesColumn*>(&column) || dynamic_cast<const ParameterSeriesColumn*>(&column))
        return "samples";
    switch (column.kind()) {
    case ColumnKind::Boolean:
        return "boolean";
    case ColumnKind::Integer:
        return "integer";
    case ColumnKind::Real:
        return "real";
    case ColumnKind::Text:
        return "text";
    case ColumnKind::Selection:
        return "selection";
    case ColumnKind::DateTime:
        return "datetime";
    case ColumnKind::Table:
        return "table";
    }
    return {};
}

std::string unitOf(const Column& column) {
    if (column.isElapsedTime())
        return "s";
    if (column.kind() == ColumnKind::DateTime)
        return "s since 1970-01-01 00:00 UTC";
    return column.kind() == ColumnKind::Real ? std::string(unitTypeRecord(column.spec().unit).base) : std::string();
}

ColumnDescription describe(const Column& column) {
    ColumnDescription description{column.spec().key, plainHeading(column.spec()), kindName(column), unitOf(column)};
    const auto* cells = dynamic_cast<const ObjectColumn*>(&column);
    if (!cells)
        return description;
    const std::unique_ptr<PersistentObject> owned = cells->objectType().create();
    if (const auto* table = dynamic_cast<const Table*>(owned.get())) {
        for (const ExportColumn& own : ownColumns(*table))
            description.columns.push_back(describe(*own.column));
    } else {
        const ColumnDescription list = describe(static_cast<const Column&>(*owned));
        description.kind = list.kind == "samples" ? list.kind : "list";
        description.unit = list.unit;
    }
    return description;
}

} // namespace

std::vector<ColumnDescription> describeColumns(const Table& table) {
    std::vector<ColumnDescription> columns;
    for (const ExportColumn& exported : exportColumns(table, Repeats::Keep, Owned::Keep))
        columns.push_back(describe(*exported.column));
    return columns;
}

} // namespace quobrix
