#pragma once

#include "report/report.h"

namespace quobrix {

/// The paper that a report is laid out on. Lengths are in points, 1/72 inch.
struct PageFormat {
    Size paper{595.28, 841.89}; ///< A4
    double margin = 42.5;       ///< 15 mm on every side
};

/// REPORT as pages, texts measured in points. Sections, tables and long texts go on from page to page under their
/// headings: that of a section says ", Continued" then. Columns of a table that do not fit go to further pages, behind
/// the first column again. Nothing is cut off. At least one page.
std::vector<Drawing> layOutPages(const Report& report, const PageFormat& format, const TextMeasure& measure);

} // namespace quobrix
