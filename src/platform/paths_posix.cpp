#include "platform/paths.h"

#include <cstdlib>
#include <system_error>

#include <pwd.h>
#include <unistd.h>

namespace quobrix {

namespace {

std::filesystem::path home() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
        return home;
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

/// A folder of the XDG Base Directory rules: the variable counts only when it holds an absolute path.
std::filesystem::path baseFolder(const char* variable, const char* fallback) {
    if (const char* value = std::getenv(variable); value != nullptr && std::filesystem::path(value).is_absolute())
        return std::filesystem::path(value) / "quobrix";
    const std::filesystem::path user = home();
    return user.empty() ? user : user / fallback / "quobrix";
}

} // namespace

std::filesystem::path executablePath() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

std::filesystem::path comparablePath(const std::filesystem::path& path) {
    std::error_code failed;
    std::filesystem::path real = std::filesystem::weakly_canonical(path, failed);
    return failed ? path : real;
}

std::filesystem::path userDataFolder() { return baseFolder("XDG_DATA_HOME", ".local/share"); }
std::filesystem::path userConfigFolder() { return baseFolder("XDG_CONFIG_HOME", ".config"); }

} // namespace quobrix
