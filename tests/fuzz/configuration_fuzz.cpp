#include "config/configuration_text.h"
#include "config/parameter_threshold_text.h"

#include <cstdlib>

using namespace quobrix;

/// Any text as a configuration, or as thresholds: what is taken for one is written and read the same again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto read = readConfigurationText(text)) {
        const auto again = readConfigurationText(configurationText(*read));
        if (!again || !(*again == *read))
            std::abort();
    }
    if (const auto read = readParameterThresholdText(text)) {
        const auto again = readParameterThresholdText(parameterThresholdText(*read));
        if (!again || *again != *read)
            std::abort();
    }
    return 0;
}
