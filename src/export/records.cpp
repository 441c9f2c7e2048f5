#include "export/records.h"

#include "tables/columns.h"
#include "tables/table.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <fmt/format.h>

namespace quobrix {

std::vector<ExportColumn> exportColumns(const Table& table, Repeats repeats, Owned owned) {
    std::vector<ExportColumn> columns;
    for (std::size_t i = 0; i < table.columnCount(); ++i) {
        const Column& column = table.column(i);
        const bool exported = column.kind() != ColumnKind::Table ||
                              (owned == Owned::Keep && column.isShown() && dynamic_cast<const ObjectColumn*>(&column));
        if (exported && (repeats == Repeats::Keep || !column.repeatsSibling()))
            columns.push_back({&column});
    }
    return columns;
}

std::vector<ExportColumn> ownColumns(const Table& table) {
    std::vector<ExportColumn> columns = exportColumns(table, Repeats::Keep);
    std::erase_if(columns, [](const ExportColumn& c) { return dynamic_cast<const DerivedColumn*>(c.column); });
    return columns;
}

std::string exportHeading(const ExportColumn& exported, const TextContext& context) {
    const Column& column = *exported.column;
    const std::string heading = exported.heading.empty() ? std::string(plainHeading(column.spec())) : exported.heading;
    const std::string_view unit =
        column.kind() == ColumnKind::Real ? context.units.unitName(column.unitOf(0)) : std::string_view();
    return unit.empty() ? heading : fmt::format("{} ({})", heading, unit);
}

ShownText fileHeading() { return text(SourceText("File")); }

} // namespace quobrix
