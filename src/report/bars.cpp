#include "report/report.h"

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

// In sizes of the body's font.
constexpr double kGap = 1;
constexpr double kLeastTrack = 6.5;
constexpr double kPartPadding = 0.8;
constexpr double kBarHeight = 0.95;
constexpr double kLeastFilled = 0.25; // or a short time would look like none

/// A part above nothing is never shown as nothing.
std::string percent(double share) {
    const long whole = std::lround(share * 100);
    return whole == 0 && share > 0 ? "<1%" : std::to_string(whole) + '%';
}

double widest(const Bars& bars, std::string Bars::Part::*text, const TextMeasure& measure) {
    double width = 0;
    for (const Bars::Part& part : bars.parts)
        width = std::max(width, measure.width(part.*text, FontRole::Body));
    return width;
}

} // namespace

Drawing drawBars(const Bars& bars, double width, const TextMeasure& measure) {
    const double em = measure.fontSize();
    const double labels = widest(bars, &Bars::Part::label, measure);
    const double texts = widest(bars, &Bars::Part::text, measure);
    const double percents = measure.width("100%", FontRole::Body);
    const double least = labels + texts + percents + (3 * kGap + kLeastTrack) * em;
    const double lineHeight = measure.lineHeight(FontRole::Body);
    const double rowHeight = lineHeight + kPartPadding * em;

    Drawing drawing;
    drawing.title = bars.title;
    drawing.size = {std::max(width, least), rowHeight * static_cast<double>(bars.parts.size())};
    drawing.fontSize = em;
    const double right = drawing.size.width;
    const double track = right - labels - texts - percents - 3 * kGap * em;
    double top = 0;
    for (const Bars::Part& part : bars.parts) {
        drawing.description += drawing.description.empty() ? "" : ", ";
        drawing.description += part.label + ": " + part.text + " (" + percent(part.share) + ')';

        const double baseline = top + (rowHeight - lineHeight) / 2 + measure.ascent(FontRole::Body);
        drawing.commands.push_back(Text{{0, baseline}, part.label});
        drawing.commands.push_back(Text{{right - percents - kGap * em, baseline}, part.text, Anchor::End});
        drawing.commands.push_back(Text{{right, baseline}, percent(part.share), Anchor::End});
        Box box{labels + kGap * em, top + (rowHeight - kBarHeight * em) / 2, track, kBarHeight * em};
        drawing.commands.push_back(Bar{box, ColourRole::Track});
        if (part.share > 0) {
            box.width = std::clamp(track * part.share, kLeastFilled * em, track);
            drawing.commands.push_back(Bar{box, ColourRole::Accent});
        }
        top += rowHeight;
    }
    return drawing;
}

} // namespace quobrix
