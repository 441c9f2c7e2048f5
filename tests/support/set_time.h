#pragma once

#include <chrono>
#include <filesystem>

#ifdef _WIN32
#include <windows.h>
#endif

namespace quobrix::test {

/// The time of the last write of FILE is TIME from now on, even while it is locked.
inline void setTime(const std::filesystem::path& file, std::filesystem::file_time_type time) {
#ifdef _WIN32
    const HANDLE handle =
        CreateFileW(file.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    FILETIME now{};
    GetFileTime(handle, nullptr, nullptr, &now);
    const auto difference = time - std::filesystem::last_write_time(file);
    ULARGE_INTEGER ticks{};
    ticks.LowPart = now.dwLowDateTime;
    ticks.HighPart = now.dwHighDateTime;
    ticks.QuadPart +=
        static_cast<ULONGLONG>(std::chrono::duration_cast<std::chrono::nanoseconds>(difference).count() / 100);
    const FILETIME wanted{ticks.LowPart, ticks.HighPart};
    SetFileTime(handle, nullptr, nullptr, &wanted);
    CloseHandle(handle);
#else
    std::filesystem::last_write_time(file, time);
#endif
}

} // namespace quobrix::test
