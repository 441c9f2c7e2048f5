#pragma once

#include "config/parameter_threshold_sheet.h"
#include "config/ui/table_dialog.h"

namespace quobrix {

/// The thresholds of the parameters, which are kept in the settings with OK; no logger knows of them.
class SetParameterThreshDialog final : public TableDialog {
    Q_OBJECT
public:
    SetParameterThreshDialog(const TableDialogContext& context, QWidget* parent);

private:
    bool take() override;
    ParameterThresholdSheet& thresholds();
};

} // namespace quobrix
