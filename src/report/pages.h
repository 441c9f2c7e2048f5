#pragma once

#include "report/report.h"

#include <memory>

namespace quobrix {

/// What stays free on each side of a page.
struct Margins {
    double left = 42.5, top = 42.5, right = 42.5, bottom = 42.5; ///< 15 mm
    bool operator==(const Margins&) const = default;
};

/// The paper that a report is laid out on. Lengths are in points, 1/72 inch.
struct PageFormat {
    Size paper{595.28, 841.89}; ///< A4
    Margins margins{};
    bool operator==(const PageFormat&) const = default;
};

/// A report as pages. Sections, tables and long texts go on from page to page under their headings: that of a section
/// says ", Continued" then. Columns of a table that do not fit go to further pages, behind the first column again.
/// Nothing is cut off. At least one page. Which page has what is computed at first; a page is made when it is asked
/// for, so that a hundred thousand records take no longer to look at than a hundred. For one thread at a time.
class Pages {
public:
    /// Texts are measured in points by MEASURE, which must outlive the pages.
    Pages(Report report, const PageFormat& format, const TextMeasure& measure);
    Pages(Pages&&) noexcept;
    Pages& operator=(Pages&&) noexcept;
    ~Pages();

    const std::string& title() const;
    const PageFormat& format() const;
    std::size_t count() const;
    /// Whether every picture has room where it was meant to stand; texts always have.
    bool fits() const;
    Drawing page(std::size_t index) const;

private:
    friend Drawing drawReport(Report report, double width, const TextMeasure& measure);
    class Layout;
    std::unique_ptr<const Layout> layout_;
};

/// REPORT as one picture in the units of MEASURE: WIDTH wide, and as high as it takes.
Drawing drawReport(Report report, double width, const TextMeasure& measure);

} // namespace quobrix
