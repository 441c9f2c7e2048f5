#pragma once

#include "base/result.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace quobrix::sim {

/// An exclusive lock on a small file made for the purpose, held until destruction or the end of the process. Two locks
/// on one file exclude each other even within a process.
class FileLock {
public:
    FileLock() = default;
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    ~FileLock();

    /// Waits until the lock is free.
    static Result<FileLock> wait(const std::filesystem::path& path);
    /// ErrorKind::InUse if someone else holds it.
    static Result<FileLock> tryLock(const std::filesystem::path& path);

private:
    explicit FileLock(std::intptr_t handle) : handle_(handle) {}
    static Result<FileLock> acquire(const std::filesystem::path& path, bool wait);

    std::intptr_t handle_ = -1;
};

/// The folder that QUOBRIX_SIMULATOR names, else "quobrix/simulator" in the user's data folder. Not created here.
std::filesystem::path simulatorFolder();

/// The computer's clock: seconds since 1970-01-01 00:00 UTC.
std::int64_t computerTime();

} // namespace quobrix::sim
