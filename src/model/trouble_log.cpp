#include "model/trouble_log.h"

#include "model/logs.h"
#include "texts/text.h"

namespace quobrix {
namespace {

constexpr const PersistentType* kTroubleColumns[] = {
#define COLUMN(Name, ...) &Name::kType,
#include "model/trouble_log.def"
#undef COLUMN
};
static_assert(std::size(kTroubleColumns) == 20);

constexpr SourceText kFuelSystemStatus[] = {
    SourceText("Open loop; has not yet satisfied conditions to go to closed loop."),
    SourceText("Closed loop; using oxygen sensor(s) as feedback for fuel control."),
    SourceText("Open loop due to driving conditions (power enrichment, deceleration enleanment)."),
    SourceText("Open loop due to detected system fault."),
    SourceText(
        "Closed loop, but fault with at least one oxygen sensor; may be using single oxygen sensor for fuel control."),
};

} // namespace

const TableSpec& TTroubleLogTable::spec() const {
    static const TableSpec spec{kType, kTroubleColumns, {}, logSpec(LogId::Troubles).title, {.removable = true}};
    return spec;
}

std::vector<Selection> FuelSystemStatusColumn::selections() const {
    std::vector<Selection> all;
    for (std::size_t code = 0; code < std::size(kFuelSystemStatus); ++code)
        all.push_back({static_cast<std::int64_t>(code), quobrix::text(kFuelSystemStatus[code])});
    return all;
}

std::string FuelSystemStatusColumn::selection(std::int32_t code) const {
    if (code >= 0 && code < static_cast<std::int32_t>(std::size(kFuelSystemStatus)))
        return quobrix::text(kFuelSystemStatus[code]);
    return code >= 0 && code <= 7 ? quobrix::text(TextId::UnknownFuelSystemStatus, code)
                                  : quobrix::text(TextId::InvalidFuelSystemStatus, code);
}

Value TroubleCodeDescriptionColumn::value(RowIndex row) const { return std::string(description(row).english()); }

std::string_view TroubleCodeDescriptionColumn::textView(RowIndex row, const TextContext&, TextBuffer& buffer) const {
    return textIn(buffer.words, description(row));
}

SourceText TroubleCodeDescriptionColumn::description(RowIndex row) const {
    return troubleCodeDescription(table()->column<TTroubleLogTroubleCodeColumn>().at(row));
}

} // namespace quobrix
