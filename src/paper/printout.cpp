#include "paper/printout.h"

namespace quobrix {

PageSource layOut(Report report, const PageSetup& setup, const FilePainter& painter) {
    struct LaidOut {
        std::unique_ptr<const TextMeasure> measure;
        Pages pages;
    };
    const PageFormat format = setup.formatFor(report);
    std::unique_ptr<const TextMeasure> measure = painter.measure(report.wide ? kListFontSize : kPaperFontSize);
    Pages pages(std::move(report), format, *measure);
    auto laidOut = std::make_shared<const LaidOut>(LaidOut{std::move(measure), std::move(pages)});
    const std::size_t count = laidOut->pages.count();
    std::string title = laidOut->pages.title();
    return {std::move(title), format.paper, count,
            [laidOut = std::move(laidOut)](std::size_t index) { return laidOut->pages.page(index); }};
}

} // namespace quobrix
