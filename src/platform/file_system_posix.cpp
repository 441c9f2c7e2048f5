#include "platform/file_system.h"
#include "platform/rename_new.h"
#include "platform/system_error.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#if defined(__linux__)
#include <linux/fs.h>
#include <sys/syscall.h>
#endif

namespace quobrix {

namespace {

bool sameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
    struct stat first {
    }, second{};
    return ::lstat(a.c_str(), &first) == 0 && ::lstat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

/// The file system does not know the call. Some say EPERM for it.
bool notOffered(int code) {
    return code == EINVAL || code == ENOSYS || code == EOPNOTSUPP || code == ENOTSUP || code == EPERM || code == EMLINK;
}

} // namespace

std::optional<Result<void>> renameNewInOneCall([[maybe_unused]] const std::filesystem::path& from,
                                               [[maybe_unused]] const std::filesystem::path& to) {
#if defined(__linux__) && defined(SYS_renameat2) && defined(RENAME_NOREPLACE)
    if (::syscall(SYS_renameat2, AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return Result<void>();
#elif defined(__APPLE__)
    if (::renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0)
        return Result<void>();
#else
    errno = ENOSYS;
#endif
    return notOffered(errno) ? std::nullopt : std::optional(Result<void>(lastSystemError(SourceText("create"), to)));
}

std::optional<Result<void>> renameNewByLink(const std::filesystem::path& from, const std::filesystem::path& to) {
    // A server may have done it although its answer was lost, and then says that the name is taken.
    if (::link(from.c_str(), to.c_str()) != 0) {
        const int code = errno;
        if (!sameFile(from, to)) {
            errno = code;
            return notOffered(code) ? std::nullopt
                                    : std::optional(Result<void>(lastSystemError(SourceText("create"), to)));
        }
    }
    ::unlink(from.c_str()); // a second name that stayed would be removed as an abandoned file
    return Result<void>();
}

Result<void> renameNewByPlaceholder(const std::filesystem::path& from, const std::filesystem::path& to) {
    const int placeholder = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (placeholder < 0)
        return lastSystemError(SourceText("create"), to);
    ::close(placeholder);
    const Result<void> renamed = renameOver(from, to);
    if (!renamed)
        ::unlink(to.c_str());
    return renamed;
}

Result<void> renameNew(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (const auto done = renameNewInOneCall(from, to))
        return *done;
    if (const auto done = renameNewByLink(from, to))
        return *done;
    return renameNewByPlaceholder(from, to);
}

bool mayFollow(const std::filesystem::path& link) {
    struct stat there {
    }, folder{};
    const std::filesystem::path parent = link.parent_path();
    if (::lstat(link.c_str(), &there) != 0 || ::stat(parent.empty() ? "." : parent.c_str(), &folder) != 0)
        return true; // following it will tell what is wrong
    const bool shared = (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & S_IWOTH) != 0;
    return !shared || there.st_uid == ::geteuid() || there.st_uid == folder.st_uid;
}

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
        return lastSystemError(SourceText("set the permissions of"), temporary);
    return {};
}

bool onlyUserWrites(const std::filesystem::path& folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        return lastSystemError(SourceText("replace"), to);
    return {};
}

Result<void> flushFolder(const std::filesystem::path& folder) {
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return errno == EACCES ? Result<void>() // a folder one may write but not list cannot be flushed
                               : Result<void>(lastSystemError(SourceText("flush"), folder));
    // Some file systems cannot flush a folder and say so with EINVAL.
    const bool flushed = ::fsync(descriptor) == 0 || errno == EINVAL || errno == EOPNOTSUPP;
    Result<void> result;
    if (!flushed)
        result = lastSystemError(SourceText("flush"), folder);
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
