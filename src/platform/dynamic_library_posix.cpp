#include "platform/dynamic_library.h"
#include "platform/system_error.h"
#include "texts/text.h"

#include <dlfcn.h>

namespace quobrix {

DynamicLibrary::DynamicLibrary(void* handle) : handle_(handle, [](void* library) { ::dlclose(library); }) {}

Result<DynamicLibrary> DynamicLibrary::open(const std::filesystem::path& path) {
    if (!path.is_absolute())
        return Error{ErrorKind::Unsupported, text(TextId::IsNotAnAbsolutePath, utf8(path))};
    std::error_code code;
    if (!std::filesystem::exists(path, code))
        return Error{ErrorKind::NotFound, text(TextId::PathDoesNotExist, utf8(path))};
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = ::dlerror();
        return Error{ErrorKind::Unsupported, ShownText::asItIs(reason != nullptr ? reason : utf8(path))};
    }
    return DynamicLibrary(handle);
}

void* DynamicLibrary::symbol(const char* name) const { return ::dlsym(handle_.get(), name); }

std::optional<std::string> fileVersion(const std::filesystem::path&) { return {}; }

} // namespace quobrix
