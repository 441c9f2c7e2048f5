#pragma once

#include "report/report.h"

#include <optional>

namespace quobrix {

/// What stays together on a page, from its own top left corner.
struct Strip {
    double height = 0;
    std::vector<DrawingCommand> commands{};
};

/// A strip and what must stand above it on its page. Headings are no strips of their own: so none is ever the last
/// thing on a page.
struct SetStrip {
    Strip strip;
    std::size_t section = 0;                ///< whose heading it stands under, from 1; 0: before the first one
    std::optional<std::size_t> tableHead{}; ///< which headings of a table
    double gap = 0;                         ///< above it, but at the top of a page
    bool newPage = false;                   ///< begins one
};

struct SetHeading {
    Strip first, continued; ///< on the page where its section begins, and on later ones
};

/// A report before it is divided into pages.
struct Galley {
    std::vector<SetStrip> strips{};
    std::vector<SetHeading> headings{}; ///< of the sections, from 1
    std::vector<Strip> tableHeads{};
};

/// Sets REPORT in texts as they are measured. No strip is higher than fits into ROOM together with its headings, but a
/// picture that cannot be so small.
Galley typeset(const Report& report, Size room, const TextMeasure& measure);

} // namespace quobrix
