#pragma once

#include "cli/output.h"
#include "cli/selection.h"
#include "export/file_format.h"
#include "report/report.h"

#include <optional>
#include <string>
#include <vector>

/// Reports and lists as files for people: text, HTML, pages.
namespace quobrix::cli {

struct PrintOptions : SelectionOptions {
    std::string out;
    std::string format;  ///< the name of one of kPrintFormats; empty: as OUT ends
    std::string records; ///< "3-12", "7"; empty: all
    std::optional<std::string> units;
};

/// The formats of reports, and of lists.
inline constexpr FileFormat kReportFormats[] = {FileFormat::Text, FileFormat::Html, FileFormat::Pdf};
inline constexpr FileFormat kPrintFormats[] = {FileFormat::Pdf, FileFormat::Html};

/// Writes REPORT to the file OUT (empty: to standard output). FORMAT is one of kReportFormats. Says then that OUT holds
/// WHAT, if that is something. kDone, or what went wrong, which has been told.
ExitCode putReport(Report report, FileFormat format, const std::string& out, ExitCode code, const ShownText& what = {});

/// Writes the records that OPTIONS choose as pages.
ExitCode print(const PrintOptions& options);

} // namespace quobrix::cli
