#pragma once

#include "fuzz/walk_records.h"
#include "model/fuel_entries.h"
#include "model/logs.h"
#include "model/quobrix_document.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <algorithm>

namespace quobrix::test {

/// Looks at everything that STORE can load, as views, reports, plots and exports do, but at no more than some rows of
/// each table.
inline void walkObjects(ObjectStore& store) {
    constexpr std::size_t kRows = 20;
    static const TUnitSystem units;
    static const TimeZone zone;
    const TextContext context{units, zone};
    for (const ObjectId id : store.objectIds()) {
        PersistentObject* object = store.find(id);
        if (const auto* table = dynamic_cast<Table*>(object)) {
            const std::size_t rows = std::min(table->rowCount(), kRows);
            for (std::size_t i = 0; i < table->columnCount(); ++i)
                for (std::size_t row = 0; row < rows; ++row) {
                    (void)table->column(i).value(row);
                    (void)table->column(i).text(row, context);
                }
            for (const LogSpec& log : logs())
                if (log.table.id() == table->type().id())
                    walkRecords(log, *table, context);
        }
        if (const auto* entries = dynamic_cast<TFuelEntryTable*>(object))
            for (const std::string& vehicle : entries->vehicles())
                (void)entries->summaryOf(vehicle, context);
        if (object) {
            ByteWriter out;
            object->write(out);
        }
    }
}

} // namespace quobrix::test
