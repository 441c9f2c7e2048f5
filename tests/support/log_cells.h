#pragma once

#include "model/quobrix_document.h"
#include "tables/stored_cells.h"

#include <vector>

namespace quobrix::test {

/// All cells of the logs as they would lie in a file.
inline std::vector<Bytes> logCells(TQuobrixDocument& document) {
    std::vector<Bytes> cells;
    for (const LogSpec& log : logs())
        if (const Table* table = document.log(log))
            cells.push_back(wholeRows(*table, {{0, table->rowCount()}}));
    return cells;
}

} // namespace quobrix::test
