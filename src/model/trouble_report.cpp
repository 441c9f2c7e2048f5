#include "model/trouble_report.h"

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
        if (std::string text = column.text(row, context); !text.empty())
            measured.facts.push_back({plainHeading(column.spec()), std::move(text)});
    }
    if (measured.facts.empty())
        return {};
    return {Heading{"Freeze Frame"}, std::move(measured)};
}

} // namespace quobrix
