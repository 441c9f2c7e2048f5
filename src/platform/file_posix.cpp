#include "platform/file.h"
#include "platform/system_error.h"
#include "texts/text.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace quobrix {

namespace {

ErrorKind kindOf(int code) {
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        return ErrorKind::NotFound;
    case EACCES:
    case EPERM:
    case EROFS:
        return ErrorKind::AccessDenied;
    case EEXIST:
        return ErrorKind::Exists;
    case EISDIR:
        return ErrorKind::IsDirectory;
    case ETXTBSY:
    case EBUSY:
    case EWOULDBLOCK:
        return ErrorKind::InUse;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return ErrorKind::DiskFull;
    default:
        return ErrorKind::Io;
    }
}

constexpr std::size_t kMostParts = 1024; // what Linux and the BSDs take in one call (IOV_MAX)

class PosixFile final : public File {
public:
    explicit PosixFile(int descriptor) : descriptor_(descriptor) {}
    ~PosixFile() override { ::close(descriptor_); }
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;

    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        while (!out.empty()) {
            const ssize_t count = ::pread(descriptor_, out.data(), out.size(), static_cast<off_t>(offset));
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                return lastSystemError(SourceText("read"));
            if (count == 0)
                return Error{ErrorKind::Corrupt, text(TextId::TheFileEndsAtByte, offset)};
            offset += static_cast<std::uint64_t>(count);
            out = out.subspan(static_cast<std::size_t>(count));
        }
        return {};
    }

    Result<void> writeAt(std::uint64_t offset, ByteView bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                return lastSystemError(SourceText("write"));
            offset += static_cast<std::uint64_t>(count);
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
        return {};
    }

    Result<void> gatherAt(std::uint64_t offset, std::span<const ByteView> pieces) override {
        std::vector<iovec> parts;
        for (std::size_t next = 0; next < pieces.size();) {
            parts.clear();
            for (; next < pieces.size() && parts.size() < kMostParts; ++next)
                parts.push_back({const_cast<std::uint8_t*>(pieces[next].data()), pieces[next].size()});
            const ssize_t count =
                ::pwritev(descriptor_, parts.data(), static_cast<int>(parts.size()), static_cast<off_t>(offset));
            if (count < 0 && errno != EINTR)
                return lastSystemError(SourceText("write"));
            // Cut short, by a signal or because the disk is full: the rest one by one, which tells which it is.
            auto done = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
            for (const iovec& part : parts) {
                const std::size_t skipped = std::min(done, part.iov_len);
                done -= skipped;
                QUOBRIX_TRY(writeAt(offset + skipped, {static_cast<const std::uint8_t*>(part.iov_base) + skipped,
                                                       part.iov_len - skipped}));
                offset += part.iov_len;
            }
        }
        return {};
    }

    Result<std::uint64_t> size() override {
        struct stat status {};
        if (::fstat(descriptor_, &status) != 0)
            return lastSystemError(SourceText("examine"));
        return static_cast<std::uint64_t>(status.st_size);
    }

    Result<void> resize(std::uint64_t size) override {
        if (::ftruncate(descriptor_, static_cast<off_t>(size)) != 0)
            return lastSystemError(SourceText("resize"));
        return {};
    }

    Result<void> flush() override {
#if defined(__APPLE__)
        const int failed = ::fcntl(descriptor_, F_FULLFSYNC); // fsync there stops at the drive's cache
#else
        const int failed = ::fdatasync(descriptor_); // covers the size, which reading the data back needs
#endif
        if (failed != 0)
            return lastSystemError(SourceText("flush"));
        return {};
    }

    void startFlush([[maybe_unused]] std::uint64_t end) override {
#if defined(__linux__)
        // Not the whole: who writes to a cached unit that is on its way waits for the disk, and file systems cache up
        // to 2 MB in one. Without waiting, failures are not looked at either, but left for the flush to tell.
        constexpr std::uint64_t kLargestUnit = 2 << 20;
        const std::uint64_t whole = end / kLargestUnit * kLargestUnit;
        if (whole > started_)
            static_cast<void>(::sync_file_range(descriptor_, static_cast<off_t>(started_),
                                                static_cast<off_t>(whole - started_), SYNC_FILE_RANGE_WRITE));
        started_ = std::max(started_, whole);
#endif
    }

    bool locked() const override { return locked_; }

    /// Does not wait: InUse when another open file description holds the lock, in this process or another. Where
    /// the file system knows no locks everyone is let in, and locked() says so.
    Result<void> lock(const std::filesystem::path& path) {
        locked_ = ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
        if (locked_ || errno == ENOLCK || errno == EOPNOTSUPP || errno == ENOSYS)
            return {};
        return lastSystemError(SourceText("lock"), path);
    }

private:
    int descriptor_;
    bool locked_ = false;
    std::uint64_t started_ = 0; ///< up to here startFlush() has told the system
};

FileIdentity identityOf(const struct stat& status) {
    return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

/// A new file that cannot be used leaves no trace.
Error undone(const std::filesystem::path& path, Error error) {
    ::unlink(path.c_str());
    return error;
}

std::int64_t nanoseconds(const timespec& time) { return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec; }

} // namespace

Error lastSystemError(SourceText action, const std::filesystem::path& subject) {
    const int code = errno;
    const std::string reason = std::generic_category().message(code);
    return {kindOf(code), subject.empty() ? text(TextId::WithDetail, text(action), reason)
                                          : text(TextId::WithNameAndDetail, text(action), utf8(subject), reason)};
}

Result<std::unique_ptr<File>> openFile(const std::filesystem::path& path, FileMode mode) {
    // Non-blocking, so that opening a pipe by mistake returns.
    const int flags = O_CLOEXEC | O_NONBLOCK |
                      (mode == FileMode::Read        ? O_RDONLY
                       : mode == FileMode::ReadWrite ? O_RDWR
                                                     : O_RDWR | O_CREAT | O_EXCL);
    // A file may be renamed over PATH between opening and locking; the lock would then be on a file without a name.
    constexpr int kAttempts = 10;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const int descriptor = ::open(path.c_str(), flags, mode == FileMode::CreatePrivate ? 0600 : 0666);
        if (descriptor < 0)
            return lastSystemError(SourceText("open"), path);
        auto file = std::make_unique<PosixFile>(descriptor);
        const bool made = (flags & O_EXCL) != 0;
        struct stat opened {};
        if (::fstat(descriptor, &opened) != 0) {
            const Error error = lastSystemError(SourceText("examine"), path);
            return made ? undone(path, error) : error;
        }
        if (S_ISDIR(opened.st_mode))
            return Error{ErrorKind::IsDirectory, text(TextId::PathIsAFolder, utf8(path))};
        if (!S_ISREG(opened.st_mode))
            return Error{ErrorKind::NotADocument, text(TextId::IsNotARegularFile, utf8(path))};
        if (mode == FileMode::Read)
            return std::unique_ptr<File>(std::move(file));
        if (const Result<void> locked = file->lock(path); !locked)
            return made ? undone(path, locked.error()) : locked.error();
        struct stat named {};
        const bool found = ::stat(path.c_str(), &named) == 0;
        if (found && identityOf(named) == identityOf(opened))
            return std::unique_ptr<File>(std::move(file));
        if (made && !found) // a second attempt would meet the file of the first
            return undone(path, lastSystemError(SourceText("examine"), path));
    }
    return Error{ErrorKind::InUse, text(TextId::IsBeingReplacedByAnotherProgram, utf8(path))};
}

Result<FileStatus> fileStatus(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return lastSystemError(SourceText("examine"), path);
    FileStatus result{identityOf(status), static_cast<std::uint64_t>(status.st_size), {}, {}};
#if defined(__APPLE__)
    result.modified = nanoseconds(status.st_mtimespec);
    result.created = nanoseconds(status.st_birthtimespec);
#else
    result.modified = nanoseconds(status.st_mtim);
#endif
#if defined(STATX_BTIME)
    struct statx birth {};
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &birth) == 0 && (birth.stx_mask & STATX_BTIME))
        result.created = nanoseconds(timespec{birth.stx_btime.tv_sec, birth.stx_btime.tv_nsec});
#endif
    return result;
}

} // namespace quobrix
