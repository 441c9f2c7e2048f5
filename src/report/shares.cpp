#include "report/report.h"

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

// In sizes of the body's font.
constexpr double kLeastTrack = 4;
constexpr double kBarHeight = 0.95;
constexpr double kLeastFilled = 0.25; // or a short time would look like none

} // namespace

std::string shareText(double share) {
    const long whole = std::lround(share * 100);
    return whole == 0 && share > 0 ? "<1%" : std::to_string(whole) + '%';
}

Drawing drawShare(const std::string& label, double share, double width, const TextMeasure& measure) {
    const double em = measure.fontSize();
    const double track = std::max(width, kLeastTrack * em);
    const double height = measure.lineHeight(FontRole::Body);
    Drawing drawing{label, shareText(share), {track, height}, em, {}};
    Box box{0, (height - kBarHeight * em) / 2, track, kBarHeight * em};
    drawing.commands.push_back(Bar{box, ColourRole::Track});
    if (share > 0) {
        box.width = std::clamp(track * share, kLeastFilled * em, track);
        drawing.commands.push_back(Bar{box, ColourRole::Accent});
    }
    return drawing;
}

} // namespace quobrix
