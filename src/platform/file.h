#pragma once

#include "base/bytes.h"
#include "base/result.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace quobrix {

/// A file as the compound-file engine sees it: bytes at offsets, and a flush that makes them durable. Tests put a
/// fault-injecting one under the engine. Not thread-safe, but reading may go on during a flush().
class File {
public:
    virtual ~File() = default;

    /// Fills OUT from OFFSET (bytes); ErrorKind::Corrupt if the file ends before.
    virtual Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) = 0;
    /// Writes all of BYTES at OFFSET, extending the file if needed. Not durable before flush().
    virtual Result<void> writeAt(std::uint64_t offset, ByteView bytes) = 0;
    virtual Result<std::uint64_t> size() = 0;
    virtual Result<void> resize(std::uint64_t size) = 0;
    /// Returns when everything written before is on the disk.
    virtual Result<void> flush() = 0;
};

enum class FileMode {
    Read,      ///< an existing file, shared with writers
    ReadWrite, ///< an existing file, locked against a second writer (ErrorKind::InUse)
    Create,    ///< a new file, which must not exist, locked likewise
};

/// Opens PATH. Folders are refused with IsDirectory.
Result<std::unique_ptr<File>> openFile(const std::filesystem::path& path, FileMode mode);

/// Which file it is, whatever it is called: two paths lead to the same file exactly when their identities are equal.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t index = 0;
    bool operator==(const FileIdentity&) const = default;
};
Result<FileIdentity> fileIdentity(const std::filesystem::path& path);

} // namespace quobrix
