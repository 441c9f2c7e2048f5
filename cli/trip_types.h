#pragma once

#include "cli/output.h"
#include "cli/selection.h"
#include "export/file_format.h"

#include <optional>
#include <string>

namespace quobrix::cli {

struct TripTypeOptions : SelectionOptions {
    std::optional<std::string> type; ///< empty: trips without one
    std::string format;              ///< the name of one of kTripTypeFormats; empty: as OUT ends, or text
    std::string out;                 ///< empty: standard output
    std::optional<std::string> units;
};

inline constexpr FileFormat kTripTypeFormats[] = {FileFormat::Text, FileFormat::Html, FileFormat::Pdf,
                                                  FileFormat::Csv,  FileFormat::Json, FileFormat::Xlsx};

/// The trip type report, or its trips for other programs.
ExitCode tripTypes(const TripTypeOptions& options);

} // namespace quobrix::cli
