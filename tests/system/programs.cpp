#include "system/programs.h"

#include <algorithm>

namespace quobrix::test {

std::vector<std::string> Programs::files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
        if (const std::string name = entry.path().filename().string(); name != "ports" && name != "home")
            names.push_back(name);
    std::ranges::sort(names);
    return names;
}

} // namespace quobrix::test
