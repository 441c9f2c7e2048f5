#pragma once

#include "export/columns.h"
#include "export/records.h"

namespace quobrix {

/// RECORDS as an array of objects (RFC 8259), one a row: values in base units by column key, null where there is none;
/// "file" first where the records say it. What a cell owns is a list of values, or an object with such a list for each
/// of its columns; samples are {"interval": s, "values": […]}, those of a parameter with its number before. Control
/// characters are escaped, those of Latin-1 too: a terminal obeys them.
void writeJson(std::span<const ExportRecords> records, const ExportSink& sink);

/// COLUMNS as an array of objects: key, heading, kind, unit (null where there is none), and columns where there are
/// some.
std::string columnsJson(std::span<const ColumnDescription> columns);

} // namespace quobrix
