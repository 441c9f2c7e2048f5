#include "config/ui/configuration_dialogs.h"

#include "base/ui/qt_text.h"
#include "config/configuration_text.h"
#include "config/limit_pictures.h"
#include "model/logger_tables.h"
#include "model/trip_log.h"

namespace quobrix {
ConfigurationDialog::ConfigurationDialog(const TableDialogContext& context, const TableDialogSpec& spec,
                                         std::unique_ptr<ConfigurationSheet> sheet, ConfigurationFlow& flow,
                                         const LoggerConfiguration& present, QWidget* parent)
    : TableDialog(context, spec, (sheet->open(present), std::move(sheet)), parent),
      sheet_(static_cast<ConfigurationSheet&>(TableDialog::sheet())), flow_(flow) {
    addFileButtons(tr("Saves all that is set in the Quobrix as a text file."),
                   tr("Takes the values of this dialog from such a file."),
                   {toQt(flow.serialText()), MessageId::NotAConfiguration,
                    [this] { return configurationText(sheet_.configuration()); },
                    [this](std::string_view text) -> Result<std::vector<CellEdit>> {
                        const Result<LoggerConfiguration> loaded = readConfigurationText(text);
                        if (!loaded)
                            return loaded.error();
                        return sheet_.showing(*loaded);
                    }});
}

template <std::size_t n>
std::array<double, n> ConfigurationDialog::figures(std::size_t column) const {
    std::array<double, n> result;
    for (std::size_t row = 0; row < n; ++row) {
        const Value value = shownValue(column, static_cast<RowIndex>(row));
        const auto* figure = std::get_if<double>(&value);
        result[row] = figure ? *figure : kNoValue;
    }
    return result;
}

bool ConfigurationDialog::take() { return flow_.write(sheet_.configuration()); }

TCurrentSpeedBandsDialog::TCurrentSpeedBandsDialog(const TableDialogContext& context, ConfigurationFlow& flow,
                                                   const LoggerConfiguration& present, QWidget* parent)
    : ConfigurationDialog(
          context,
          {.name = QStringLiteral("TCurrentSpeedBandsDialog"),
           .title = tr("Speed Bands"),
           .explanation = tr("The Quobrix %1 counts how long the vehicle is driven in each of these speed bands.")
                              .arg(toQt(flow.serialText())),
           .resetTip = tr("Resets the speed band definitions to their original default values.")},
          makeSpeedBandsSheet(), flow, present, parent) {
    const std::size_t column = sheet().table().indexOf(TCurrentSpeedBandToColumn::kSpec.key);
    list().setCurrentCell(0, static_cast<int>(column));
    addPicture([this, column](Size room, const TextMeasure& measure) {
        return drawSpeedBands(figures<3>(column), this->context().text(), room, measure);
    });
}

ThresholdsDialog::ThresholdsDialog(Maneuver maneuver, const TableDialogContext& context, const TTripLogTable& trips,
                                   ConfigurationFlow& flow, const LoggerConfiguration& present, QWidget* parent)
    : ConfigurationDialog(
          context,
          maneuver == Maneuver::Braking
              ? TableDialogSpec{.name = QStringLiteral("TBrakingBandsDialog"),
                                .title = tr("Braking Thresholds"),
                                .explanation = tr("The Quobrix %1 counts a brake as hard, or as extreme, when the "
                                                  "vehicle loses speed faster than this.")
                                                   .arg(toQt(flow.serialText())),
                                .resetTip = tr("Resets the braking definitions to their original default values.")}
              : TableDialogSpec{.name = QStringLiteral("TAccelerationBandsDialog"),
                                .title = tr("Acceleration Thresholds"),
                                .explanation = tr("The Quobrix %1 counts an acceleration as hard, or as extreme, when "
                                                  "the vehicle gains speed faster than this.")
                                                   .arg(toQt(flow.serialText())),
                                .resetTip =
                                    tr("Resets the acceleration definitions to their original default values.")},
          maneuver == Maneuver::Braking ? makeBrakingSheet() : makeAccelerationSheet(), flow, present, parent) {
    addPicture([this, maneuver](Size room, const TextMeasure& measure) {
        return drawThresholds(maneuver, figures<2>(0), history_, this->context().text(), room, measure);
    });
    readInSlices([this, &trips] { return history_.readNext(trips); });
}

TCurrentParametersDialog::TCurrentParametersDialog(const TableDialogContext& context, const TTripLogTable& trips,
                                                   ConfigurationFlow& flow, const LoggerConfiguration& present,
                                                   QWidget* parent)
    : ConfigurationDialog(
          context,
          {.name = QStringLiteral("TCurrentParametersDialog"),
           .title = tr("Other Parameters"),
           .explanation =
               tr("The Quobrix %1 records the vehicle's speed on every trip, and besides speed up to four of "
                  "these parameters: the first four that are not the vehicle's speed.")
                   .arg(toQt(flow.serialText())),
           .resetTip = tr("Resets the parameter and sampling interval selections to their original default values.")},
          makeParametersSheet(), flow, present, parent),
      reported_(flow.serialText()) {
    // For what is said of parameters that the vehicle does not report.
    list().setMinimumWidth(list().minimumWidth() + fontMetrics().averageCharWidth() * 24);
    readInSlices([this, &trips] {
        const bool more = reported_.readNext(trips);
        if (!more)
            markUnsupported();
        return more;
    });
}

void TCurrentParametersDialog::markUnsupported() {
    auto& supported =
        static_cast<TCurrentParametersTable&>(sheet().table()).choices().column<TParametersIsSupportedColumn>();
    for (std::int32_t parameter = 1; parameter <= kParameterCount; ++parameter)
        supported.set(static_cast<RowIndex>(parameter), !reported_.isUnsupported(parameter));
}

} // namespace quobrix
