#include "settings/ini_text.h"

#include <cstdlib>

using namespace quobrix;

/// Any text as a settings file: what is read and written back is read the same again, and a value set is found.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    IniText settings(std::string_view(reinterpret_cast<const char*>(data), size));
    settings.setValue("Section", "Name", "Value");
    const IniText again(settings.text());
    if (again.text() != settings.text() || again.value("Section", "Name") != "Value")
        std::abort();
    return 0;
}
