#pragma once

#include "cli/output.h"
#include "cli/record_writer.h"
#include "cli/selection.h"

#include <optional>
#include <string>
#include <vector>

/// The commands that read documents and write nothing but their output.
namespace quobrix::cli {

struct ListOptions : SelectionOptions {
    Format format = Format::Table;
    bool samples = false;             ///< with what the records own
    std::optional<std::string> units; ///< none: the user's
};

struct ReportOptions {
    std::string record; ///< of which log: one of recordNames()
    std::string number; ///< from 1, in decimal digits
    std::string file;
    std::string format; ///< the name of one of kReportFormats; empty: as OUT ends, or text
    std::string out;    ///< empty: standard output
    std::optional<std::string> units;
};

struct ColumnsOptions {
    std::string log; ///< one of logNames()
    bool json = false;
};

std::vector<std::string> logNames();
std::vector<std::string> recordNames();

ExitCode list(const ListOptions& options);
ExitCode report(const ReportOptions& options);
ExitCode columns(const ColumnsOptions& options);

/// The row of the record NUMBER, in decimal digits from 1, of LOG in DOCUMENT; complains if there is none.
std::optional<RowIndex> rowOf(const LogSpec& log, const std::string& number, OpenedDocument& document);
/// Whether NUMBER is one; complains if not.
bool isNumber(const std::string& number);

} // namespace quobrix::cli
