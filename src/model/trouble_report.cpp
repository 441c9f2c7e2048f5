#include "model/trouble_report.h"

#include "texts/text.h"

namespace quobrix {
namespace {

constexpr auto kFreezeFrame =
    kTypesOf<TTroubleLogFuelSystemOneStatusColumn, TTroubleLogFuelSystemTwoStatusColumn,
             TTroubleLogShortTermFuelTrimBankOneColumn, TTroubleLogLongTermFuelTrimBankOneColumn,
             TTroubleLogShortTermFuelTrimBankTwoColumn, TTroubleLogLongTermFuelTrimBankTwoColumn,
             TTroubleLogFuelPressureColumn, TTroubleLogIntakeManifoldPressureColumn,
             TTroubleLogEngineCoolantTemperatureColumn, TTroubleLogCalculatedLoadValueColumn,
             TTroubleLogEngineSpeedColumn, TTroubleLogVehicleSpeedColumn>;

} // namespace

std::vector<Block> freezeFrameSection(const TTroubleLogTable& troubles, RowIndex row, const TextContext& context) {
    Facts measured;
    for (const PersistentType* type : kFreezeFrame) {
        const Column& column = troubles.columnOf(*type);
        if (std::string value = column.text(row, context); !value.empty())
            measured.facts.push_back({plainHeading(column.spec()), std::move(value)});
    }
    if (measured.facts.empty())
        return {};
    return {Heading{text(SourceText("Freeze Frame"))}, std::move(measured)};
}

} // namespace quobrix
