#pragma once

#include "cli/output.h"
#include "tables/table.h"
#include "units/unit_system.h"

#include <span>

namespace quobrix::cli {

/// How records are listed.
enum class Format {
    Table, ///< for people: columns of even width, values as the window shows them
    Csv,   ///< for spreadsheets (RFC 4180): the unit in the heading, numbers with a point and without grouping
    Json,  ///< for programs: one object a record, keyed by column keys, values in base units
};

/// How numbers are written in FORMAT, whatever the user's locale.
TextLocale localeOf(Format format);

/// Writes all rows of TABLE. The table format shows the columns SHOWN, the others all that hold values of their own or
/// derive some (json: also those that repeat a sibling under another heading). Objects in cells are left out.
void writeRecords(Output& output, const Table& table, Format format, std::span<const PersistentType* const> shown,
                  const TextContext& context);

} // namespace quobrix::cli
