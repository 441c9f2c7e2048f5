#include "platform/file.h"
#include "platform/system_error.h"
#include "texts/text.h"

#include <algorithm>
#include <system_error>

#include <windows.h>

namespace quobrix {

namespace {

#ifndef ERROR_DISK_QUOTA_EXCEEDED // which mingw-w64 lacks
constexpr DWORD ERROR_DISK_QUOTA_EXCEEDED = 1295;
#endif

ErrorKind kindOf(DWORD code) {
    switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_BAD_PATHNAME:
        return ErrorKind::NotFound;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_PRIVILEGE_NOT_HELD:
        return ErrorKind::AccessDenied;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
        return ErrorKind::InUse;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return ErrorKind::Exists;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_DISK_QUOTA_EXCEEDED:
    case ERROR_FILE_TOO_LARGE:
        return ErrorKind::DiskFull;
    default:
        return ErrorKind::Io;
    }
}

OVERLAPPED at(std::uint64_t offset) {
    OVERLAPPED position{};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return position;
}

std::uint64_t joined(DWORD high, DWORD low) { return (static_cast<std::uint64_t>(high) << 32) | low; }

/// A FILETIME counts tenths of microseconds since 1601.
std::int64_t nanoseconds(const FILETIME& time) {
    constexpr std::int64_t kFrom1601To1970 = 116'444'736'000'000'000;
    return (static_cast<std::int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime)) - kFrom1601To1970) * 100;
}

constexpr std::size_t kLargestTransfer = 1u << 30; // a DWORD counts the bytes of one call

class WindowsFile final : public File {
public:
    explicit WindowsFile(HANDLE handle) : handle_(handle) {}
    ~WindowsFile() override { CloseHandle(handle_); }
    WindowsFile(const WindowsFile&) = delete;
    WindowsFile& operator=(const WindowsFile&) = delete;

    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        while (!out.empty()) {
            OVERLAPPED position = at(offset);
            DWORD count = 0;
            const auto wanted = static_cast<DWORD>(std::min(out.size(), kLargestTransfer));
            if (!ReadFile(handle_, out.data(), wanted, &count, &position) && GetLastError() != ERROR_HANDLE_EOF)
                return lastSystemError(SourceText("read"));
            if (count == 0)
                return Error{ErrorKind::Corrupt, text(TextId::TheFileEndsAtByte, offset)};
            offset += count;
            out = out.subspan(count);
        }
        return {};
    }

    Result<void> writeAt(std::uint64_t offset, ByteView bytes) override {
        while (!bytes.empty()) {
            OVERLAPPED position = at(offset);
            DWORD count = 0;
            const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kLargestTransfer));
            if (!WriteFile(handle_, bytes.data(), wanted, &count, &position))
                return lastSystemError(SourceText("write"));
            offset += count;
            bytes = bytes.subspan(count);
        }
        return {};
    }

    Result<std::uint64_t> size() override {
        LARGE_INTEGER size{};
        if (!GetFileSizeEx(handle_, &size))
            return lastSystemError(SourceText("examine"));
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    Result<void> resize(std::uint64_t size) override {
        FILE_END_OF_FILE_INFO end{};
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
        if (!SetFileInformationByHandle(handle_, FileEndOfFileInfo, &end, sizeof end))
            return lastSystemError(SourceText("resize"));
        return {};
    }

    Result<void> flush() override {
        if (!FlushFileBuffers(handle_))
            return lastSystemError(SourceText("flush"));
        return {};
    }

private:
    HANDLE handle_;
};

} // namespace

Error lastSystemError(SourceText action, const std::filesystem::path& subject) {
    const DWORD code = GetLastError();
    const std::string reason = std::system_category().message(static_cast<int>(code));
    return {kindOf(code), subject.empty() ? text(TextId::WithDetail, text(action), reason)
                                          : text(TextId::WithNameAndDetail, text(action), utf8(subject), reason)};
}

Result<std::unique_ptr<File>> openFile(const std::filesystem::path& path, FileMode mode) {
    const bool creates = mode == FileMode::Create || mode == FileMode::CreatePrivate;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
        return Error{ErrorKind::IsDirectory, text(TextId::PathIsAFolder, utf8(path))};
    // A writer shares reading only: that is the lock against a second one. Sharing deletion lets an open file be
    // renamed, which a replacement file needs.
    const bool writes = mode != FileMode::Read;
    const HANDLE handle = CreateFileW(path.c_str(), writes ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_DELETE | (writes ? 0u : FILE_SHARE_WRITE), nullptr,
                                      creates ? CREATE_NEW : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return lastSystemError(SourceText("open"), path);
    auto file = std::make_unique<WindowsFile>(handle);
    if (GetFileType(handle) != FILE_TYPE_DISK)
        return Error{ErrorKind::NotADocument, text(TextId::IsNotARegularFile, utf8(path))};
    return std::unique_ptr<File>(std::move(file));
}

Result<FileStatus> fileStatus(const std::filesystem::path& path) {
    const HANDLE handle = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return lastSystemError(SourceText("examine"), path);
    BY_HANDLE_FILE_INFORMATION information{};
    const bool known = GetFileInformationByHandle(handle, &information);
    const Error error = known ? Error{} : lastSystemError(SourceText("examine"), path);
    CloseHandle(handle);
    if (!known)
        return error;
    return FileStatus{{information.dwVolumeSerialNumber, joined(information.nFileIndexHigh, information.nFileIndexLow)},
                      joined(information.nFileSizeHigh, information.nFileSizeLow),
                      nanoseconds(information.ftLastWriteTime),
                      nanoseconds(information.ftCreationTime)};
}

} // namespace quobrix
