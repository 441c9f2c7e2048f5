#pragma once

#include "report/report.h"

#include <string>

namespace quobrix {

/// REPORT as lines of UTF-8 text, its tables in columns of even width. Ends with a line break.
std::string renderText(const Report& report);

/// GRID alone, likewise.
std::string renderText(const Grid& grid);

/// REPORT as one HTML file in UTF-8 that needs no other: light or dark as the reader's system is, light on paper. It is
/// well-formed XML, too.
std::string renderHtml(const Report& report);

} // namespace quobrix
