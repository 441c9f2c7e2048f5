#include "export/trip_type_rows.h"

#include "model/trip_log.h"
#include "tables/declare.h"
#include "texts/text.h"

#include <memory>
#include <utility>

namespace quobrix {
namespace {

constexpr std::array kColumns = kTypesOf<TTripLogStartTimeColumn, TTripLogEndTimeColumn, TTripLogDistanceColumn,
                                         TTripLogTripTypeColumn>; // then amount and purpose
constexpr std::array kMoreColumns = kTypesOf<TTripLogVinColumn, TTripLogDriverIDColumn, TTripLogDurationColumn>;

} // namespace

ExportContent tripTypeContent(std::span<const TableRows> trips, const std::vector<TripType>& types,
                              const TimeZone& zone) {
    ExportContent content{.title = text(TextId::TypeReport)};
    for (const TableRows& part : trips) {
        auto amount = std::make_shared<TripAmountColumn>(*part.table, types, zone);
        ExportRecords& records = content.records.emplace_back();
        for (const PersistentType* type : kColumns)
            records.columns.push_back({&part.table->columnOf(*type)});
        records.columns.push_back({amount.get()});
        records.columns.push_back({&part.table->column<TTripLogCommentsColumn>(), text(TextId::TypeReportPurpose)});
        for (const PersistentType* type : kMoreColumns)
            records.columns.push_back({&part.table->columnOf(*type)});
        records.rows = part.rows;
        content.made.push_back(std::move(amount));
    }
    return content;
}

} // namespace quobrix
