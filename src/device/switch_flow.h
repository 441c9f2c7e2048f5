#pragma once

#include "device/anomalous_vehicles.h"
#include "device/flow_context.h"

#include <vector>

namespace quobrix {

/// Single settings of a logger. Each is read from the logger, and written to that logger only.
class SwitchFlow {
public:
    explicit SwitchFlow(const FlowContext& context) : context_(context) {}

    // Each puts the switch to the other side.
    void toggleLed();
    void toggleVinMode();
    /// Armed, a logger clears the trouble codes of the next vehicle that it is plugged into.
    void toggleArmed();

    /// Lets a person set the alarm's volume.
    void setAlarm();
    /// Lets a person choose one of VEHICLES, or a normal one. Whether one was set.
    bool setAnomalousVehicle(const std::vector<AnomalousVehicle>& vehicles);
    /// How full the memory is; nothing if the logger does not tell.
    std::optional<MemoryInformation> memory();

private:
    struct Switch;

    void toggle(const Switch& which);

    FlowContext context_;
};

} // namespace quobrix
