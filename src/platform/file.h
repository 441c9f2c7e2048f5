#pragma once

#include "base/bytes.h"
#include "base/result.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
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
    /// The same for bytes that lie in PIECES one behind the other.
    virtual Result<void> gatherAt(std::uint64_t offset, std::span<const ByteView> pieces);
    virtual Result<std::uint64_t> size() = 0;
    virtual Result<void> resize(std::uint64_t size) = 0;
    /// Returns when everything written before is on the disk.
    virtual Result<void> flush() = 0;
    /// A hint for a flush() to come: what lies before END (bytes) may go to the disk while more is written behind it.
    /// Waits for nothing and promises nothing.
    virtual void startFlush([[maybe_unused]] std::uint64_t end) {}
    /// Of a file that was opened for writing: no other program can do the same. False where the file system has no
    /// locks.
    virtual bool locked() const { return true; }
};

/// Another's file, for those who change some of the calls. Bytes in pieces come through writeAt().
class ForwardingFile : public File {
public:
    explicit ForwardingFile(File& file) : file_(file) {}

    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        return file_.readAt(offset, out);
    }
    Result<void> writeAt(std::uint64_t offset, ByteView bytes) override { return file_.writeAt(offset, bytes); }
    Result<std::uint64_t> size() override { return file_.size(); }
    Result<void> resize(std::uint64_t size) override { return file_.resize(size); }
    Result<void> flush() override { return file_.flush(); }
    void startFlush(std::uint64_t end) override { file_.startFlush(end); }
    bool locked() const override { return file_.locked(); }

protected:
    File& file_;
};

/// Another's file as it is, for an owner of its own.
class BorrowedFile final : public ForwardingFile {
public:
    using ForwardingFile::ForwardingFile;
    Result<void> gatherAt(std::uint64_t offset, std::span<const ByteView> pieces) override {
        return file_.gatherAt(offset, pieces);
    }
};

enum class FileMode {
    Read,          ///< an existing file, shared with writers
    ReadWrite,     ///< an existing file, locked against a second writer (ErrorKind::InUse), see File::locked()
    Create,        ///< a new file, which must not exist (ErrorKind::Exists), locked likewise
    CreatePrivate, ///< likewise, and only its owner can open it until its permissions are widened
};

/// Opens PATH. Folders are refused with IsDirectory.
Result<std::unique_ptr<File>> openFile(const std::filesystem::path& path, FileMode mode);

/// Which file it is, whatever it is called: two paths lead to the same file exactly when their identities are equal.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t index = 0;
    bool operator==(const FileIdentity&) const = default;
};

/// What the system knows of a file.
struct FileStatus {
    FileIdentity identity;
    std::uint64_t size = 0;    ///< bytes
    std::int64_t modified = 0; ///< the last write: nanoseconds since 1970 UTC, as exact as the system keeps it
    std::optional<std::int64_t> created; ///< likewise, where the file system knows it
    /// Creation does not count: on Windows a file takes that time over from the one that it replaces.
    bool operator==(const FileStatus& other) const {
        return identity == other.identity && size == other.size && modified == other.modified;
    }
};
Result<FileStatus> fileStatus(const std::filesystem::path& path);

} // namespace quobrix
