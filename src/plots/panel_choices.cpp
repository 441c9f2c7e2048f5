#include "plots/panel_choices.h"

#include "settings/settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

namespace quobrix {
namespace {

constexpr const char *kSection = "Plots", *kName = "Panels";
constexpr char kHidden = '-'; // before the key
constexpr double kPercent = 100;
constexpr int kLeastPercent = 10, kMostPercent = 1000;
constexpr std::size_t kMostChoices = 200;

PanelChoice& choiceOf(std::vector<PanelChoice>& choices, const PlotPanel& panel) {
    return *std::ranges::find(choices, panel.key, &PanelChoice::key);
}

} // namespace

/// "Speed:150 -Parameter12:100": the heights in percent.
std::vector<PanelChoice> rememberedPanels(const Settings& settings) {
    const std::string all = settings.getText(kSection, kName);
    std::vector<PanelChoice> choices;
    std::string_view rest = all;
    while (!rest.empty() && choices.size() < kMostChoices) {
        std::string_view word = rest.substr(0, rest.find(' '));
        rest.remove_prefix(std::min(word.size() + 1, rest.size()));
        const bool hidden = word.starts_with(kHidden);
        word.remove_prefix(hidden ? 1 : 0);
        const std::size_t colon = word.rfind(':');
        int percent = 0;
        if (colon == 0 || colon == std::string_view::npos ||
            std::from_chars(word.data() + colon + 1, word.data() + word.size(), percent).ec != std::errc{})
            continue;
        choices.push_back(
            {std::string(word.substr(0, colon)), hidden, std::clamp(percent, kLeastPercent, kMostPercent) / kPercent});
    }
    return choices;
}

void rememberPanels(Settings& settings, const std::vector<PanelChoice>& choices) {
    std::string all;
    for (const PanelChoice& choice : choices)
        all += (all.empty() ? "" : " ") + std::string(choice.hidden ? 1 : 0, kHidden) + choice.key + ':' +
               std::to_string(std::lround(choice.height * kPercent));
    settings.setText(kSection, kName, all);
}

std::vector<PanelChoice> withAllPanels(const PlotData& data, std::vector<PanelChoice> choices) {
    for (const PlotPanel& panel : data.panels)
        if (std::ranges::find(choices, panel.key, &PanelChoice::key) == choices.end())
            choices.push_back({panel.key});
    return choices;
}

std::vector<PanelChoice> withHidden(const PlotData& data, std::vector<PanelChoice> choices, std::size_t panel,
                                    bool hidden) {
    choices = withAllPanels(data, std::move(choices));
    choiceOf(choices, data.panels[panel]).hidden = hidden;
    return choices;
}

std::vector<PanelChoice> withMoved(const PlotData& data, std::vector<PanelChoice> choices, std::size_t panel,
                                   int step) {
    choices = withAllPanels(data, std::move(choices));
    const auto shown = [&](const PanelChoice& choice) {
        return !choice.hidden && std::ranges::find(data.panels, choice.key, &PlotPanel::key) != data.panels.end();
    };
    const auto here = &choiceOf(choices, data.panels[panel]) - choices.data();
    for (std::ptrdiff_t other = here + step; other >= 0 && other < std::ssize(choices); other += step)
        if (PanelChoice& choice = choices[static_cast<std::size_t>(other)]; shown(choice)) {
            std::swap(choices[static_cast<std::size_t>(here)], choice);
            break;
        }
    return choices;
}

std::vector<PanelChoice> withPlaced(const PlotData& data, std::vector<PanelChoice> choices, std::size_t panel,
                                    std::optional<std::size_t> before) {
    choices = withAllPanels(data, std::move(choices));
    const PanelChoice moved = choiceOf(choices, data.panels[panel]);
    if (before == panel)
        return choices;
    std::erase(choices, moved);
    const auto place = before ? std::ranges::find(choices, data.panels[*before].key, &PanelChoice::key) : choices.end();
    choices.insert(place, moved);
    return choices;
}

std::vector<PanelChoice> withHeight(const PlotData& data, std::vector<PanelChoice> choices, std::size_t panel,
                                    double factor) {
    choices = withAllPanels(data, std::move(choices));
    double& height = choiceOf(choices, data.panels[panel]).height;
    height = std::clamp(height * factor, kLeastPercent / kPercent, kMostPercent / kPercent);
    return choices;
}

std::vector<PanelChoice> withBorder(const PlotData& data, std::vector<PanelChoice> choices, const PlotLayout& layout,
                                    std::size_t upper, double by) {
    choices = withAllPanels(data, std::move(choices));
    const PanelLayout &above = layout.panels[upper], &below = layout.panels[upper + 1];
    PanelChoice& first = choiceOf(choices, data.panels[above.panel]);
    PanelChoice& second = choiceOf(choices, data.panels[below.panel]);
    const double both = first.height + second.height, units = above.area.height + below.area.height;
    const double least = std::min(both / 2, std::max(kLeastPercent / kPercent, both / 10));
    first.height = std::clamp((above.area.height + by) / units * both, least, both - least);
    second.height = both - first.height;
    return choices;
}

} // namespace quobrix
