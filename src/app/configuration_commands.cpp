#include "app/configuration_commands.h"

#include "app/main_frame.h"
#include "config/ui/configuration_dialogs.h"
#include "config/ui/parameter_threshold_dialog.h"
#include "device/ui/logger_session.h"
#include "model/quobrix_document.h"

namespace quobrix {

ConfigurationCommands::ConfigurationCommands(TQuobrixFrame& frame, LoggerSession& session)
    : frame_(frame), session_(session) {
    using enum CommandId;
    frame_.commands().handle(ParameterThresholds, [this] { SetParameterThreshDialog(context(), &frame_).exec(); });

    const auto add = [this](CommandId id, Show show) {
        frame_.commands().handle(
            id, [this, show = std::move(show)] { withConfiguration(show); }, [this] { return session_.hasLibrary(); });
    };
    const auto trips = [this]() -> const TTripLogTable& { return frame_.context().document.trips(); };
    add(SetSpeedBands, [this](ConfigurationFlow& flow, const LoggerConfiguration& present) {
        TCurrentSpeedBandsDialog(context(), flow, present, &frame_).exec();
    });
    add(SetBrakingThresholds, [this, trips](ConfigurationFlow& flow, const LoggerConfiguration& present) {
        ThresholdsDialog(Maneuver::Braking, context(), trips(), flow, present, &frame_).exec();
    });
    add(SetAccelerationThresholds, [this, trips](ConfigurationFlow& flow, const LoggerConfiguration& present) {
        ThresholdsDialog(Maneuver::Acceleration, context(), trips(), flow, present, &frame_).exec();
    });
    add(ChooseParameters, [this, trips](ConfigurationFlow& flow, const LoggerConfiguration& present) {
        TCurrentParametersDialog(context(), trips(), flow, present, &frame_).exec();
    });
}

void ConfigurationCommands::withConfiguration(const Show& show) {
    const FlowContext flows = session_.flows();
    if (!flows.ports().findLogger())
        return;
    ConfigurationFlow flow(flows.calls, flows.prompter, flows.progress);
    if (const std::optional<LoggerConfiguration> present = flow.read())
        show(flow, *present);
}

TableDialogContext ConfigurationCommands::context() const {
    const ViewContext& views = frame_.context();
    return {views.units, views.zone, views.settings, frame_.prompter(), views.windows};
}

} // namespace quobrix
