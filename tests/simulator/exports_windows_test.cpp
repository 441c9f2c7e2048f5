/// What leaves the library is the maker's functions by their plain names, for whoever loads it by name.
#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

#include <windows.h>

namespace quobrix::sim {
namespace {

TEST(LibraryExports, AreTheMakersFunctionsAndNothingElse) {
    const std::set<std::string> expected{
#define ENTRY(name) "Quobrix" #name,
#include "device/logger_library.def"
#undef ENTRY
    };
    const auto* const image = reinterpret_cast<const std::uint8_t*>(GetModuleHandleW(L"Quobrix.dll"));
    ASSERT_NE(image, nullptr);
    const auto at = [&](DWORD offset) { return image + offset; };
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    const auto* const head = reinterpret_cast<const IMAGE_NT_HEADERS*>(at(static_cast<DWORD>(dos->e_lfanew)));
    const DWORD where = head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
    const auto* const exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(at(where));
    std::set<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        names.insert(reinterpret_cast<const char*>(at(reinterpret_cast<const DWORD*>(at(exports->AddressOfNames))[i])));
    EXPECT_EQ(names, expected);
}

} // namespace
} // namespace quobrix::sim
