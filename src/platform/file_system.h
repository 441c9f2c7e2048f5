#pragma once

#include "platform/file.h"

namespace quobrix {

/// The path that opening PATH really reaches: symbolic links of its last name are followed to the end, which need not
/// exist yet. Io when the links run in a circle.
Result<std::filesystem::path> resolveLinks(const std::filesystem::path& path);

/// A new file that takes the place of TARGET in one step, or does not: it is built beside the target, and commit()
/// renames it over. So a failure or a crash leaves the target as it was. Without commit() the new file goes away.
class ReplacementFile {
public:
    /// Makes the temporary file, locked like every written file, in the folder of TARGET (links followed).
    static Result<ReplacementFile> create(const std::filesystem::path& target);

    ReplacementFile(ReplacementFile&& other) noexcept;
    ReplacementFile& operator=(ReplacementFile&&) = delete;
    ~ReplacementFile();

    /// The file to write to. It stays open, and locked, across the renaming.
    File& file() { return *file_; }
    /// Hands the file over for good. Its new owner flushes it before commit().
    std::unique_ptr<File> takeFile() { return std::move(file_); }

    /// Makes the file durable, gives it the permissions of the target it replaces (never read-only), renames it over
    /// the target and makes that durable too. An error before the renaming leaves the target untouched.
    Result<void> commit();

    /// The file that is being replaced, links followed.
    const std::filesystem::path& target() const { return target_; }

private:
    ReplacementFile(std::filesystem::path target, std::filesystem::path temporary, std::unique_ptr<File> file)
        : target_(std::move(target)), temporary_(std::move(temporary)), file_(std::move(file)) {}

    std::filesystem::path target_;
    std::filesystem::path temporary_; ///< empty once it is gone
    std::unique_ptr<File> file_;
};

/// The whole file, at most MAX_SIZE bytes (Unsupported when it is larger).
Result<Bytes> readFile(const std::filesystem::path& path, std::uint64_t maxSize);

/// Replaces the content of PATH in one durable step, see ReplacementFile.
Result<void> writeFileAtomically(const std::filesystem::path& path, ByteView bytes);

/// Gives TEMPORARY the permissions of TARGET if that exists, and write access for its owner.
Result<void> adoptPermissions(const std::filesystem::path& temporary, const std::filesystem::path& target);
/// Renames FROM over TO in one step, and makes the folder's new entry durable.
Result<void> renameDurably(const std::filesystem::path& from, const std::filesystem::path& to);
/// Gives the file the system's hidden attribute, where the system has one; its other attributes stay.
Result<void> hideFile(const std::filesystem::path& path);

} // namespace quobrix
