#include "units/unit_system_file.h"

#include <cstdlib>

/// What is read as a unit system must be usable, and must read the same after it was written.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quobrix;
    Result<UnitChoices> read = decodeUnitSystem("fuzz", {data, size});
    if (!read)
        return 0;
    const Result<UnitChoices> again = decodeUnitSystem("fuzz", encodeUnitSystem(*read));
    if (!again || *again != *read)
        std::abort();
    TUnitSystem system;
    system.replace(*std::move(read));
    for (const UnitTypeRecord& type : allUnitTypes()) {
        if (system.formatValueWithUnits(type.id, 1234.5678).empty())
            std::abort();
    }
    return 0;
}
