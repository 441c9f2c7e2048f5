#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quobrix::test {

/// All bytes of FILE; none when it cannot be read.
inline std::string textOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void putText(const std::filesystem::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

} // namespace quobrix::test
