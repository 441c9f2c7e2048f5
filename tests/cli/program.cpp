#include "cli/program.h"

#include <atomic>
#include <fstream>
#include <sstream>

namespace quobrix::test {

std::string contentOf(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

std::pair<std::filesystem::path, std::filesystem::path> outputFiles(const std::filesystem::path& folder) {
    static std::atomic<int> number = 0;
    const std::filesystem::path out = folder / ("home." + std::to_string(++number));
    return {std::filesystem::path(out) += ".out", std::filesystem::path(out) += ".err"};
}

} // namespace quobrix::test
