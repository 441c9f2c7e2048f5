#include "model/accident_log.h"

namespace quobrix {
namespace {

constexpr const PersistentType* kAccidentColumns[] = {
#define COLUMN(Name, ...) &Name::kType,
#include "model/accident_log.def"
#undef COLUMN
};

} // namespace

const TableSpec& TAccidentLogTable::spec() const {
    static constexpr TableSpec spec{kType, kAccidentColumns, {}, "Accident Log"};
    return spec;
}

const TableSpec& TAccidentLogSpeedBandsTable::spec() const {
    static constexpr TableSpec spec{
        kType, kTypesOf<TAccidentLogSpeedBandFromColumn, TAccidentLogSpeedBandToColumn>, {}, "Accident Speed Bands"};
    return spec;
}

} // namespace quobrix
