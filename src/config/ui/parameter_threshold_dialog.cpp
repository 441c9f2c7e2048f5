#include "config/ui/parameter_threshold_dialog.h"

namespace quobrix {

SetParameterThreshDialog::SetParameterThreshDialog(const TableDialogContext& context, QWidget* parent)
    : TableDialog(context,
                  {.name = QStringLiteral("SetParameterThreshDialog"),
                   .title = tr("Parameter Thresholds"),
                   .explanation = tr("The summary counts how long each parameter is above and below its threshold: a "
                                     "high coolant temperature, for instance, or a low battery."),
                   .resetTip = tr("Resets the thresholds to their original default values.")},
                  std::make_unique<ParameterThresholdSheet>(context.settings), parent) {
    addFileButtons(tr("Saves the thresholds as a text file."), tr("Takes the thresholds from such a file."),
                   {tr("Parameter Thresholds"), MessageId::NotThresholds,
                    [this] { return parameterThresholdText(thresholds().values()); },
                    [this](std::string_view text) -> Result<std::vector<CellEdit>> {
                        const Result<ThresholdValues> loaded = readParameterThresholdText(text);
                        if (!loaded)
                            return loaded.error();
                        return thresholds().showing(*loaded);
                    }});
}

ParameterThresholdSheet& SetParameterThreshDialog::thresholds() {
    return static_cast<ParameterThresholdSheet&>(sheet());
}

bool SetParameterThreshDialog::take() {
    thresholds().store(context().settings);
    return true;
}

} // namespace quobrix
