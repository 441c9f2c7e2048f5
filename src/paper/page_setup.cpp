#include "paper/page_setup.h"

#include "platform/translations.h"
#include "settings/settings.h"

#include <algorithm>
#include <string>
#include <utility>

namespace quobrix {
namespace {

constexpr double kMillimetre = 72 / 25.4; // points
constexpr std::string_view kSection = "Page Setup";

constexpr Size millimetres(double width, double height) { return {width * kMillimetre, height * kMillimetre}; }

// ISO 216; ANSI/ASME Y14.1 and what is called by custom.
constexpr Paper kPapers[] = {
    {"A4", SourceText("A4"), millimetres(210, 297)},    {"Letter", SourceText("Letter"), {612, 792}},
    {"Legal", SourceText("Legal"), {612, 1008}},        {"Tabloid", SourceText("Tabloid"), {792, 1224}},
    {"A3", SourceText("A3"), millimetres(297, 420)},    {"A5", SourceText("A5"), millimetres(148, 210)},
    {"B4", SourceText("B4"), millimetres(250, 353)},    {"B5", SourceText("B5"), millimetres(176, 250)},
    {"Executive", SourceText("Executive"), {522, 756}},
};

/// Where paper is Letter: the Unicode locale data's territories of the paper size US-Letter.
constexpr std::string_view kLetterCountries[] = {"BZ", "CA", "CL", "CO", "CR", "GT", "MX",
                                                 "NI", "PA", "PH", "PR", "SV", "US", "VE"};

constexpr std::pair<const char*, double Margins::*> kMargins[] = {{"LeftMargin", &Margins::left},
                                                                  {"TopMargin", &Margins::top},
                                                                  {"RightMargin", &Margins::right},
                                                                  {"BottomMargin", &Margins::bottom}};
constexpr std::pair<Orientation, std::string_view> kOrientations[] = {
    {Orientation::Suiting, ""}, {Orientation::Portrait, "Portrait"}, {Orientation::Landscape, "Landscape"}};

} // namespace

std::span<const Paper> papers() { return kPapers; }

const Paper& usualPaper(std::span<const std::string> languages) {
    for (const std::string& language : languages)
        if (const std::size_t country = language.find('_'); country != language.npos)
            return kPapers[std::ranges::find(kLetterCountries, std::string_view(language).substr(country + 1, 2)) !=
                           std::end(kLetterCountries)];
    return kPapers[0];
}

PageSetup PageSetup::load(const Settings& settings) {
    PageSetup setup;
    const auto paper = std::ranges::find(kPapers, settings.getText(kSection, "Paper"), &Paper::key);
    setup.paper = paper == std::end(kPapers) ? &usualPaper(preferredLanguages()) : paper;
    const std::string orientation = settings.getText(kSection, "Orientation");
    for (const auto& [value, key] : kOrientations)
        if (orientation == key)
            setup.orientation = value;
    for (const auto& [name, margin] : kMargins)
        setup.margins.*margin =
            std::clamp(settings.getReal(kSection, name, setup.margins.*margin), kLeastMargin, kMostMargin);
    return setup;
}

void PageSetup::save(Settings& settings) const {
    settings.setText(kSection, "Paper", paper->key);
    for (const auto& [value, key] : kOrientations)
        if (orientation == value)
            settings.setText(kSection, "Orientation", key);
    for (const auto& [name, margin] : kMargins)
        settings.setReal(kSection, name, margins.*margin);
}

PageFormat PageSetup::formatFor(const Report& report) const {
    const bool landscape = orientation == Orientation::Suiting ? report.wide : orientation == Orientation::Landscape;
    PageFormat format{paper->size, margins};
    if (landscape)
        std::swap(format.paper.width, format.paper.height);
    for (const auto& [name, margin] : kMargins) {
        const bool across = margin == &Margins::left || margin == &Margins::right;
        const double room = across ? format.paper.width : format.paper.height;
        format.margins.*margin = std::min(format.margins.*margin, room * kMostMarginPart);
    }
    return format;
}

} // namespace quobrix
