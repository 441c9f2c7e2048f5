#include "model/value_check.h"

namespace quobrix {

std::vector<Finding> checkValues(TQuobrixDocument& document, const TextContext& context) {
    ObjectStore& store = document.store();
    std::vector<const Table*> tables;
    for (const LogSpec& log : logs())
        tables.push_back(document.log(log));
    tables.insert(tables.end(), {&document.vehicles(), &document.loggers(), &document.drivers(), document.fuelEntries(),
                                 store.existingSingleton<TCurrentSpeedBandsTable>(),
                                 store.existingSingleton<TCurrentParametersTable>()});
    std::vector<Finding> findings;
    for (const Table* table : tables) {
        if (!table)
            continue;
        std::vector<Finding> found = TableChecker(*table).all(context);
        findings.insert(findings.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    }
    return findings;
}

} // namespace quobrix
