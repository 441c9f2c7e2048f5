#pragma once

#include "config/configuration_flow.h"
#include "config/configuration_sheet.h"
#include "config/driving_history.h"
#include "config/reported_parameters.h"
#include "config/ui/table_dialog.h"

namespace quobrix {

class TTripLogTable;

/// A part of the configuration of the logger that FLOW has read, which is written back with OK. The whole of it can be
/// saved as a text file; of one that is loaded only the values of this dialog are taken.
class ConfigurationDialog : public TableDialog {
    Q_OBJECT
protected:
    /// FLOW must outlive the dialog, PRESENT is what it has read.
    ConfigurationDialog(const TableDialogContext& context, const TableDialogSpec& spec,
                        std::unique_ptr<ConfigurationSheet> sheet, ConfigurationFlow& flow,
                        const LoggerConfiguration& present, QWidget* parent);

    ConfigurationSheet& sheet() { return sheet_; }
    /// The figures of COLUMN in the first rows, as they are typed; kNoValue where there is none.
    template <std::size_t n>
    std::array<double, n> figures(std::size_t column) const;

private:
    bool take() override;

    ConfigurationSheet& sheet_; ///< the base's
    ConfigurationFlow& flow_;
};

class TCurrentSpeedBandsDialog final : public ConfigurationDialog {
public:
    TCurrentSpeedBandsDialog(const TableDialogContext& context, ConfigurationFlow& flow,
                             const LoggerConfiguration& present, QWidget* parent);
};

/// TBrakingBandsDialog and TAccelerationBandsDialog: thresholds beside the latest trips.
class ThresholdsDialog final : public ConfigurationDialog {
public:
    /// TRIPS must outlive the dialog.
    ThresholdsDialog(Maneuver maneuver, const TableDialogContext& context, const TTripLogTable& trips,
                     ConfigurationFlow& flow, const LoggerConfiguration& present, QWidget* parent);

private:
    DrivingHistory history_;
};

class TCurrentParametersDialog final : public ConfigurationDialog {
public:
    /// TRIPS must outlive the dialog.
    TCurrentParametersDialog(const TableDialogContext& context, const TTripLogTable& trips, ConfigurationFlow& flow,
                             const LoggerConfiguration& present, QWidget* parent);

private:
    void markUnsupported();

    ReportedParameters reported_;
};

} // namespace quobrix
