#include "platform/dynamic_library.h"
#include "platform/system_error.h"

#include <dlfcn.h>

namespace quobrix {

DynamicLibrary::DynamicLibrary(void* handle) : handle_(handle, [](void* library) { ::dlclose(library); }) {}

Result<DynamicLibrary> DynamicLibrary::open(const std::filesystem::path& path) {
    if (!path.is_absolute())
        return Error{ErrorKind::Unsupported, utf8(path) + " is not an absolute path"};
    std::error_code code;
    if (!std::filesystem::exists(path, code))
        return Error{ErrorKind::NotFound, utf8(path) + " does not exist"};
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = ::dlerror();
        return Error{ErrorKind::Unsupported, reason != nullptr ? reason : utf8(path)};
    }
    return DynamicLibrary(handle);
}

void* DynamicLibrary::symbol(const char* name) const { return ::dlsym(handle_.get(), name); }

} // namespace quobrix
