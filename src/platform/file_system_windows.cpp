#include "platform/file_system.h"
#include "platform/system_error.h"

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include <windows.h>

namespace quobrix {

namespace {

// A name that mingw-w64 hides by mistake.
constexpr auto kFileRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);

/// Renames FROM over TO in one step, even while TO is open. False where the file system (or the Windows) cannot.
bool renameOverOpenFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    const HANDLE handle =
        CreateFileW(from.c_str(), DELETE | SYNCHRONIZE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    std::error_code ignored;
    const std::wstring target = std::filesystem::absolute(to, ignored).native();
    std::vector<std::byte> buffer(sizeof(FILE_RENAME_INFO) + target.size() * sizeof(wchar_t));
    auto* information = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
    information->Flags = FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS;
    information->FileNameLength = static_cast<DWORD>(target.size() * sizeof(wchar_t));
    std::memcpy(information->FileName, target.data(), target.size() * sizeof(wchar_t));
    const bool renamed =
        SetFileInformationByHandle(handle, kFileRenameInfoEx, information, static_cast<DWORD>(buffer.size()));
    CloseHandle(handle);
    return renamed;
}

bool move(const std::filesystem::path& from, const std::filesystem::path& to, DWORD flags) {
    return MoveFileExW(from.c_str(), to.c_str(), flags | MOVEFILE_WRITE_THROUGH);
}

/// The same in two steps: TO is put aside as TO.replaced, where a crash in between leaves it, and goes away when it is
/// closed.
bool replaceAside(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::filesystem::path aside;
    bool moved = false;
    // One that was put aside before may be open to this day.
    for (int number = 1; number < 10 && !moved; ++number) {
        aside = to;
        aside += L".replaced" + (number == 1 ? std::wstring() : std::to_wstring(number));
        moved = move(to, aside, 0);
    }
    if (!moved)
        return false;
    if (!move(from, to, 0)) {
        const DWORD reason = GetLastError();
        move(aside, to, 0);
        SetLastError(reason);
        return false;
    }
    DeleteFileW(aside.c_str());
    return true;
}

/// The access list is shut off from the folder's, or has an entry that does not come from there.
bool isOfTheFileItself(PSECURITY_DESCRIPTOR descriptor) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    BOOL present = FALSE, defaulted = FALSE;
    PACL list = nullptr;
    GetSecurityDescriptorControl(descriptor, &control, &revision);
    if (control & SE_DACL_PROTECTED)
        return true;
    GetSecurityDescriptorDacl(descriptor, &present, &list, &defaulted);
    for (DWORD i = 0; present && list && i < list->AceCount; ++i)
        if (void* entry = nullptr;
            GetAce(list, i, &entry) && !(static_cast<ACE_HEADER*>(entry)->AceFlags & INHERITED_ACE))
            return true;
    return false;
}

bool replace(const std::filesystem::path& from, const std::filesystem::path& to) {
    // What is open cannot be replaced in one step on a FAT disk or by an older server.
    return renameOverOpenFile(from, to) || move(from, to, MOVEFILE_REPLACE_EXISTING) ||
           (GetLastError() == ERROR_ACCESS_DENIED && replaceAside(from, to));
}

} // namespace

Result<void> adoptPermissions(const std::filesystem::path& temporary, const std::filesystem::path& like) {
    DWORD size = 0;
    GetFileSecurityW(like.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<std::byte> descriptor(size);
    if (!GetFileSecurityW(like.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), size, &size)) {
        const Error error = lastSystemError(SourceText("read the access list of"), like);
        return error.kind == ErrorKind::NotFound ? Result<void>() : error;
    }
    // What a file has of its folder's list, the new one has already: only one that was changed for the file itself is
    // set, which takes a right that many a server's user lacks.
    if (!isOfTheFileItself(descriptor.data()))
        return {};
    if (!SetFileSecurityW(temporary.c_str(), DACL_SECURITY_INFORMATION, descriptor.data()))
        return lastSystemError(SourceText("set the access list of"), temporary);
    // Wine keeps the mark of a read-only file in its list.
    if (const DWORD attributes = GetFileAttributesW(temporary.c_str()); attributes & FILE_ATTRIBUTE_READONLY)
        SetFileAttributesW(temporary.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    return {};
}

bool onlyUserWrites(const std::filesystem::path& folder) {
    std::error_code ignored;
    return std::filesystem::is_directory(folder, ignored); // as the profile's folders are
}

Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to) {
    const DWORD attributes = GetFileAttributesW(to.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) &&
        !SetFileAttributesW(to.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)))
        return lastSystemError(SourceText("clear the read-only mark of"), to);
    // Virus scanners and search indexers hold a new file for a moment.
    constexpr DWORD kPatience[] = {0, 20, 50, 100, 200}; // ms
    for (const DWORD wait : kPatience) {
        Sleep(wait);
        if (replace(from, to))
            return {};
        if (GetLastError() != ERROR_SHARING_VIOLATION && GetLastError() != ERROR_ACCESS_DENIED)
            break;
    }
    const Error failed = lastSystemError(SourceText("replace"), to);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        SetFileAttributesW(to.c_str(), attributes);
    return failed;
}

Result<void> renameNew(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (!MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH))
        return lastSystemError(SourceText("create"), to);
    return {};
}

// Making a link takes a privilege there.
bool mayFollow(const std::filesystem::path&) { return true; }

void removeUnlessLocked(const std::filesystem::path& path) {
    // Neither a folder nor a link.
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES ||
        (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)))
        return;
    // Not shared: refused while another program has it open. Closing removes it.
    const HANDLE handle = CreateFileW(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle != INVALID_HANDLE_VALUE)
        CloseHandle(handle);
}

Result<void> flushFolder(const std::filesystem::path& folder) {
    const HANDLE handle = CreateFileW(folder.empty() ? L"." : folder.c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_ACCESS_DENIED ? Result<void>() // as for the root of a disk
                                                     : Result<void>(lastSystemError(SourceText("flush"), folder));
    Result<void> result;
    if (!FlushFileBuffers(handle))
        switch (GetLastError()) {
        case ERROR_INVALID_FUNCTION: // file systems and servers that cannot flush a folder
        case ERROR_INVALID_PARAMETER:
        case ERROR_NOT_SUPPORTED:
        case ERROR_ACCESS_DENIED:
            break;
        default:
            result = lastSystemError(SourceText("flush"), folder);
        }
    CloseHandle(handle);
    return result;
}

Result<void> hideFile(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !SetFileAttributesW(path.c_str(), attributes | FILE_ATTRIBUTE_HIDDEN))
        return lastSystemError(SourceText("hide"), path);
    return {};
}

} // namespace quobrix
