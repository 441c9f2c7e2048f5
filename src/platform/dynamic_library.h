#pragma once

#include "base/result.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace quobrix {

/// A library loaded at run time; it stays loaded as long as this object lives.
class DynamicLibrary {
public:
    /// PATH is absolute: a bare name would be looked for in the current folder or the system's. NotFound when there is
    /// no such file, Unsupported when it cannot be loaded (another machine, a missing library).
    static Result<DynamicLibrary> open(const std::filesystem::path& path);

    /// The function or datum called NAME, or null.
    void* symbol(const char* name) const;

private:
    explicit DynamicLibrary(void* handle);

    std::shared_ptr<void> handle_;
};

/// The version in the resources of the library or program PATH ("1.2.0.3"); nothing where systems or files have none.
std::optional<std::string> fileVersion(const std::filesystem::path& path);

} // namespace quobrix
