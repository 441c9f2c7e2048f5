#include "model/parameter_thresholds.h"

#include "model/logger_tables.h"
#include "settings/settings.h"

namespace quobrix {
namespace {

// The dialog in which they are set; summaries of other versions look for them there.
constexpr std::string_view kSection = "SetParameterThreshDialog";

// By parameter, from 1.
constexpr const ColumnSpec* kThresholds[] = {
    &VehicleSpeedThresh::kSpec,     &EngineSpeedThresh::kSpec,      &ThrottleThresh::kSpec,
    &EngineCoolantThresh::kSpec,    &EngineLoadThresh::kSpec,       &IntakeManifoldThresh::kSpec,
    &AirFlowThresh::kSpec,          &IntakeAirThresh::kSpec,        &TimingAdvanceThresh::kSpec,
    &FuelPressureThresh::kSpec,     &FuelSystemThresh::kSpec,       &ShortTermFuelB1Thresh::kSpec,
    &ShortTermFuelB2Thresh::kSpec,  &LongTermFuelB1Thresh::kSpec,   &LongTermFuelB2Thresh::kSpec,
    &OxygenSensorB1S1Thresh::kSpec, &OxygenSensorB1S2Thresh::kSpec, &OxygenSensorB1S3Thresh::kSpec,
    &OxygenSensorB1S4Thresh::kSpec, &OxygenSensorB2S1Thresh::kSpec, &OxygenSensorB2S2Thresh::kSpec,
    &OxygenSensorB2S3Thresh::kSpec, &OxygenSensorB2S4Thresh::kSpec, &BatteryVoltageThresh::kSpec,
};
static_assert(std::size(kThresholds) == kParameterCount);

} // namespace

const ColumnSpec& parameterThresholdSpec(std::int32_t parameter) {
    return *kThresholds[static_cast<std::size_t>(parameter - 1)];
}

double parameterThreshold(const Settings& settings, std::int32_t parameter) {
    const ColumnSpec& spec = parameterThresholdSpec(parameter);
    return settings.getReal(kSection, spec.key, spec.requirements.defaultValue);
}

void setParameterThreshold(Settings& settings, std::int32_t parameter, double value) {
    const ColumnSpec& spec = parameterThresholdSpec(parameter);
    const bool delivered = value == spec.requirements.defaultValue; // which has more digits than settings keep
    settings.setReal(kSection, spec.key, delivered ? kInfinity : value);
}

} // namespace quobrix
