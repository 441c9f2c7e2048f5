#pragma once

#include "base/result.h"
#include "document/compound_file.h"
#include "document/object_store.h"
#include "platform/file.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace quobrix {

/// Runs the part of a save that waits for the disk. The window runs it on another thread and paints meanwhile.
using DiskRunner = std::function<Result<void>(const std::function<Result<void>()>&)>;

/// Writes the stream that every document has beside those of its object store.
void writeDocumentStream(CompoundFile& file);

/// A document: an object store over a compound file. User-interface thread only.
///
/// open() and save() either happen or do not: on failure the document is what it was before, in memory and on disk.
class TDocument {
public:
    enum class Access {
        Edit, ///< for writing, locked against other writers; read-only when that is not to be had
        Read, ///< for reading only, touching nothing
    };

    explicit TDocument(const TypeRegistry& types);
    virtual ~TDocument();

    /// Replaces the content by an empty, untitled document.
    void newDocument();
    /// Replaces the content by that of PATH.
    Result<void> open(const std::filesystem::path& path, Access access);
    /// Writes what has changed to the file it was opened from or saved to. ReadOnly if it cannot be written, Changed
    /// if the path no longer leads to that file.
    Result<void> save(const DiskRunner& runDisk = runDirectly);
    /// Writes everything to PATH, replacing what is there, and goes on there: the new file is built beside PATH and
    /// renamed over it. To the document's own file (whatever the path's spelling) it is save(),
    /// so that a read-only document needs another path.
    Result<void> saveAs(const std::filesystem::path& path, const DiskRunner& runDisk = runDirectly);

    ObjectStore& store() { return *store_; }
    const ObjectStore& store() const { return *store_; }

    /// Empty for an untitled document.
    const std::filesystem::path& path() const { return path_; }
    bool hasFile() const { return file_ != nullptr; }
    /// Opened so, or damaged so that a save could lose something; readOnlyReason says why.
    bool readOnly() const { return readOnlyReason_.has_value(); }
    std::optional<Error> readOnlyReason() const { return readOnlyReason_; }
    /// Anything that the next save would write.
    bool modified() const { return store_->modified(); }
    CompoundFile::Space space() const;

protected:
    /// Called when another content is in place: bind() what the program always needs of it.
    virtual void bind() {}
    void setReadOnly(Error reason) { readOnlyReason_ = std::move(reason); }

private:
    static Result<void> runDirectly(const std::function<Result<void>()>& work) { return work(); }
    Result<void> writeTo(CompoundFile& file);

    const TypeRegistry& types_;
    std::unique_ptr<CompoundFile> file_;
    std::unique_ptr<ObjectStore> store_; // after file_: it reads from it
    std::filesystem::path path_;
    FileIdentity identity_;
    std::optional<Error> readOnlyReason_;
};

} // namespace quobrix
