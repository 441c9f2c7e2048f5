#pragma once

#include "compound/stream_reader.h"
#include "platform/file.h"

#include <memory>
#include <string_view>

namespace quobrix {

/// A transacted MS-CFB version 3 file (512-byte sectors, one root storage, streams only).
///
/// Writes are pending until commit(): changed streams, directory and allocation tables go to free sectors, a flush,
/// the header sector that makes them current, another flush. A crash at any byte leaves the last committed state.
/// Reads see pending writes. All calls may come from any thread; reading need not wait for the flushes of a commit.
class CompoundFile : public StreamReader {
public:
    /// Reads header, allocation tables and directory, nothing else. NotADocument: no compound file; Corrupt: damaged
    /// beyond use; Unsupported: 4096-byte sectors.
    static Result<std::unique_ptr<CompoundFile>> open(std::unique_ptr<File> file);
    /// An empty compound file over an empty file. Nothing is valid on disk before the first commit().
    static Result<std::unique_ptr<CompoundFile>> create(std::unique_ptr<File> file);

    /// Whether a stream may have this name: 1 to 31 characters, none of them NUL, half a surrogate pair or one that the
    /// format keeps out of names.
    static bool nameAllowed(std::string_view name);

    /// Creates or replaces a stream (see nameAllowed). Pending until commit: half a megabyte of it in memory, the rest
    /// in free sectors, where nothing leads to it yet. Failures are told by the next spill or commit.
    virtual void write(std::string_view name, Bytes content) = 0;
    /// Removes a stream, and all of its name in a damaged file; no effect if there is none. Pending until commit.
    virtual void remove(std::string_view name) = 0;
    /// Moves all pending contents to free sectors, so that a disk that takes no more is noticed. They are not durable,
    /// and what is current on disk does not change, before the commit. Errors as commit(), with the same effect.
    virtual Result<void> spill() = 0;
    /// Makes everything pending durable and current, or leaves the file's committed state. No effect when nothing has
    /// changed. Corrupt when writable() does; Unsupported past 2 GB, and when a name was written that the format
    /// forbids.
    ///
    /// A failure takes back everything pending since the last commit, what was spilled included, and the file gets its
    /// former size again: who tries again writes everything again. Until something is written, commit() goes on
    /// failing.
    virtual Result<void> commit() = 0;
    /// Writes the file as it was last committed to TARGET, an empty file, durably. It is read through the handle that
    /// has been open all the time, so it works even when the path now leads elsewhere. Other threads may read,
    /// write and commit meanwhile: what is copied is the state at the beginning.
    virtual Result<void> copyTo(File& target) const = 0;
    /// The same without unused sectors: builds a new compound file of the committed streams, those of the mini stream
    /// first, each kind in directory order. Nothing is left out silently: Corrupt if any stream cannot be read,
    /// Unsupported if there are inner storages or names that the format forbids.
    virtual Result<void> compactTo(File& target) const = 0;

    struct Space {
        std::uint64_t fileBytes = 0; ///< size of the file
        std::uint64_t freeBytes = 0; ///< of which unused sectors
    };
    virtual Space space() const = 0;
};

} // namespace quobrix
