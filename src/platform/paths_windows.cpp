#include "platform/paths.h"

#include "base/path_text.h"
#include "platform/environment.h"

#include <string>

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

std::filesystem::path userDataFolder() { return folderFrom("LOCALAPPDATA"); }
std::filesystem::path userConfigFolder() { return folderFrom("APPDATA"); }

} // namespace quobrix
