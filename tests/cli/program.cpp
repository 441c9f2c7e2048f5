#include "cli/program.h"

#include <atomic>

namespace quobrix::test {

std::pair<std::filesystem::path, std::filesystem::path> outputFiles(const std::filesystem::path& folder) {
    static std::atomic<int> number = 0;
    const std::filesystem::path out = folder / ("home." + std::to_string(++number));
    return {std::filesystem::path(out) += ".out", std::filesystem::path(out) += ".err"};
}

} // namespace quobrix::test
