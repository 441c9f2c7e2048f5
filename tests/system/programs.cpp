#include "system/programs.h"

namespace quobrix::test {

std::vector<std::string> Programs::files() const {
    std::vector<std::string> names = folder_.names();
    std::erase_if(names, [](const std::string& name) { return name == "ports" || name == "home"; });
    return names;
}

} // namespace quobrix::test
