#include "platform/dynamic_library.h"
#include "platform/system_error.h"
#include "texts/text.h"

#include <windows.h>

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

} // namespace quobrix
