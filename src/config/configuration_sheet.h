#pragma once

#include "config/value_sheet.h"
#include "device/logger_status.h"

#include <memory>
#include <vector>

namespace quobrix {

/// What one dialog shows and edits of a logger's configuration.
///
/// The table holds base units and the program's own numbers, a configuration the logger's. A value that is not edited
/// is never converted back: it is taken as it lies in the configuration that it came from, unknown codes included.
class ConfigurationSheet : public ValueSheet {
public:
    /// Shows CONFIGURATION, as it was read from the logger.
    void open(const LoggerConfiguration& configuration);
    /// The edits after which the table shows CONFIGURATION, which the sheet remembers.
    std::vector<CellEdit> showing(const LoggerConfiguration& configuration);
    /// What was read, with the values of the table.
    LoggerConfiguration configuration() const;
    std::vector<CellEdit> originals() override;

protected:
    using ValueSheet::ValueSheet;

    struct Cell {
        std::size_t column;
        RowIndex row;
    };
    /// The cells that stand for a value of a configuration.
    virtual std::vector<Cell> cells() const = 0;
    virtual Value shown(const LoggerConfiguration& configuration, Cell cell) const = 0;
    virtual void put(const Value& value, Cell cell, LoggerConfiguration& configuration) const = 0;
    virtual void copy(const LoggerConfiguration& from, Cell cell, LoggerConfiguration& to) const = 0;

private:
    std::vector<LoggerConfiguration> sources_; ///< what was read, and whatever was shown after it
};

/// Speed bands: TCurrentSpeedBandsTable.
std::unique_ptr<ConfigurationSheet> makeSpeedBandsSheet();
/// The two thresholds for braking, or for speeding up, of a table with one column.
std::unique_ptr<ConfigurationSheet> makeBrakingSheet();
std::unique_ptr<ConfigurationSheet> makeAccelerationSheet();
/// Five slots: TCurrentParametersTable.
std::unique_ptr<ConfigurationSheet> makeParametersSheet();

} // namespace quobrix
