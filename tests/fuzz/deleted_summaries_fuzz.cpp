#include "summary/deleted_summaries.h"

#include <cstdlib>

using namespace quobrix;

/// Any bytes as the file of deleted summaries: what is read of it is written and read the same again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto keys = readDeletedSummaries({data, size});
    if (!keys)
        return 0;
    const auto again = readDeletedSummaries(deletedSummariesBytes(*keys));
    if (!again || *again != *keys)
        std::abort();
    return 0;
}
