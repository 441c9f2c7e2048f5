#include "cli/program.h"

#include <fstream>
#include <sstream>

namespace quobrix::test {

std::string contentOf(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace quobrix::test
