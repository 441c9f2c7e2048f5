#include "plots/plot_options.h"

#include "settings/settings.h"
#include "tables/option_table.h"

#include <algorithm>

namespace quobrix {
namespace {

constexpr const PersistentType* kColumns[] = {
    &TIODrawPlotsAsLinesColumn::kType,      &TIOPlotTooltipsColumn::kType,   &TIONormalizeVerticalAxesColumn::kType,
    &TIOVerticalAxisMaximumColumn::kType,   &TIODrawSpeedBandsColumn::kType, &TIODrawBrakingEventsColumn::kType,
    &TIODrawAccelerationEventsColumn::kType};

constexpr SourceText kTitle("Plot Options");

} // namespace

std::span<const PersistentType* const> plotOptionColumns() { return kColumns; }

PlotOptions plotOptions(Settings& settings) {
    const OptionTable table(settings, kColumns, kTitle);
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

bool plotOption(Settings& settings, const PersistentType& column) {
    const OptionTable table(settings, kColumns, kTitle);
    return table.columnOf(column).value(0) == Value(true);
}

void setPlotOption(Settings& settings, const PersistentType& column, bool on) {
    OptionTable table(settings, kColumns, kTitle);
    Column& option = table.columnOf(column);
    option.setValue(0, on);
    table.cellEdited(static_cast<std::size_t>(std::ranges::find(kColumns, &column) - kColumns), 0);
    table.accept();
}

} // namespace quobrix
