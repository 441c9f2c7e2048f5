#include "platform/file_system.h"
#include "platform/system_error.h"

#include <cstddef>
#include <cstring>
#include <vector>

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

namespace quobrix {

namespace {

/// Renames over TO even when this process has TO open, which MoveFileExW cannot; false where that is not known.
bool renameOverOpenFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    const HANDLE handle =
        CreateFileW(from.c_str(), DELETE | SYNCHRONIZE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    const std::wstring target = std::filesystem::absolute(to).native();
    std::vector<std::byte> buffer(sizeof(FILE_RENAME_INFO) + target.size() * sizeof(wchar_t));
    auto* information = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
    information->Flags = FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS;
    information->FileNameLength = static_cast<DWORD>(target.size() * sizeof(wchar_t));
    std::memcpy(information->FileName, target.data(), target.size() * sizeof(wchar_t));
    const bool renamed =
        SetFileInformationByHandle(handle, FileRenameInfoEx, information, static_cast<DWORD>(buffer.size()));
    CloseHandle(handle);
    return renamed;
}

} // namespace

// The new file inherits its access list from the folder.
Result<void> adoptPermissions(const std::filesystem::path&, const std::filesystem::path&) { return {}; }

bool onlyUserWrites(const std::filesystem::path& folder) {
    std::error_code ignored;
    return std::filesystem::is_directory(folder, ignored); // as the profile's folders are
}

Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to) {
    const DWORD attributes = GetFileAttributesW(to.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) &&
        !SetFileAttributesW(to.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)))
        return lastSystemError("clear the read-only mark of", to);
    if (renameOverOpenFile(from, to))
        return {};
    if (!MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return lastSystemError("replace", to);
    return {};
}

Result<void> renameNew(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (!MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH))
        return lastSystemError("create", to);
    return {};
}

// Making a link takes a privilege there.
bool mayFollow(const std::filesystem::path&) { return true; }

void removeUnlessLocked(const std::filesystem::path& path) {
    // Sharing with nobody: not to be had while another has it open. Closing removes it.
    const HANDLE handle = CreateFileW(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle != INVALID_HANDLE_VALUE)
        CloseHandle(handle);
}

// Renaming there is written through, or a part of the volume's journal.
Result<void> flushFolder(const std::filesystem::path&) { return {}; }

Result<void> hideFile(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !SetFileAttributesW(path.c_str(), attributes | FILE_ATTRIBUTE_HIDDEN))
        return lastSystemError("hide", path);
    return {};
}

} // namespace quobrix
