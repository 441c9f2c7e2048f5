#include "summary/summary_table.h"

#include "base/utf8.h"
#include "texts/text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

// A file may hold anything.
std::string known(const SummaryText& name, const SummaryText& key) {
    return name.known()  ? validUtf8(name.view())
           : key.known() ? validUtf8(key.view())
                         : std::string(text(TextId::StatisticsUnknown));
}

std::int32_t seconds(std::int64_t time) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(time, 0, std::numeric_limits<std::int32_t>::max()));
}

double figure(float value) { return std::isfinite(value) ? value : kNoValue; }

template <class Column, class Value>
void fill(const Table& table, std::span<const SummaryRecord> records, Value (*valueOf)(const SummaryRecord&)) {
    std::vector<Value> values;
    values.reserve(records.size());
    for (const SummaryRecord& record : records)
        values.push_back(valueOf(record));
    table.column<Column>().setAll(std::move(values));
}

constexpr const PersistentType* kSummaryColumns[] = {
#define COLUMN(Name, Base, Unit, Heading, Tooltip, Of) &Name::kType,
#include "summary/summary_table.def"
};

} // namespace

const TableSpec& SummaryTable::spec() const {
    static constexpr TableSpec spec{kType, kSummaryColumns, {}, SourceText("Summary Log")};
    return spec;
}

std::unique_ptr<SummaryTable> SummaryTable::of(std::span<const SummaryRecord> records) {
    auto table = std::make_unique<SummaryTable>();
    table->insertRows(0, records.size());
#define COLUMN(Name, Base, Unit, Heading, Tooltip, Of)                                                                 \
    fill<Name>(                                                                                                        \
        *table, records, +[](const SummaryRecord& r) { return Of; });
#include "summary/summary_table.def"
    return table;
}

} // namespace quobrix
