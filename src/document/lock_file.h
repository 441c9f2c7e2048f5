#pragma once

#include "base/bytes.h"
#include "platform/file_system.h"
#include "platform/process.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quobrix {

/// Who has a document open, as its lock file says.
struct LockOwner {
    ProcessName process;    ///< empty texts where the file does not say
    std::int64_t since = 0; ///< seconds since 1970 UTC; 0 if the file does not say
    Bytes content;          ///< the whole file
    /// "anna on garage-pc", as far as is known; without control characters, whatever the file holds.
    ShownText text() const;
    /// "2026-11-21 18:05 UTC".
    ShownText timeText() const;
};

/// The right to write to a document where the file system has no locks (File::locked()): a file NAME.car.lock beside it
/// that says whose it is. Only who could create it has it. It goes away with this object. What a process of this
/// computer has left that ended without removing it is removed by the next one; that cannot be known of other
/// computers, so that a person has to decide. User-interface thread only.
class LockFile {
public:
    /// InUse if another process has it, which is then in OWNER.
    static Result<std::unique_ptr<LockFile>> take(FileSystem& files, const std::filesystem::path& document,
                                                  std::optional<LockOwner>& owner);
    /// Who has it, if anyone. Errors as reading.
    static Result<std::optional<LockOwner>> ownerOf(FileSystem& files, const std::filesystem::path& document);
    /// Takes it away from OWNER, if it is still that one's.
    static void removeOf(FileSystem& files, const std::filesystem::path& document, const LockOwner& owner);
    static std::filesystem::path pathFor(const std::filesystem::path& document);

    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;
    ~LockFile();

    /// It is still there and says so; somebody may have taken it away.
    Result<bool> held() const;
    const std::filesystem::path& document() const { return document_; }

private:
    LockFile(FileSystem& files, std::filesystem::path document, LockOwner self);

    FileSystem& files_;
    const std::filesystem::path document_;
    const LockOwner self_;
};

} // namespace quobrix
