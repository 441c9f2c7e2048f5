#include "config/limit_columns.h"

namespace quobrix {

const TableSpec& BrakingThresholdsTable::spec() const {
    static constexpr TableSpec spec{kType, kTypesOf<BrakingThresholdColumn>, {}, SourceText("Braking Thresholds")};
    return spec;
}

const TableSpec& AccelerationThresholdsTable::spec() const {
    static constexpr TableSpec spec{
        kType, kTypesOf<AccelerationThresholdColumn>, {}, SourceText("Acceleration Thresholds")};
    return spec;
}

} // namespace quobrix
