#pragma once

#include "platform/file.h"

namespace quobrix {

/// The path that opening PATH really reaches: symbolic links of its last name are followed to the end, which need not
/// exist yet. Io when the links run in a circle; AccessDenied for a link in a folder that anybody may write to (such as
/// /tmp), unless it is the user's own or that of the folder's owner: others could lead a save wherever they like.
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
    virtual Result<void> renameNew(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
    virtual Result<void> flushFolder(const std::filesystem::path& folder) = 0;
    virtual void remove(const std::filesystem::path& path) = 0;
    virtual void removeAbandoned(const std::filesystem::path& folder) = 0;
};

/// What a new file does to one that has its name already.
enum class IfThere {
    Replace,
    Refuse, ///< nothing: it is not put in place (ErrorKind::Exists)
};

/// A new file that takes the place of TARGET in one step, or does not: it is built beside the target, and commit()
/// renames it. So a failure or a crash leaves the target as it was. Without commit() the new file goes away.
class ReplacementFile {
public:
    /// Makes the temporary file, locked like every written file, in the folder of TARGET (links followed). It has the
    /// permissions of LIKE if that exists (but its owner may write it), so that it does not become
    /// readable for more people; an empty LIKE is the target.
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

    /// Makes the file durable, renames it to the target and makes that durable too. NotDurable if only the last of it
    /// fails; after any other error the target is what it was.
    Result<void> commit(IfThere ifThere = IfThere::Replace);

    /// It has been renamed to the target, durably or not.
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
/// Renames FROM to TO, which must not exist (ErrorKind::Exists): whatever is there, or appears there just then, stays.
Result<void> renameNew(const std::filesystem::path& from, const std::filesystem::path& to);
/// Returns when the names in FOLDER are on the disk.
Result<void> flushFolder(const std::filesystem::path& folder);
/// Removes the temporary files that programs which were killed have left in FOLDER: those that are not locked.
void removeAbandoned(const std::filesystem::path& folder);

/// Makes FOLDER, for nobody but this user, and what it lies in; one that is there stays as it is. A failure shows when
/// something is made in it.
void makePrivateFolder(const std::filesystem::path& folder);
/// Removes PATH, a regular file, unless somebody has it locked or locks cannot be had.
void removeUnlessLocked(const std::filesystem::path& path);
/// FOLDER is the user's own and only the user may put anything there.
bool onlyUserWrites(const std::filesystem::path& folder);
/// Whether the system would follow LINK, see resolveLinks().
bool mayFollow(const std::filesystem::path& link);
/// Gives the file the system's hidden attribute, where the system has one; its other attributes stay.
Result<void> hideFile(const std::filesystem::path& path);

} // namespace quobrix
