#include "platform/paths.h"

#include <string>

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

namespace quobrix {

namespace {

std::filesystem::path folderFrom(const wchar_t* variable) {
    std::wstring value(32768, L'\0'); // the longest that Windows allows
    const DWORD length = GetEnvironmentVariableW(variable, value.data(), static_cast<DWORD>(value.size()));
    value.resize(length < value.size() ? length : 0);
    return value.empty() ? std::filesystem::path() : std::filesystem::path(value) / L"Quobrix";
}

} // namespace

std::filesystem::path executablePath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::filesystem::path userDataFolder() { return folderFrom(L"LOCALAPPDATA"); }
std::filesystem::path userConfigFolder() { return folderFrom(L"APPDATA"); }

} // namespace quobrix
