#pragma once

#include "cli/output.h"
#include "cli/selection.h"
#include "cli/units.h"
#include "report/report.h"

namespace quobrix::cli {

/// How records are written.
enum class Format {
    Table, ///< for people: columns of even width, values as the window shows them
    Csv,   ///< for spreadsheets (RFC 4180): the unit in the heading, numbers with a point and without grouping
    Json,  ///< for programs: one object a record, keyed by column keys, values in base units
};

/// SELECTION as a table for people, which shows the columns that lists show.
Grid recordGrid(const Selection& selection, const UserUnits& units);

/// The chosen records with all columns that hold values of their own or derive some; those for programs also with the
/// columns that repeat a sibling under another heading, and with what cells own where OWNED says so.
std::vector<ExportRecords> recordsFor(const Selection& selection, Format format, Owned owned);

/// Writes RECORDS in a FORMAT that is not for people.
void writeRecords(std::span<const ExportRecords> records, Format format, const UserUnits& units,
                  const ExportSink& sink);

} // namespace quobrix::cli
