#pragma once

#include "export/records.h"

namespace quobrix {

/// RECORDS as an array of objects (RFC 8259), one a row: values in base units by column key, null where there is none.
/// Control characters are escaped, those of Latin-1 too: a terminal obeys them.
void writeJson(const ExportRecords& records, const ExportSink& sink);

} // namespace quobrix
