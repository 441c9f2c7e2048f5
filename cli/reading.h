#pragma once

#include "cli/output.h"
#include "cli/record_writer.h"
#include "model/quobrix_document.h"

#include <optional>
#include <string>
#include <vector>

/// The commands that read a document. They open it for reading and write nothing but their output.
namespace quobrix::cli {

struct ListOptions {
    std::string log; ///< one of logNames()
    std::string file;
    Format format = Format::Table;
    std::optional<std::string> units; ///< none: the user's
};

struct ReportOptions {
    std::string record; ///< of which log: one of recordNames()
    std::string number; ///< from 1, in decimal digits
    std::string file;
    bool html = false; ///< as a file for a browser
    std::optional<std::string> units;
};

std::vector<std::string> logNames();
std::vector<std::string> recordNames();

ExitCode list(const ListOptions& options);
ExitCode report(const ReportOptions& options);

/// Opens FILE for reading, or complains.
bool openForReading(TQuobrixDocument& document, const std::string& file);

} // namespace quobrix::cli
