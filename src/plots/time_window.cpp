#include "plots/time_window.h"

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr double kWidestInterval = 8; // units

/// LENGTH of the axis from FROM on, or as near to that as there is something.
PlotRange within(const PlotData& data, double from, double length) {
    if (length >= data.whole.length())
        return data.whole;
    from = std::clamp(from, data.whole.from, data.whole.to - length);
    return {from, from + length};
}

} // namespace

double leastRange(const PlotData& data, double width) {
    return std::min(data.finest * std::max(width, 1.0) / kWidestInterval, data.whole.length());
}

ZoomResult zoomedTo(const PlotData& data, PlotRange wanted, double width) {
    if (wanted.from > wanted.to)
        std::swap(wanted.from, wanted.to);
    wanted.from = std::clamp(wanted.from, data.whole.from, data.whole.to);
    wanted.to = std::clamp(wanted.to, data.whole.from, data.whole.to);
    const double least = leastRange(data, width);
    if (wanted.length() >= least * (1 - 1e-9))
        return {wanted};
    return {within(data, (wanted.from + wanted.to - least) / 2, least), true};
}

ZoomResult zoomedAt(const PlotData& data, PlotRange range, double at, double factor, double width) {
    const double least = leastRange(data, width), wanted = range.length() / factor;
    const double length = std::max(wanted, least);
    const double part = (at - range.from) / range.length();
    return {within(data, at - part * length, length), wanted < least * (1 - 1e-9)};
}

PlotRange panned(const PlotData& data, PlotRange range, double by) {
    return within(data, range.from + by, range.length());
}

PlotRange centred(const PlotData& data, PlotRange range, double at) {
    return within(data, at - range.length() / 2, range.length());
}

} // namespace quobrix
