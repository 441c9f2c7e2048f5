#pragma once

#include "model/quobrix_document.h"
#include "tables/check.h"

#include <vector>

namespace quobrix {

/// Every requirement that the values of DOCUMENT's tables break, table by table and row by row. What a record owns is
/// as the logger recorded it: nothing of it is looked at, nor loaded.
std::vector<Finding> checkValues(TQuobrixDocument& document, const TextContext& context);

} // namespace quobrix
