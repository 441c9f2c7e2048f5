#include "config/configuration_sheet.h"

#include "config/configuration_codes.h"
#include "config/limit_columns.h"
#include "model/logger_tables.h"
#include "texts/text.h"

#include <algorithm>
#include <cmath>

namespace quobrix {

void ConfigurationSheet::open(const LoggerConfiguration& configuration) {
    sources_.clear();
    for (const CellEdit& cell : showing(configuration))
        table().column(cell.column).setValue(cell.row, cell.value);
}

std::vector<CellEdit> ConfigurationSheet::showing(const LoggerConfiguration& configuration) {
    sources_.push_back(configuration);
    std::vector<CellEdit> edits;
    for (const Cell cell : cells())
        edits.push_back({cell.column, cell.row, shown(configuration, cell)});
    return edits;
}

LoggerConfiguration ConfigurationSheet::configuration() const {
    LoggerConfiguration result = sources_.front();
    for (const Cell cell : cells()) {
        const Value value = table().column(cell.column).value(cell.row);
        const auto shows = [&](const LoggerConfiguration& source) { return shown(source, cell) == value; };
        if (shows(sources_.front()))
            continue;
        const auto source = std::find_if(sources_.rbegin(), sources_.rend(), shows); // the newest one
        if (source != sources_.rend())
            copy(*source, cell, result);
        else
            put(value, cell, result);
    }
    return result;
}

std::vector<CellEdit> ConfigurationSheet::originals() {
    return showing(withDefaultParameters(withDefaultLimits(sources_.front())));
}

namespace {

/// In the unit of the library: with fewer digits than a conversion leaves of its own, so that 65 stays 65.
double rounded(double value) { return std::round(value * 1e9) / 1e9; }

/// One real a row, in one column.
class LimitsSheet : public ConfigurationSheet {
protected:
    /// The first LIMITS of ROWS stand for values.
    LimitsSheet(std::unique_ptr<Table> table, RowIndex rows, const PersistentType& column, RowIndex limits, UnitId unit)
        : ConfigurationSheet(std::move(table), rows), column_(this->table().indexOf(column.name)), limits_(limits),
          unit_(unitRecord(unit)) {}

    virtual double& limit(LoggerConfiguration& configuration, RowIndex row) const = 0;

private:
    std::vector<Cell> cells() const override {
        std::vector<Cell> result;
        for (RowIndex row = 0; row < limits_; ++row)
            result.push_back({column_, row});
        return result;
    }
    Value shown(const LoggerConfiguration& configuration, Cell cell) const override {
        LoggerConfiguration copy = configuration;
        const double value = limit(copy, cell.row);
        return std::isfinite(value) ? Value(unit_.toBase(value)) : Value();
    }
    void put(const Value& value, Cell cell, LoggerConfiguration& configuration) const override {
        const auto* base = std::get_if<double>(&value);
        limit(configuration, cell.row) = base ? rounded((*base + unit_.offset) * unit_.factor) : 0;
    }
    void copy(const LoggerConfiguration& from, Cell cell, LoggerConfiguration& to) const override {
        LoggerConfiguration source = from;
        limit(to, cell.row) = limit(source, cell.row);
    }

    const std::size_t column_;
    const RowIndex limits_;
    const UnitRecord& unit_; ///< of the library
};

class SpeedBandsSheet final : public LimitsSheet {
public:
    SpeedBandsSheet()
        : LimitsSheet(std::make_unique<TCurrentSpeedBandsTable>(), QUOBRIX_BAND_COUNT, TCurrentSpeedBandToColumn::kType,
                      QUOBRIX_BAND_COUNT - 1, UnitId::MilePerHour) {}
    ShownText rowTitle(RowIndex row) const override { return text(TextId::BandNumber, row + 1); }

private:
    double& limit(LoggerConfiguration& configuration, RowIndex row) const override {
        return configuration.bandLimits[row];
    }
};

class ThresholdsSheet final : public LimitsSheet {
public:
    using Thresholds = std::array<double, 2> LoggerConfiguration::*;
    ThresholdsSheet(std::unique_ptr<Table> table, const PersistentType& column, Thresholds thresholds,
                    std::array<SourceText, 2> titles)
        : LimitsSheet(std::move(table), 2, column, 2, UnitId::MetrePerSecondSquared), thresholds_(thresholds),
          titles_(titles) {}
    ShownText rowTitle(RowIndex row) const override { return text(titles_[row]); }

private:
    double& limit(LoggerConfiguration& configuration, RowIndex row) const override {
        return (configuration.*thresholds_)[row];
    }

    Thresholds thresholds_;
    std::array<SourceText, 2> titles_;
};

class ParametersSheet final : public ConfigurationSheet {
public:
    ParametersSheet() : ConfigurationSheet(std::make_unique<TCurrentParametersTable>(), QUOBRIX_SLOT_COUNT) {}
    ShownText rowTitle(RowIndex row) const override { return text(TextId::ParameterNumber, row + 1); }

private:
    enum { Parameter, Interval };
    std::vector<Cell> cells() const override {
        std::vector<Cell> result;
        for (RowIndex row = 0; row < QUOBRIX_SLOT_COUNT; ++row) {
            result.push_back({Parameter, row});
            result.push_back({Interval, row});
        }
        return result;
    }
    static std::int32_t& code(LoggerConfiguration& configuration, Cell cell) {
        return cell.column == Parameter ? configuration.parameters[cell.row] : configuration.intervals[cell.row];
    }
    Value shown(const LoggerConfiguration& configuration, Cell cell) const override {
        LoggerConfiguration copy = configuration;
        const std::int32_t read = code(copy, cell);
        return std::int64_t{cell.column == Parameter ? parameterOfCode(read) : secondsOfIntervalCode(read)};
    }
    void put(const Value& value, Cell cell, LoggerConfiguration& configuration) const override {
        const auto* chosen = std::get_if<std::int64_t>(&value);
        const auto number = static_cast<std::int32_t>(chosen ? *chosen : 0);
        code(configuration, cell) = cell.column == Parameter ? codeOfParameter(number) : intervalCodeOfSeconds(number);
    }
    void copy(const LoggerConfiguration& from, Cell cell, LoggerConfiguration& to) const override {
        LoggerConfiguration source = from;
        code(to, cell) = code(source, cell);
    }
};

} // namespace

std::unique_ptr<ConfigurationSheet> makeSpeedBandsSheet() { return std::make_unique<SpeedBandsSheet>(); }

std::unique_ptr<ConfigurationSheet> makeBrakingSheet() {
    return std::make_unique<ThresholdsSheet>(std::make_unique<BrakingThresholdsTable>(), BrakingThresholdColumn::kType,
                                             &LoggerConfiguration::brakeThresholds,
                                             std::array{SourceText("Hard Braking"), SourceText("Extreme Braking")});
}

std::unique_ptr<ConfigurationSheet> makeAccelerationSheet() {
    return std::make_unique<ThresholdsSheet>(
        std::make_unique<AccelerationThresholdsTable>(), AccelerationThresholdColumn::kType,
        &LoggerConfiguration::accelerationThresholds,
        std::array{SourceText("Hard Acceleration"), SourceText("Extreme Acceleration")});
}

std::unique_ptr<ConfigurationSheet> makeParametersSheet() { return std::make_unique<ParametersSheet>(); }

} // namespace quobrix
