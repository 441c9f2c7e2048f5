#include "paper/printout.h"

#include <utility>

namespace quobrix {
namespace {

constexpr double kLeastFontSize = 5; // points

} // namespace

PageSource layOut(Report report, const PageSetup& setup, const FilePainter& painter) {
    struct LaidOut {
        std::unique_ptr<const TextMeasure> measure;
        Pages pages;
    };
    const PageFormat format = setup.formatFor(report);
    double font = report.wide ? kListFontSize : kPaperFontSize;
    std::unique_ptr<const TextMeasure> measure = painter.measure(font);
    Pages pages(report, format, *measure);
    // A plot of many quantities is as large as its texts make it.
    while (!pages.fits() && font > kLeastFontSize) {
        std::unique_ptr<const TextMeasure> smaller = painter.measure(--font);
        pages = Pages(report, format, *smaller);
        measure = std::move(smaller);
    }
    auto laidOut = std::make_shared<const LaidOut>(LaidOut{std::move(measure), std::move(pages)});
    const std::size_t count = laidOut->pages.count();
    std::string title = laidOut->pages.title();
    return {std::move(title), format.paper, count,
            [laidOut = std::move(laidOut)](std::size_t index) { return laidOut->pages.page(index); }};
}

} // namespace quobrix
