#include "model/accident_log.h"

namespace quobrix {
namespace {

constexpr const PersistentType* kColumns[] = {
#define COLUMN(Name, Base, Key, Unit, Heading, Tooltip) &Name::kType,
#include "model/accident_log.def"
#undef COLUMN
};

} // namespace

const TableSpec& TAccidentLogTable::spec() const {
    static constexpr TableSpec spec{kType, kColumns, {}};
    return spec;
}

const TableSpec& TAccidentLogSpeedBandsTable::spec() const {
    static constexpr TableSpec spec{
        kType, kTypesOf<TAccidentLogSpeedBandFromColumn, TAccidentLogSpeedBandToColumn>, {}};
    return spec;
}

} // namespace quobrix
