#include "platform/file_system.h"
#include "platform/system_error.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quobrix {

Result<void> adoptPermissions(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    struct stat status {};
    if (::stat(target.c_str(), &status) != 0)
        return {}; // a new file: what the user's mask says is right
    // The group is taken over where the user may; without it the bits for the group would open the file to another.
    const bool sameGroup = ::chown(temporary.c_str(), static_cast<uid_t>(-1), status.st_gid) == 0;
    const mode_t mode = (status.st_mode & (sameGroup ? 0777u : 0707u)) | S_IRUSR | S_IWUSR;
    if (::chmod(temporary.c_str(), mode) != 0)
        return lastSystemError("set the permissions of", temporary);
    return {};
}

Result<void> renameDurably(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        return lastSystemError("replace", to);
    const std::filesystem::path folder = to.has_parent_path() ? to.parent_path() : std::filesystem::path(".");
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return errno == EACCES ? Result<void>() // a folder one may write but not list cannot be flushed
                               : Result<void>(lastSystemError("flush", folder));
    // Some file systems cannot flush a folder and say so with EINVAL.
    const bool flushed = ::fsync(descriptor) == 0 || errno == EINVAL || errno == EOPNOTSUPP;
    Result<void> result;
    if (!flushed)
        result = lastSystemError("flush", folder);
    ::close(descriptor);
    return result;
}

Result<void> hideFile(const std::filesystem::path&) { return {}; }

} // namespace quobrix
