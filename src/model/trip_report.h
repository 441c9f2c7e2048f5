#pragma once

#include "model/trip_log.h"

#include <string>
#include <vector>

namespace quobrix {

/// A report as plain text in the user's units, ready to be laid out by the window, the printer or the command line.
struct Report {
    struct Row {
        std::string label, text; ///< without a label, TEXT is a paragraph
    };
    /// A small table. Every row has as many cells as there are headings; columns after the first are aligned right.
    struct Grid {
        std::vector<std::string> headings;
        std::vector<std::vector<std::string>> rows;
    };
    /// One bar of a picture of how a whole divides.
    struct Bar {
        std::string label, text;
        double share = 0; ///< of the whole, 0 to 1
    };
    struct Section {
        std::string heading;
        std::vector<Row> rows;
        Grid grid; ///< empty: none
        std::vector<Bar> bars;
    };

    std::string title;
    std::vector<Section> sections;
};

/// "Trip N": how the trip of ROW is called everywhere.
std::string tripTitle(const TTripLogTable& trips, RowIndex row, const TextContext& context);

/// What a parameter series of a trip is headed by.
std::string seriesHeading(const ParameterSeriesColumn& series);

/// How the band of ROW is called: "Idle" for standing still, "Over 70 MPH" for the top one, "Speed Band n" between.
std::string speedBandLabel(const TTripLogSpeedBandsTable& bands, RowIndex row, const TextContext& context);

/// The report of the trip of ROW, which must be below the row count. Parts of the trip that the document does not have,
/// or that cannot be read, are left out.
Report tripReport(const TTripLogTable& trips, RowIndex row, const TextContext& context);

/// The report as lines of UTF-8 text, its tables in columns of even width. Ends with a line break.
std::string renderText(const Report& report);

} // namespace quobrix
