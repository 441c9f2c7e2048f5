#include "platform/file_system.h"
#include "platform/system_error.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quobrix {

Result<void> adoptPermissions(const std::filesystem::path& temporary, const std::filesystem::path& like) {
    struct stat status {};
    if (::stat(like.c_str(), &status) != 0)
        return {}; // a new file: what the user's mask says is right
    // An administrator leaves the file to its owner. The group is taken over where the user may; without it the bits
    // for the group would open the file to another.
    const bool sameGroup = ::chown(temporary.c_str(), status.st_uid, status.st_gid) == 0 ||
                           ::chown(temporary.c_str(), static_cast<uid_t>(-1), status.st_gid) == 0;
    const mode_t mode = (status.st_mode & (sameGroup ? 0777u : 0707u)) | S_IRUSR | S_IWUSR;
    if (::chmod(temporary.c_str(), mode) != 0)
        return lastSystemError("set the permissions of", temporary);
    return {};
}

bool onlyUserWrites(const std::filesystem::path& folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        return lastSystemError("replace", to);
    return {};
}

Result<void> flushFolder(const std::filesystem::path& folder) {
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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

void removeUnlessLocked(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return;
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        ::unlink(path.c_str());
    ::close(descriptor);
}

Result<void> hideFile(const std::filesystem::path&) { return {}; }

} // namespace quobrix
