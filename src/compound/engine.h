#pragma once

#include "base/mutex.h"
#include "compound/compound_file.h"
#include "compound/io.h"
#include "compound/mini_pages.h"
#include "compound/tables.h"

#include <map>
#include <optional>

namespace quobrix::cfb {

/// Why a crash cannot hurt: the header sector is the root of everything. It leads to the directory, the mini FAT and,
/// by way of the DIFAT, to the FAT, and these lead to every stream. No sector that the header on disk leads to is ever
/// written (AllocationTable knows them as held). What changes goes to free sectors, together with new copies of all
/// table and directory pages that speak of it, up to the header itself; a flush makes them durable; then one write of
/// 512 bytes, which a disk does wholly or not at all, turns to the new state. Until it has happened the old state is
/// there untouched, whatever became of the other writes and in whatever order they arrived. Sectors of the old state
/// are reused only after the new header is durable, by the next transaction at the earliest, whether that one ends in a
/// commit or not. Until then the old state lies whole in the file, and a note in two free sectors leads to it, for
/// repairs (see PreviousStateNote).
///
/// In memory the new state is simply the current one. Tables keep the pages they had before, so that a transaction
/// that fails is taken back without reading anything. It must be: when a flush fails, a system forgets what it could
/// not write, contents spilled long ago among it, and a later flush would succeed without them.
class CompoundFileEngine final : public CompoundFile {
public:
    /// A new file.
    explicit CompoundFileEngine(std::unique_ptr<File> file) : file_(std::move(file)) {}
    CompoundFileEngine(std::unique_ptr<File> file, Layout layout);

    bool contains(std::string_view name) const override QUOBRIX_EXCLUDES(mutex_);
    std::vector<std::string> names() const override QUOBRIX_EXCLUDES(mutex_);
    using CompoundFile::read;
    Result<void> read(std::string_view name, Bytes& content) const override QUOBRIX_EXCLUDES(mutex_);
    void write(std::string_view name, Bytes content) override QUOBRIX_EXCLUDES(changing_, mutex_);
    void remove(std::string_view name) override QUOBRIX_EXCLUDES(changing_, mutex_);
    Result<void> spill() override QUOBRIX_EXCLUDES(changing_, mutex_);
    Result<void> commit() override QUOBRIX_EXCLUDES(changing_, mutex_);
    Result<void> writable() const override QUOBRIX_EXCLUDES(mutex_);
    Result<void> copyTo(File& target) const override QUOBRIX_EXCLUDES(mutex_);
    Result<void> compactTo(File& target) const override QUOBRIX_EXCLUDES(mutex_);
    Space space() const override QUOBRIX_EXCLUDES(mutex_);

private:
    class Snapshot;

    std::uint32_t findStream(std::string_view name) const QUOBRIX_REQUIRES(mutex_);

    Result<void> readStream(std::string_view name, Bytes& content) const QUOBRIX_REQUIRES(mutex_);
    Result<void> readMini(std::uint32_t sector, std::size_t size, Bytes& out) const QUOBRIX_REQUIRES(mutex_);
    Result<void> readLarge(std::uint32_t sector, std::size_t size, Bytes& out) const QUOBRIX_REQUIRES(mutex_);
    Result<void> complete() const QUOBRIX_REQUIRES(mutex_);
    void copyAttributes(std::string_view name, const Directory& from, std::uint32_t index) QUOBRIX_EXCLUDES(mutex_);

    Result<void> take(std::string_view name, Bytes content) QUOBRIX_REQUIRES(changing_, mutex_);
    Result<void> placeMini(std::uint32_t sector, ByteView content) QUOBRIX_REQUIRES(changing_, mutex_);
    Result<std::uint8_t*> miniPage(std::uint32_t index) QUOBRIX_REQUIRES(changing_, mutex_);
    void dropPending(std::uint32_t index) QUOBRIX_REQUIRES(changing_, mutex_);

    Result<void> placeContents(WriteBatch& batch) QUOBRIX_REQUIRES(changing_, mutex_);
    Result<void> writeContents() QUOBRIX_REQUIRES(changing_, mutex_);
    Result<void> writeBatch(WriteBatch& batch) QUOBRIX_REQUIRES(changing_, mutex_);
    Result<void> flush() QUOBRIX_REQUIRES(changing_, mutex_);
    Result<void> writeEverything() QUOBRIX_REQUIRES(changing_, mutex_);
    Result<void> turnHeader(bool& certain) QUOBRIX_REQUIRES(changing_, mutex_);
    void removeLeftovers() QUOBRIX_REQUIRES(changing_, mutex_);
    Result<void> ready() QUOBRIX_REQUIRES(changing_, mutex_);
    Result<void> unlessFailed(Result<void> done, bool certain) QUOBRIX_REQUIRES(changing_, mutex_);
    void rollBack(bool certain) QUOBRIX_REQUIRES(changing_, mutex_);

    /// Held while something is changed, so that changes and commits follow one another; taken before the other one.
    Mutex changing_;
    /// Held while anything is looked at; free while a commit waits for a flush.
    mutable Mutex mutex_;
    const std::unique_ptr<File> file_;
    std::uint64_t fileSize_ QUOBRIX_GUARDED_BY(mutex_) = 0;      ///< bytes
    std::uint64_t committedSize_ QUOBRIX_GUARDED_BY(mutex_) = 0; ///< bytes; what spills have appended does not count
    mutable std::uint32_t snapshots_ QUOBRIX_GUARDED_BY(mutex_) = 0;
    mutable ReadCache cache_ QUOBRIX_GUARDED_BY(mutex_);

    Tables tables_ QUOBRIX_GUARDED_BY(mutex_);
    /// By entry: large contents that have no sectors yet.
    std::map<std::uint32_t, Bytes> pending_ QUOBRIX_GUARDED_BY(mutex_);
    std::size_t pendingBytes_ QUOBRIX_GUARDED_BY(mutex_) = 0;
    MiniPages miniPages_ QUOBRIX_GUARDED_BY(mutex_);
    /// Something is not committed.
    bool changed_ QUOBRIX_GUARDED_BY(mutex_) = true;
    /// Why the transaction was taken back, which its commit will tell.
    std::optional<Error> takenBack_ QUOBRIX_GUARDED_BY(mutex_);
    /// Why the last one was, which is told until something is written again.
    std::optional<Error> failed_ QUOBRIX_GUARDED_BY(mutex_);
};

} // namespace quobrix::cfb
