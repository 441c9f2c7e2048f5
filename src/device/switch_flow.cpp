#include "device/switch_flow.h"

#include "texts/text.h"

#include <algorithm>

namespace quobrix {

struct SwitchFlow::Switch {
    LoggerCommand on, off;
    Reply<bool> (LockedLogger::*isOn)();
    ResultCode (LockedLogger::*set)(bool);
};

void SwitchFlow::toggleLed() {
    toggle(
        {LoggerCommand::EnableLed, LoggerCommand::DisableLed, &LockedLogger::ledIsEnabled, &LockedLogger::enableLed});
}

void SwitchFlow::toggleVinMode() {
    toggle({LoggerCommand::EnableVinMode, LoggerCommand::DisableVinMode, &LockedLogger::vinModeIsEnabled,
            &LockedLogger::enableVinMode});
}

void SwitchFlow::toggleArmed() {
    toggle({LoggerCommand::Arm, LoggerCommand::Disarm, &LockedLogger::isArmed, &LockedLogger::arm});
}

void SwitchFlow::toggle(const Switch& which) {
    const std::optional<LoggerStatus> found = context_.ports().findLogger();
    if (!found)
        return;
    Reporter reporter = context_.reporter();
    Reply<bool> present;
    const LoggerOutcome nothing;
    const auto outcome =
        context_.calls.get(Reporter::title(LoggerCommand::GetConfiguration), [&](LockedLogger& logger) {
            present = (logger.*which.isOn)();
            return logger.outcome(present.code);
        });
    if (!outcome || (!outcome->ok() && !reporter.report(which.on, *outcome)))
        return;
    reporter.runOn(found->serialText, present.value ? which.off : which.on,
                   [&](LockedLogger& logger) { return (logger.*which.set)(!present.value); });
}

void SwitchFlow::setAlarm() {
    const std::optional<LoggerStatus> found = context_.ports().findLogger();
    if (!found)
        return;
    AlarmForm form;
    Reporter reporter = context_.reporter();
    if (!reporter.runOn(found->serialText, LoggerCommand::GetAlarm, [&](LockedLogger& logger) {
            const Reply<LoggerIdentity> identity = logger.identity();
            const Reply<std::int32_t> volume = logger.beepVolume();
            form = {volume.value, hasVolumes(identity.value.productNumber) ? 10 : 1};
            return identity.ok() ? volume.code : identity.code;
        }))
        return;
    if (context_.prompter.fillIn(form))
        reporter.runOn(found->serialText, form.volume != 0 ? LoggerCommand::EnableAlarm : LoggerCommand::DisableAlarm,
                       [&](LockedLogger& logger) { return logger.setBeepVolume(form.volume); });
}

bool SwitchFlow::setAnomalousVehicle(const std::vector<AnomalousVehicle>& vehicles) {
    const std::optional<LoggerStatus> found = context_.ports().findLogger();
    if (!found)
        return false;
    Reporter reporter = context_.reporter();
    std::int32_t present = kNormalVehicle;
    if (!reporter.runOn(found->serialText, LoggerCommand::GetConfiguration, [&](LockedLogger& logger) {
            const Reply<std::int32_t> carType = logger.carType();
            present = carType.value;
            return carType.code;
        }))
        return false;
    std::vector<AnomalousVehicle> choices{{kNormalVehicle, text(TextId::NormalVehicle)}};
    choices.insert(choices.end(), vehicles.begin(), vehicles.end());
    auto chosen = std::ranges::find(choices, present, &AnomalousVehicle::carType);
    if (chosen == choices.end() && present != kAnomalousVehicleDetected) // what is not to be changed can stay
        choices.push_back({present, text(TextId::OtherAnomalousVehicle, present)});
    chosen = std::ranges::find(choices, present, &AnomalousVehicle::carType);
    const auto preset = chosen == choices.end() ? 0 : static_cast<std::size_t>(chosen - choices.begin());
    std::vector<std::string> names;
    for (const AnomalousVehicle& vehicle : choices)
        names.push_back(vehicle.name);
    const std::optional<std::size_t> choice = context_.prompter.choose(SourceText("vehicle"), names, preset);
    if (!choice || *choice >= choices.size())
        return false;
    return reporter.runOn(found->serialText, LoggerCommand::SetCarType,
                          [&](LockedLogger& logger) { return logger.setCarType(choices[*choice].carType); });
}

std::optional<MemoryInformation> SwitchFlow::memory() {
    const std::optional<LoggerStatus> found = context_.ports().findLogger();
    MemoryInformation memory;
    if (!found || !context_.reporter().runOn(found->serialText, LoggerCommand::GetMemory, [&](LockedLogger& logger) {
            const Reply<MemoryInformation> reply = logger.memoryInformation();
            memory = reply.value;
            return reply.code;
        }))
        return {};
    return memory;
}

} // namespace quobrix
