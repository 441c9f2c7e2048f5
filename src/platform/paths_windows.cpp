#include "platform/paths.h"

#include "base/path_text.h"
#include "platform/environment.h"

#include <string>
#include <system_error>

#include <windows.h>

namespace quobrix {

namespace {

std::filesystem::path folderFrom(const char* variable) {
    const std::optional<std::string> value = environmentVariable(variable);
    return value ? pathFromUtf8(*value) / L"Quobrix" : std::filesystem::path();
}

} // namespace

std::filesystem::path executablePath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::filesystem::path comparablePath(const std::filesystem::path& path) {
    std::error_code failed;
    const std::filesystem::path real = std::filesystem::weakly_canonical(path, failed);
    std::wstring name = (failed ? path : real).wstring();
    CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
    return name;
}

std::filesystem::path userDataFolder() { return folderFrom("LOCALAPPDATA"); }
std::filesystem::path userConfigFolder() { return folderFrom("APPDATA"); }

} // namespace quobrix
