#include "platform/dynamic_library.h"
#include "platform/system_error.h"
#include "texts/text.h"

#include <cstddef>
#include <vector>

#include <fmt/format.h>
#include <windows.h>
#include <winver.h>

namespace quobrix {

DynamicLibrary::DynamicLibrary(void* handle)
    : handle_(handle, [](void* library) { FreeLibrary(static_cast<HMODULE>(library)); }) {}

Result<DynamicLibrary> DynamicLibrary::open(const std::filesystem::path& path) {
    if (!path.is_absolute())
        return Error{ErrorKind::Unsupported, text(TextId::IsNotAnAbsolutePath, utf8(path))};
    std::error_code code;
    if (!std::filesystem::exists(path, code))
        return Error{ErrorKind::NotFound, text(TextId::PathDoesNotExist, utf8(path))};
    // The library's own folder is searched for what it needs; the current folder is not.
    const HMODULE handle =
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (handle == nullptr)
        return Error{ErrorKind::Unsupported, lastSystemError(SourceText("load"), path).detail};
    return DynamicLibrary(handle);
}

void* DynamicLibrary::symbol(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_.get()), name));
}

std::optional<std::string> fileVersion(const std::filesystem::path& path) {
    std::vector<std::byte> resource(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    VS_FIXEDFILEINFO* version = nullptr;
    UINT size = 0;
    if (resource.empty() ||
        !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()) ||
        !VerQueryValueW(resource.data(), L"\\", reinterpret_cast<void**>(&version), &size) || size < sizeof *version)
        return {};
    return fmt::format("{}.{}.{}.{}", HIWORD(version->dwFileVersionMS), LOWORD(version->dwFileVersionMS),
                       HIWORD(version->dwFileVersionLS), LOWORD(version->dwFileVersionLS));
}

} // namespace quobrix
