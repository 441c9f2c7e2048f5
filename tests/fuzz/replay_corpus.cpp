#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs a fuzz target on every file of a folder; it aborts where it finds a fault.
int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream in(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        std::printf("%s\n", entry.path().filename().string().c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++files;
    }
    return files > 0 ? 0 : 1;
}
