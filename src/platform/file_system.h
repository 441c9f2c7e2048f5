#pragma once

#include "platform/file.h"

namespace quobrix {

/// The path that opening PATH really reaches: symbolic links of its last name are followed to the end, which need not
/// exist yet. Io when the links run in a circle.
Result<std::filesystem::path> resolveLinks(const std::filesystem::path& path);

/// The calls on files by their names with which documents are kept safe. There is one, the system's; tests put another
/// in its place, whose power fails. Links are followed before; a path that still
/// ends in one means the link, which renameOver() replaces.
class FileSystem {
public:
    /// Calls the functions below of the same names.
    static FileSystem& system();
    virtual ~FileSystem() = default;

    virtual Result<std::unique_ptr<File>> open(const std::filesystem::path& path, FileMode mode) = 0;
    virtual Result<FileStatus> status(const std::filesystem::path& path) = 0;
    /// Bytes that can still be written in FOLDER; all there could be if the system does not say.
    virtual std::uint64_t freeSpace(const std::filesystem::path& folder) = 0;
    virtual Result<void> adoptPermissions(const std::filesystem::path& temporary,
                                          const std::filesystem::path& like) = 0;
    virtual Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
    virtual Result<void> flushFolder(const std::filesystem::path& folder) = 0;
    virtual void remove(const std::filesystem::path& path) = 0;
    virtual void removeAbandoned(const std::filesystem::path& folder) = 0;
};

/// A new file that takes the place of TARGET in one step, or does not: it is built beside the target, and commit()
/// renames it over. So a failure or a crash leaves the target as it was. Without commit() the new file goes away.
class ReplacementFile {
public:
    /// Makes the temporary file, locked like every written file, in the folder of TARGET (links followed). It has the
    /// permissions of LIKE if that exists (but its owner may write it), so that nobody reads what is hidden from him;
    /// an empty LIKE is the target.
    static Result<ReplacementFile> create(const std::filesystem::path& target, const std::filesystem::path& like = {},
                                          FileSystem& files = FileSystem::system());

    /// The same for TARGET itself: where that is a symbolic link, the link is replaced and what it leads to stays.
    static Result<ReplacementFile> createForLink(const std::filesystem::path& target, const std::filesystem::path& like,
                                                 FileSystem& files = FileSystem::system());

    ReplacementFile(ReplacementFile&& other) noexcept;
    ReplacementFile& operator=(ReplacementFile&&) = delete;
    ~ReplacementFile();

    /// The file to write to. It stays open, and locked, across the renaming.
    File& file() { return *file_; }
    /// Hands the file over for good. Its new owner flushes it before commit().
    std::unique_ptr<File> takeFile() { return std::move(file_); }

    /// Makes the file durable, renames it over the target and makes that durable too. After an error inPlace() tells
    /// whether the target is still what it was.
    Result<void> commit();

    /// It has been renamed over the target, durably or not.
    bool inPlace() const { return temporary_.empty(); }
    /// Where the new file is until then.
    const std::filesystem::path& temporary() const { return temporary_; }
    /// The file that is being replaced, links followed.
    const std::filesystem::path& target() const { return target_; }

private:
    ReplacementFile(FileSystem& files, std::filesystem::path target, std::filesystem::path temporary,
                    std::unique_ptr<File> file)
        : files_(&files), target_(std::move(target)), temporary_(std::move(temporary)), file_(std::move(file)) {}

    FileSystem* files_;
    std::filesystem::path target_;
    std::filesystem::path temporary_; ///< empty once it is gone
    std::unique_ptr<File> file_;
};

/// The whole file, at most MAX_SIZE bytes (Unsupported when it is larger).
Result<Bytes> readFile(const std::filesystem::path& path, std::uint64_t maxSize);

/// Replaces the content of PATH in one durable step, see ReplacementFile.
Result<void> writeFileAtomically(const std::filesystem::path& path, ByteView bytes);

/// Gives TEMPORARY the permissions of LIKE if that exists, and write access for its owner.
Result<void> adoptPermissions(const std::filesystem::path& temporary, const std::filesystem::path& like);
/// Renames FROM over TO, which may be read-only, in one step. Not durable before the folder has been flushed.
Result<void> renameOver(const std::filesystem::path& from, const std::filesystem::path& to);
/// Returns when the names in FOLDER are on the disk.
Result<void> flushFolder(const std::filesystem::path& folder);
/// Removes the temporary files that programs which were killed have left in FOLDER: those that nobody has locked.
void removeAbandoned(const std::filesystem::path& folder);
/// Removes PATH, a regular file, unless somebody has it locked or locks cannot be had.
void removeUnlessLocked(const std::filesystem::path& path);
/// FOLDER is the user's own and nobody else may put anything there.
bool onlyUserWrites(const std::filesystem::path& folder);
/// Gives the file the system's hidden attribute, where the system has one; its other attributes stay.
Result<void> hideFile(const std::filesystem::path& path);

} // namespace quobrix
