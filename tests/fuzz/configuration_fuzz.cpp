#include "config/configuration_text.h"

#include <cstdlib>

using namespace quobrix;

/// Any text as a configuration: what is taken for one is written and read the same again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read = readConfigurationText(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!read)
        return 0;
    const auto again = readConfigurationText(configurationText(*read));
    if (!again || !(*again == *read))
        std::abort();
    return 0;
}
