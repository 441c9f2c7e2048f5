#include "simulator/platform.h"

#include "simulator/fault.h"

#include "base/path_text.h"
#include "platform/environment.h"
#include "platform/paths.h"

#include <chrono>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace quobrix::sim {

namespace fs = std::filesystem;

FileLock::FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

Result<FileLock> FileLock::wait(const fs::path& path) { return acquire(path, true); }
Result<FileLock> FileLock::tryLock(const fs::path& path) { return acquire(path, false); }

#if defined(_WIN32)

FileLock::~FileLock() {
    if (handle_ != -1)
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

Result<FileLock> FileLock::acquire(const fs::path& path, bool wait) {
    const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return fault(ErrorKind::Io, path.string() + ": the lock file cannot be opened");
    FileLock lock(reinterpret_cast<std::intptr_t>(handle));
    OVERLAPPED whole{};
    const DWORD flags = LOCKFILE_EXCLUSIVE_LOCK | (wait ? 0 : LOCKFILE_FAIL_IMMEDIATELY);
    if (!LockFileEx(handle, flags, 0, 1, 0, &whole))
        return fault(ErrorKind::InUse, path.string() + ": in use");
    return lock;
}

#else

FileLock::~FileLock() {
    if (handle_ != -1)
        close(static_cast<int>(handle_));
}

Result<FileLock> FileLock::acquire(const fs::path& path, bool wait) {
    const int handle = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (handle < 0)
        return fault(ErrorKind::Io, path.string() + ": " + std::generic_category().message(errno));
    FileLock lock(handle);
    while (flock(handle, LOCK_EX | (wait ? 0 : LOCK_NB)) != 0) {
        if (errno == EWOULDBLOCK)
            return fault(ErrorKind::InUse, path.string() + ": in use");
        if (errno != EINTR)
            return fault(ErrorKind::Io, path.string() + ": " + std::generic_category().message(errno));
    }
    return lock;
}

#endif

fs::path simulatorFolder() {
    if (const std::optional<std::string> named = environmentVariable("QUOBRIX_SIMULATOR"))
        return pathFromUtf8(*named);
    const fs::path data = userDataFolder();
    return (data.empty() ? fs::path("quobrix") : data) / "simulator";
}

std::int64_t computerTime() {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

} // namespace quobrix::sim
