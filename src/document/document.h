#pragma once

#include "base/result.h"
#include "compound/compound_file.h"
#include "document/disk_work.h"
#include "document/file_snapshot.h"
#include "document/kept_files.h"
#include "document/lock_file.h"
#include "document/object_store.h"
#include "platform/file_system.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace quobrix {

namespace cfb {
class WatchedFile;
}

/// What a save needs of its surroundings.
struct SaveOptions {
    /// Whether to go on although no backup can be kept, for this reason; if not, the save ends with Cancelled. Without
    /// it the reason is the save's error.
    std::function<bool(const Error& reason)> saveWithoutBackup = {};
    DiskRunner runDisk = [](const DiskWork& work) {
        DiskProgress nobodyLooks;
        return work(nobodyLooks);
    };
};

/// The stream that every document has beside those of its object store: u32 format, which is not checked on reading,
/// since every version has been readable.
inline constexpr std::string_view kDocumentStream = "Contents";
Bytes documentStream();
void writeDocumentStream(CompoundFile& file);

/// A document: an object store over a compound file. User-interface thread only.
///
/// open(), save() and the others either happen or do not: on failure the document is what it was before, in memory and
/// on disk.
///
/// The file as it was before the first change of a run is kept as NAME.car.bak beside it, and so is it when another
/// program has been at it since, or when another document replaces it. The backup is complete before the save begins
/// and takes its place when the save is durable, so that at every moment file or backup is whole. A file that cannot be
/// opened never takes the place of a backup that can: it gets a number of its own, NAME.car.2.bak.
///
/// Where the file system has no locks a LockFile stands in for them.
class TDocument {
public:
    enum class Access {
        Edit, ///< for writing, locked against other writers; read-only when that is not to be had
        Read, ///< for reading only, touching nothing
    };

    explicit TDocument(const TypeRegistry& types, FileSystem& files = FileSystem::system());
    virtual ~TDocument();

    /// Replaces the content by an empty, untitled document.
    void newDocument();
    /// Tries anew to have the file for writing if it was opened for reading only because another program had it or for
    /// want of permission. ReadOnly if it still cannot be written; Changed if it can, but is no longer what was opened.
    Result<void> tryWriting();
    /// Replaces the content by that of PATH. If that is the document's own file it is read anew, and what was changed
    /// since the last save is gone.
    Result<void> open(const std::filesystem::path& path, Access access);
    /// Writes what has changed to the file it was opened from or saved to; that file's backup is made before. ReadOnly
    /// if it cannot be written, Changed if the path no longer leads to that file or the file is no longer what it was;
    /// NotDurable as saveAs().
    Result<void> save(const SaveOptions& options = {});
    /// Writes everything to PATH and goes on there: the new file is built beside PATH and renamed. What is there
    /// becomes the backup of PATH if it may be replaced (IF_THERE); Exists if it may not, and if something appears
    /// there only while the file is built. InUse if another running copy has PATH open; Changed if the document is
    /// outdated() and nothing has been changed in it; NotDurable if it is in place, but may not survive a power cut. To
    /// the document's own file (whatever the path's spelling) it is save(), so that a read-only document needs another
    /// path.
    Result<void> saveAs(const std::filesystem::path& path, IfThere ifThere, const SaveOptions& options = {});
    /// To a name that no file has.
    Result<void> saveAs(const std::filesystem::path& path, const SaveOptions& options = {}) {
        return saveAs(path, IfThere::Refuse, options);
    }
    /// Writes everything to the document's own path, whatever another program has put there or taken away: that
    /// becomes the backup. Changed if some of the document is not here, see loadRest().
    Result<void> overwrite(const SaveOptions& options = {});
    /// Loads what has not been loaded yet, which is to be done when another program has changed the file: from then on
    /// nothing more can be lost. Whether the document is whole: all of it is in memory, or its file, though it goes by
    /// another name or none, is as it was.
    Result<bool> loadRest();
    /// Saves what has changed, then rebuilds the file without unused space and puts it in its place. Refused for
    /// documents that are read-only or damaged.
    Result<void> compact(const SaveOptions& options = {});

    ObjectStore& store() { return *state_.store; }
    const ObjectStore& store() const { return *state_.store; }

    /// Empty for an untitled document.
    const std::filesystem::path& path() const { return state_.path; }
    bool hasFile() const { return state_.file.compound != nullptr; }
    /// PATH leads to the file that the document was opened from or saved to.
    bool isFile(const std::filesystem::path& path) const;
    /// The document has a file, and its path leads to that as it was last read or written.
    bool fileIsUnchanged() const { return hasFile() && unchangedOnDisk(); }
    /// Opened so, changed by another program while that had it, written by a later version of this one (Unsupported;
    /// Save As is then refused too), or damaged so that a save could lose something;
    /// readOnlyReason says why.
    bool readOnly() const { return readOnlyReason().has_value(); }
    std::optional<Error> readOnlyReason() const;
    /// Opened without the lock, and found changed by another program when something was to be read of it: what was not
    /// loaded by then reads as nothing. open() shows the file as it is now.
    bool outdated() const;
    /// Calls TELL, which must not touch the document, when it turns out to be outdated.
    void whenOutdated(std::function<void()> tell);
    /// Calls TELL, which must not touch the document, when something of it is found damaged after it was opened.
    void whenDamaged(std::function<void()> tell) { whenDamaged_ = std::move(tell); }
    /// Why it is only read, where that is the lock file of another running copy.
    const std::optional<LockOwner>& lockedBy() const { return state_.lockedBy; }
    /// Takes the right to write away from lockedBy(). Errors as tryWriting().
    Result<void> takeOver();
    /// The file system has no locks: this file beside the document tells others that it is open here. Else empty.
    std::filesystem::path lockFile() const;
    /// Why it is not known whether everything that its file held is there; nothing when it is: allocation tables and
    /// directory are whole, and index and streams agree (see ObjectStore::doubt). What then cannot be read is known to
    /// be damaged when it is asked for.
    std::optional<ShownText> doubt() const;
    /// The file has no kDocumentStream. The next save in place writes it; nothing is missing but a sign that it is
    /// whole.
    bool lacksOwnStream() const;
    /// Anything that the next save would write, or make durable at last.
    bool modified() const { return store().modified() || !state_.nameDurable; }
    /// After edits have been undone: if the next save would write what the file holds already, nothing is modified.
    void forgetUnchanged();
    CompoundFile::Space space() const;
    /// The number of the document's format: that in its file, if it has one.
    std::uint32_t format() const;
    /// Why the last save could not put its backup in place; the save itself is durable. The next save tries again.
    std::optional<Error> backupProblem() const { return backupProblem_; }

    /// Where the backup of PATH lies: beside the file that it leads to.
    static std::filesystem::path backupPath(const std::filesystem::path& path);
    /// Where what PATH leads to now would be kept if it were replaced.
    std::filesystem::path backupOf(const std::filesystem::path& path) const;

protected:
    /// Called when another content is in place: bind() what the program always needs of it. If it fails or throws, the
    /// old content is put back, so it changes nothing of its own before it has everything. Changed if that turns out
    /// to be outdated().
    virtual Result<void> bind() { return {}; }
    /// Whether the file PATH is kept as a backup before it is changed.
    virtual bool keepsBackup(const std::filesystem::path&) const { return true; }
    /// Why the file must not be written to although it is open: damage of which a save in place could make a loss.
    /// Asked when another content is in place or has got another file.
    virtual std::optional<Error> damage() const;

private:
    /// A compound file, and the file under it within reach.
    struct OpenFile {
        std::unique_ptr<File> disk;
        std::unique_ptr<CompoundFile> compound; // after disk: it works on it
        cfb::WatchedFile* watched = nullptr;    // what compound reads, if others may write to the file
        static Result<OpenFile> open(std::unique_ptr<File> disk);
        static Result<OpenFile> watch(std::unique_ptr<File> disk, const Bytes& header);
        static Result<OpenFile> create(std::unique_ptr<File> disk);
    };
    struct State {
        std::unique_ptr<LockFile> lock; // before file: it goes away after it
        OpenFile file;
        std::unique_ptr<ObjectStore> store; // after file: it reads from it
        std::filesystem::path path;         // as the user knows it
        FileSnapshot snapshot;
        bool nameDurable = true;             // after a renaming that could not be flushed: not yet
        std::optional<Error> readOnlyReason; // as it was opened
        std::optional<LockOwner> lockedBy;
        std::optional<Error> damage;
        bool saveFailed = false; // the last time: what the open file holds may be nowhere else
    };
    using Copy = std::function<Result<void>(File&)>; // durable when it returns
    /// How much of the document is still there to be read.
    enum class Left { Everything, Beginning, Nothing };
    using Build = std::function<Result<OpenFile>(ReplacementFile&, Left&)>; // Left: Everything if it does not say

    Result<void> take(State next);
    Result<void> openOnce(const std::filesystem::path& path, Access access);
    Result<State> load(const std::filesystem::path& path, const std::filesystem::path& target, FileMode mode,
                       std::optional<LockOwner>& lockedBy) const;
    Result<void> takeLock(const std::filesystem::path& target, const File& file, std::unique_ptr<LockFile>& lock,
                          std::optional<LockOwner>& owner) const;
    Result<FileSnapshot> lookAtDisk() const;
    Result<void> unchangedOnDisk() const;
    Result<void> writeTo(CompoundFile& file);
    Result<void> writeInPlace(const std::filesystem::path& target, const SaveOptions& options);
    Result<void> writeAnew(const std::filesystem::path& path, IfThere ifThere, const SaveOptions& options);
    Result<void> makeNameDurable(const SaveOptions& options);
    Result<Left> leftOnDisk() const;
    Result<bool> writtenInto() const;
    void noteLost(Left left);
    Result<OpenFile> buildWhole(ReplacementFile& replacement, const SaveOptions& options, Left& left);
    Result<OpenFile> buildCompact(ReplacementFile& replacement, const SaveOptions& options);
    Result<void> putInPlace(const std::filesystem::path& path, IfThere ifThere, const SaveOptions& options,
                            const Build& build, std::unique_ptr<LockFile> lock, std::optional<FileSnapshot>& replaced);
    Result<void> keepingBackup(const std::filesystem::path& target, const std::filesystem::path& backup,
                               const Copy& copy, const SaveOptions& options, const std::function<Result<void>()>& work,
                               const std::optional<FileSnapshot>& replaced);
    Result<ReplacementFile> makeBackup(const std::filesystem::path& target, const std::filesystem::path& path,
                                       const Copy& copy, const SaveOptions& options);
    std::filesystem::path backupFor(const std::filesystem::path& target, File& content) const;
    Result<void> checkSpace(const std::filesystem::path& target, std::uint64_t bytes) const;

    const TypeRegistry& types_;
    FileSystem& files_;
    State state_;
    KeptFiles kept_;
    std::optional<Error> backupProblem_;
    std::function<void()> whenOutdated_;
    std::function<void()> whenDamaged_;
};

} // namespace quobrix
