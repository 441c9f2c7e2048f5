#pragma once

#include "config/parameter_threshold_text.h"
#include "config/value_sheet.h"
#include "model/logger_tables.h"

namespace quobrix {

class Settings;

/// A threshold a row, each in the unit of its parameter.
class ParameterThresholdBase : public RealColumn {
public:
    UnitTypeId unitOf(RowIndex row) const override;
    Parsed parseIn(RowIndex row, std::string_view text, const TextContext& context) const override {
        return parseAs(unitOf(row), text, context);
    }
};

QUOBRIX_COLUMN_CLASS(ParameterThresholdColumn, ParameterThresholdBase, "ParameterThresholdColumn", D0, "Threshold",
                     "Summaries count how long the parameter is above and below this value.", Required)

class ParameterThresholdsTable final : public Table {
    QUOBRIX_TABLE_CLASS(ParameterThresholdsTable, false)
};

/// The thresholds of all parameters, as the settings have them.
class ParameterThresholdSheet final : public ValueSheet {
public:
    explicit ParameterThresholdSheet(const Settings& settings);

    ShownText rowTitle(RowIndex row) const override;
    std::vector<CellEdit> originals() override;
    ThresholdValues values() const;
    /// The edits after which the table has VALUES.
    std::vector<CellEdit> showing(const ThresholdValues& values) const;
    /// Keeps in SETTINGS what differs from them.
    void store(Settings& settings) const;
};

} // namespace quobrix
