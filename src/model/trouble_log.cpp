#include "model/trouble_log.h"

#include "model/logs.h"

#include <fmt/format.h>

namespace quobrix {
namespace {

constexpr const PersistentType* kTroubleColumns[] = {
#define COLUMN(Name, ...) &Name::kType,
#include "model/trouble_log.def"
#undef COLUMN
};
static_assert(std::size(kTroubleColumns) == 19);

constexpr std::string_view kFuelSystemStatus[] = {
    "Open loop; has not yet satisfied conditions to go to closed loop.",
    "Closed loop; using oxygen sensor(s) as feedback for fuel control.",
    "Open loop due to driving conditions (power enrichment, deceleration enleanment).",
    "Open loop due to detected system fault.",
    "Closed loop, but fault with at least one oxygen sensor; may be using single oxygen sensor for fuel control.",
};

} // namespace

const TableSpec& TTroubleLogTable::spec() const {
    static const TableSpec spec{kType, kTroubleColumns, {}, logSpec(LogId::Troubles).title};
    return spec;
}

std::string FuelSystemStatusColumn::selection(std::int32_t code) const {
    if (code >= 0 && code < static_cast<std::int32_t>(std::size(kFuelSystemStatus)))
        return std::string(kFuelSystemStatus[code]);
    return fmt::format("{} fuel system status code. ({})", code >= 0 && code <= 7 ? "Unknown" : "Invalid", code);
}

Value TroubleCodeDescriptionColumn::value(RowIndex row) const { return std::string(description(row)); }

std::string_view TroubleCodeDescriptionColumn::textView(RowIndex row, const TextContext&, TextBuffer&) const {
    return description(row);
}

std::string_view TroubleCodeDescriptionColumn::description(RowIndex row) const {
    return troubleCodeDescription(table()->column<TTroubleLogTroubleCodeColumn>().at(row));
}

} // namespace quobrix
