#include "model/print_range.h"

#include "model/logger_tables.h"
#include "texts/text.h"

#include <algorithm>

namespace quobrix {

Parsed PrintRangeColumn::parse(std::string_view typed, const TextContext& context) const {
    Parsed parsed = IntegerColumn::parse(typed, context);
    const auto* number = std::get_if<std::int64_t>(&parsed.value);
    if (!parsed.ok() || !number)
        return {{}, quobrix::text(TextId::NotARecordToPrint, std::string(typed))};
    const auto* range = static_cast<const PrintRangeTable*>(table());
    if (*number < 1 || (range && *number > static_cast<std::int64_t>(range->records())))
        return {{}, quobrix::text(TextId::NoSuchRecordToPrint, *number)};
    return parsed;
}

PrintRangeTable::PrintRangeTable(std::size_t records) : records_(records) {
    insertRows(0, 1);
    column<TLogPrintRangeFirstRecordColumn>().set(0, 1);
    column<TLogPrintRangeLastRecordColumn>().set(0, static_cast<std::int32_t>(records));
}

const TableSpec& PrintRangeTable::spec() const {
    static constexpr const PersistentType* kColumns[] = {&TLogPrintRangeFirstRecordColumn::kType,
                                                         &TLogPrintRangeLastRecordColumn::kType};
    static constexpr TableSpec kSpec{kType, kColumns, {}, SourceText("Print Range")};
    return kSpec;
}

std::pair<std::int64_t, std::int64_t> PrintRangeTable::range() const {
    return std::minmax<std::int64_t>(column<TLogPrintRangeFirstRecordColumn>().at(0),
                                     column<TLogPrintRangeLastRecordColumn>().at(0));
}

} // namespace quobrix
