#pragma once

#include "report/pages.h"
#include "texts/source_text.h"

#include <span>
#include <string_view>

namespace quobrix {

class Settings;

/// A size of paper.
struct Paper {
    std::string_view key; ///< in the settings
    SourceText name;
    Size size; ///< standing upright, in points
};
/// Those that can be chosen, the usual ones of most countries first.
std::span<const Paper> papers();
/// Letter where that is what people have, by their languages ("en_US"); else A4.
const Paper& usualPaper(std::span<const std::string> languages);

/// Which way the paper lies.
enum class Orientation {
    Suiting, ///< as each report asks for
    Portrait,
    Landscape,
};

/// How a person wants pages to be.
struct PageSetup {
    const Paper* paper = &papers().front();
    Orientation orientation = Orientation::Suiting;
    Margins margins{};
    bool operator==(const PageSetup&) const = default;

    /// What is remembered; what is not, or makes no sense, is as usual.
    static PageSetup load(const Settings& settings);
    void save(Settings& settings) const;

    /// The format of the pages of REPORT. On small paper margins leave room for a plot.
    PageFormat formatFor(const Report& report) const;
};

/// The smallest and the largest margin, in points: 5 mm, and what leaves room for a table.
inline constexpr double kLeastMargin = 14, kMostMargin = 142;
inline constexpr double kMostMarginPart = 0.25; ///< of what a margin takes of its side of the page

} // namespace quobrix
