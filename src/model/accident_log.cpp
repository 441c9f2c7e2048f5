#include "model/accident_log.h"

#include "model/logs.h"
#include "units/date_time.h"
#include "units/time_zone.h"

namespace quobrix {
namespace {

constexpr const PersistentType* kAccidentColumns[] = {
#define COLUMN(Name, ...) &Name::kType,
#include "model/accident_log.def"
#undef COLUMN
};

} // namespace

const TableSpec& TAccidentLogTable::spec() const {
    static const TableSpec spec{kType, kAccidentColumns, {}, logSpec(LogId::Accidents).title, {.removable = true}};
    return spec;
}

const TableSpec& TAccidentLogSpeedBandsTable::spec() const {
    static constexpr TableSpec spec{kType,
                                    kTypesOf<TAccidentLogSpeedBandFromColumn, TAccidentLogSpeedBandToColumn>,
                                    {},
                                    SourceText("Accident Speed Bands")};
    return spec;
}

std::string_view StopTimestampColumn::textView(RowIndex row, const TextContext& context, TextBuffer& buffer) const {
    if (!has(row))
        return {};
    buffer.words = timestampText(context.zone.toLocal(at(row)));
    return buffer.words;
}

} // namespace quobrix
