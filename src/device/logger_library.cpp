#include "device/logger_library.h"

#include "base/path_text.h"
#include "platform/dynamic_library.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <string>
#include <system_error>
#include <utility>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)
constexpr const char* kFileName = "Quobrix.dll";
#else
constexpr const char* kFileName = "libQuobrix.so";
#endif

#define ENTRY(name) +1
constexpr int kFunctions = 0
#include "device/logger_library.def"
    ;
static_assert(kFunctions == 28, "the library exports 28 functions");
#undef ENTRY

/// One function of each signature that comes to nothing.
template <class Function>
struct Absent;
template <class... Arguments>
struct Absent<std::int32_t (*)(Arguments...)> {
    static std::int32_t call(Arguments...) { return kNoLibrary; }
};
template <class... Arguments>
struct Absent<const char* (*)(Arguments...)> {
    static const char* call(Arguments...) { return ""; }
};

} // namespace

LoggerFunctions absentLoggerFunctions() {
    LoggerFunctions functions;
#define ENTRY(name) functions.name = Absent<decltype(functions.name)>::call;
#include "device/logger_library.def"
#undef ENTRY
    return functions;
}

fs::path loggerLibraryPath(const fs::path& programFolder, const std::optional<std::string>& override) {
    if (!override || override->empty())
        return programFolder.empty() ? programFolder : programFolder / kFileName;
    std::error_code ignored;
    const fs::path path = fs::absolute(pathFromUtf8(*override), ignored);
    return fs::is_directory(path, ignored) ? path / kFileName : path;
}

Result<LoggerLibrary> loadLoggerLibrary(const fs::path& path) {
    if (path.empty())
        return Error{ErrorKind::NotFound, text(TextId::LibraryWithoutFolder)};
    const std::string name = utf8(path);
    auto module = DynamicLibrary::open(path);
    if (!module && module.error().kind == ErrorKind::NotFound)
        return Error{ErrorKind::NotFound, text(TextId::LibraryNotFound, name)};
    if (!module)
        return Error{module.error().kind, text(TextId::LibraryNotLoaded, name, module.error().detail)};

    LoggerLibrary library;
    const char* firstMissing = nullptr;
    int missing = 0;
#define ENTRY(name)                                                                                                    \
    library.functions.name = reinterpret_cast<decltype(library.functions.name)>(module->symbol("Quobrix" #name));      \
    if (library.functions.name == nullptr && missing++ == 0)                                                           \
        firstMissing = "Quobrix" #name;
#include "device/logger_library.def"
#undef ENTRY
    if (missing > 0)
        return Error{ErrorKind::Unsupported, text(TextId::LibraryLacksFunctions, name, missing, kFunctions,
                                                  firstMissing, missing == 1 ? "" : ", ...")};
    library.version = fileVersion(path).value_or(utf8(path.filename()));
    library.module = std::make_shared<DynamicLibrary>(std::move(*module));
    return library;
}

} // namespace quobrix
