#include "model/accident_log.h"

#include "model/logs.h"

namespace quobrix {
namespace {

constexpr const PersistentType* kAccidentColumns[] = {
#define COLUMN(Name, ...) &Name::kType,
#include "model/accident_log.def"
#undef COLUMN
};

} // namespace

const TableSpec& TAccidentLogTable::spec() const {
    static const TableSpec spec{kType, kAccidentColumns, {}, logSpec(LogId::Accidents).title};
    return spec;
}

const TableSpec& TAccidentLogSpeedBandsTable::spec() const {
    static constexpr TableSpec spec{kType,
                                    kTypesOf<TAccidentLogSpeedBandFromColumn, TAccidentLogSpeedBandToColumn>,
                                    {},
                                    SourceText("Accident Speed Bands")};
    return spec;
}

} // namespace quobrix
