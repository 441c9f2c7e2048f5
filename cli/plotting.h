#pragma once

#include "cli/output.h"
#include "export/file_format.h"

#include <optional>
#include <string>
#include <vector>

/// Pictures of records.
namespace quobrix::cli {

struct PlottingOptions {
    std::string record;             ///< of which log: one of plottedRecordNames()
    std::vector<std::string> files; ///< the numbers of one record or, of trips, of several, and the document
    std::string out;
    std::string format;            ///< the name of one of kPlotFormats; empty: as OUT ends
    std::string size = "1200x700"; ///< not of pages
    std::string from, to;          ///< on the axis; empty: its ends
    bool lines = false, areas = false;
    std::optional<std::string> normalize;  ///< a speed; empty: the user's
    std::optional<bool> bands{}, events{}; ///< nothing: the user's
    std::optional<std::string> by;         ///< what trips are compared along: "time" (if nothing is said) or "distance"
    std::optional<std::string> units;
};

inline constexpr FileFormat kPlotFormats[] = {FileFormat::Svg, FileFormat::Png, FileFormat::Pdf};

/// The records that there are plots of.
std::vector<std::string> plottedRecordNames();

/// Draws as the user has set it, but for what OPTIONS say.
ExitCode plot(const PlottingOptions& options);

} // namespace quobrix::cli
