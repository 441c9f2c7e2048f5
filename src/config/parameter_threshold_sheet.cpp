#include "config/parameter_threshold_sheet.h"

#include "model/parameter_thresholds.h"

#include <algorithm>

namespace quobrix {
namespace {

std::int32_t parameterOf(RowIndex row) { return static_cast<std::int32_t>(row) + 1; }

} // namespace

UnitTypeId ParameterThresholdBase::unitOf(RowIndex row) const { return parameterThresholdSpec(parameterOf(row)).unit; }

const TableSpec& ParameterThresholdsTable::spec() const {
    static constexpr TableSpec spec{kType, kTypesOf<ParameterThresholdColumn>, {}, SourceText("Parameter Thresholds")};
    return spec;
}

ParameterThresholdSheet::ParameterThresholdSheet(const Settings& settings)
    : ValueSheet(std::make_unique<ParameterThresholdsTable>(), kParameterCount) {
    auto& column = table().column<ParameterThresholdColumn>();
    for (RowIndex row = 0; row < kParameterCount; ++row)
        column.set(row, parameterThreshold(settings, parameterOf(row)));
}

ShownText ParameterThresholdSheet::rowTitle(RowIndex row) const { return parameterChoiceName(parameterOf(row)); }

std::vector<CellEdit> ParameterThresholdSheet::originals() {
    ThresholdValues delivered;
    for (RowIndex row = 0; row < kParameterCount; ++row)
        delivered[row] = parameterThresholdSpec(parameterOf(row)).requirements.defaultValue;
    return showing(delivered);
}

ThresholdValues ParameterThresholdSheet::values() const {
    ThresholdValues result;
    std::ranges::copy(table().column<ParameterThresholdColumn>().values(), result.begin());
    return result;
}

std::vector<CellEdit> ParameterThresholdSheet::showing(const ThresholdValues& values) const {
    std::vector<CellEdit> edits;
    for (RowIndex row = 0; row < kParameterCount; ++row)
        edits.push_back({0, row, values[row]});
    return edits;
}

void ParameterThresholdSheet::store(Settings& settings) const {
    const auto& column = table().column<ParameterThresholdColumn>();
    for (RowIndex row = 0; row < kParameterCount; ++row)
        if (column.at(row) != parameterThreshold(settings, parameterOf(row)))
            setParameterThreshold(settings, parameterOf(row), column.at(row));
}

} // namespace quobrix
