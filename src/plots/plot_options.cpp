#include "plots/plot_options.h"

#include "settings/settings.h"
#include "tables/option_table.h"

namespace quobrix {
namespace {

constexpr const PersistentType* kColumns[] = {
    &TIODrawPlotsAsLinesColumn::kType,      &TIOPlotTooltipsColumn::kType,   &TIONormalizeVerticalAxesColumn::kType,
    &TIOVerticalAxisMaximumColumn::kType,   &TIODrawSpeedBandsColumn::kType, &TIODrawBrakingEventsColumn::kType,
    &TIODrawAccelerationEventsColumn::kType};

} // namespace

std::span<const PersistentType* const> plotOptionColumns() { return kColumns; }

PlotOptions plotOptions(Settings& settings) {
    const OptionTable table(settings, kColumns, SourceText("Plot Options"));
    const auto flag = [&]<class C>() { return table.column<C>().at(0) != 0; };
    const double maximum = table.column<TIOVerticalAxisMaximumColumn>().at(0);
    return {flag.operator()<TIODrawPlotsAsLinesColumn>(),
            flag.operator()<TIOPlotTooltipsColumn>(),
            flag.operator()<TIONormalizeVerticalAxesColumn>(),
            TIOVerticalAxisMaximumColumn::kSpec.requirements.required.contains(maximum) ? maximum : 0,
            flag.operator()<TIODrawSpeedBandsColumn>(),
            flag.operator()<TIODrawBrakingEventsColumn>(),
            flag.operator()<TIODrawAccelerationEventsColumn>()};
}

} // namespace quobrix
