#pragma once

#include "compound/compound_file.h"
#include "compound/io.h"
#include "compound/mini_pages.h"
#include "compound/tables.h"

#include <map>
#include <mutex>
#include <optional>

namespace quobrix::cfb {

/// Why a crash cannot hurt: the header sector is the root of everything. It leads to the directory, the mini FAT and,
/// by way of the DIFAT, to the FAT, and these lead to every stream. No sector that the header on disk leads to is ever
/// written (AllocationTable knows them as held). What changes goes to free sectors, together with new copies of all
/// table and directory pages that speak of it, up to the header itself; a flush makes them durable; then one write of
/// 512 bytes, which a disk does wholly or not at all, turns to the new state. Until it has happened the old state is
/// there untouched, whatever became of the other writes and in whatever order they arrived. Sectors of the old state
/// are reused only after the new header is durable.
///
/// In memory the new state is simply the current one. Tables keep the pages they had before, so that a transaction
/// that fails is taken back without reading anything. It must be: when a flush fails, a system forgets what it could
/// not write, contents spilled long ago among it, and a later flush would succeed without them.
class CompoundFileEngine final : public CompoundFile {
public:
    /// A new file.
    explicit CompoundFileEngine(std::unique_ptr<File> file) : file_(std::move(file)) {}
    CompoundFileEngine(std::unique_ptr<File> file, Layout layout);

    bool contains(std::string_view name) const override;
    std::vector<std::string> names() const override;
    using CompoundFile::read;
    Result<void> read(std::string_view name, Bytes& content) const override;
    void write(std::string_view name, Bytes content) override;
    void remove(std::string_view name) override;
    Result<void> spill() override;
    Result<void> commit() override;
    Result<void> writable() const override;
    Result<void> copyTo(File& target) const override;
    Result<void> compactTo(File& target) const override;
    Space space() const override;

private:
    class Snapshot;
    using Lock = std::unique_lock<std::mutex>;

    std::uint32_t findStream(std::string_view name) const;

    Result<void> readMini(std::uint32_t sector, std::size_t size, Bytes& out) const;
    Result<void> readLarge(std::uint32_t sector, std::size_t size, Bytes& out) const;

    Result<void> take(std::string_view name, Bytes content);
    Result<void> placeMini(std::uint32_t sector, ByteView content);
    Result<std::uint8_t*> miniPage(std::uint32_t index);
    void dropPending(std::uint32_t index);

    Result<void> placeContents(WriteBatch& batch);
    Result<void> writeContents();
    Result<void> writeBatch(WriteBatch& batch);
    Result<void> flush(Lock& lock);
    Result<void> writeEverything(Lock& lock);
    Result<void> turnHeader(Lock& lock, bool& certain);
    void cutLitter();
    Result<void> ready();
    Result<void> unlessFailed(Result<void> done, bool certain);
    void rollBack(bool certain);

    /// Held while something is changed, so that changes and commits follow one another.
    std::mutex changing_;
    /// Held while anything is looked at; free while a commit waits for a flush.
    mutable std::mutex mutex_;
    std::unique_ptr<File> file_;
    std::uint64_t fileSize_ = 0;      ///< bytes
    std::uint64_t committedSize_ = 0; ///< bytes; what spills have appended does not count
    mutable std::uint32_t snapshots_ = 0;
    mutable ReadCache cache_;

    Tables tables_;
    std::map<std::uint32_t, Bytes> pending_; ///< by entry: large contents that have no sectors yet
    std::size_t pendingBytes_ = 0;
    MiniPages miniPages_;
    bool changed_ = true;         ///< something is not committed
    std::optional<Error> doomed_; ///< why the transaction was taken back, which its commit will tell
    std::optional<Error> failed_; ///< why the last one was, which is told until something is written again
};

} // namespace quobrix::cfb
