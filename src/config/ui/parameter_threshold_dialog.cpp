#include "config/ui/parameter_threshold_dialog.h"

namespace quobrix {

SetParameterThreshDialog::SetParameterThreshDialog(const TableDialogContext& context, QWidget* parent)
    : TableDialog(context,
                  {.name = QStringLiteral("SetParameterThreshDialog"),
                   .title = tr("Parameter Thresholds"),
                   .explanation = tr("The summary counts how long each parameter is above and below its threshold: a "
                                     "high coolant temperature, for instance, or a low battery."),
                   .resetTip = tr("Resets the thresholds to their original default values.")},
                  std::make_unique<ParameterThresholdSheet>(context.settings), parent) {}

bool SetParameterThreshDialog::take() {
    static_cast<ParameterThresholdSheet&>(sheet()).store(context().settings);
    return true;
}

} // namespace quobrix
