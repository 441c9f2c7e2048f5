#include "texts/translation.h"

#include <cstdlib>

/// What is read as a translation must be usable for any text and number.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quobrix;
    const Result<std::shared_ptr<const Catalogue>> read = readTranslation({data, size});
    if (!read)
        return 0;
    for (const char* english : {"saved", "trip", "{} part of {} could not be recovered, as listed; keep it"})
        for (const std::uint64_t count : {0, 1, 2, 5, 21, 112}) {
            (void)(*read)->find({}, english, count);
            (void)(*read)->find("context", english, {});
        }
    return 0;
}
