#pragma once

#include "cli/output.h"
#include "cli/selection.h"
#include "report/report.h"

#include <optional>
#include <string>
#include <vector>

/// Reports and lists as files for people: text, HTML, pages.
namespace quobrix::cli {

struct PrintOptions : SelectionOptions {
    std::string out;
    std::string format;  ///< one of printFormats(); empty: as OUT ends
    std::string records; ///< "3-12", "7"; empty: all
    std::optional<std::string> units;
};

/// The names of the formats of reports and of lists, which are the endings of their files.
std::vector<std::string> reportFormats();
std::vector<std::string> printFormats();

/// FORMAT, if that names one, or what OUT ends in; complains if that is none of FORMATS.
std::string printFormat(const std::string& format, const std::string& out, const std::vector<std::string>& formats);

/// Writes REPORT to the file OUT (empty: to standard output). FORMAT is one of reportFormats(). Says then that OUT
/// holds WHAT, if that is something. kDone, or what went wrong, which has been told.
ExitCode putReport(Report report, const std::string& format, const std::string& out, ExitCode code,
                   const ShownText& what = {});

/// Writes the records that OPTIONS choose as pages.
ExitCode print(const PrintOptions& options);

} // namespace quobrix::cli
