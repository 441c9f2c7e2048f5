#pragma once

#include "summary/summary_record.h"
#include "tables/columns.h"
#include "tables/declare.h"
#include "tables/table.h"

#include <memory>
#include <span>

namespace quobrix {

#define COLUMN(Name, Base, Unit, Heading, Tooltip, Of)                                                                 \
    QUOBRIX_COLUMN_CLASS(Name, Base, #Name, Unit, Heading, Tooltip, Recorded)
#include "summary/summary_table.def"

/// What a person sees of the summary database: a row for each of its records. It belongs to no document.
class SummaryTable final : public Table {
    QUOBRIX_TABLE_CLASS(SummaryTable, false)

    static std::unique_ptr<SummaryTable> of(std::span<const SummaryRecord> records);
};

} // namespace quobrix
