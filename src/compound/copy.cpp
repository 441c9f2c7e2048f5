#include "compound/engine.h"
#include "texts/text.h"

#include <algorithm>

namespace quobrix::cfb {

namespace {

constexpr std::size_t kCopyBlock = 1 << 20;

} // namespace

/// The committed state as a file of its own, whatever happens to the engine's meanwhile: while one lives, no sector of
/// it is used for anything else.
class CompoundFileEngine::Snapshot final : public File {
public:
    explicit Snapshot(const CompoundFileEngine& engine) : engine_(engine) {
        const MutexLock lock(engine_.mutex_);
        header_ = engine_.tables_.header();
        size_ = engine_.committedSize_;
        ++engine_.snapshots_;
    }
    ~Snapshot() override {
        const MutexLock lock(engine_.mutex_);
        --engine_.snapshots_;
    }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        if (offset > size_ || out.size() > size_ - offset)
            return Error{ErrorKind::Corrupt, text(TextId::TheFileEndsAtByte, size_)};
        const MutexLock lock(engine_.mutex_); // for each part, so that others need not wait for a whole copy
        QUOBRIX_TRY(engine_.file_->readAt(offset, out));
        if (offset < kSectorSize)
            std::copy_n(header_.begin() + static_cast<std::ptrdiff_t>(offset),
                        std::min(out.size(), static_cast<std::size_t>(kSectorSize - offset)), out.begin());
        return {};
    }
    Result<std::uint64_t> size() override { return size_; }
    Result<void> writeAt(std::uint64_t, ByteView) override { return refused(); }
    Result<void> resize(std::uint64_t) override { return refused(); }
    Result<void> flush() override { return refused(); }

private:
    static Error refused() { return {ErrorKind::ReadOnly, text(TextId::APastStateOfAFile)}; }

    const CompoundFileEngine& engine_;
    Sector header_{};
    std::uint64_t size_ = 0;
};

Result<void> CompoundFileEngine::copyTo(File& target) const {
    Snapshot source(*this);
    const std::uint64_t size = *source.size();
    Bytes block(static_cast<std::size_t>(std::min<std::uint64_t>(kCopyBlock, size)));
    for (std::uint64_t offset = 0; offset < size; offset += block.size()) {
        const auto part =
            std::span(block).first(static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), size - offset)));
        QUOBRIX_TRY(source.readAt(offset, part));
        QUOBRIX_TRY(target.writeAt(offset, part));
    }
    return target.flush(); // a later commit flushes only what it changes
}

/// What FROM says of its entry INDEX, name and content excepted, for the stream NAME, or for the root without one.
void CompoundFileEngine::copyAttributes(std::string_view name, const Directory& from, std::uint32_t index) {
    const MutexLock lock(mutex_);
    if (const std::uint32_t own = name.empty() ? 0 : findStream(name); own != kNoEntry)
        tables_.directory.copyAttributes(own, from, index);
}

Result<void> CompoundFileEngine::compactTo(File& target) const {
    auto snapshot = std::make_unique<Snapshot>(*this);
    auto layout = readLayout(*snapshot);
    if (!layout)
        return layout.error();
    const CompoundFileEngine source(std::move(snapshot), *std::move(layout));
    const MutexLock lock(source.mutex_); // no other thread has it
    const Directory& from = source.tables_.directory;
    QUOBRIX_TRY(source.complete());
    QUOBRIX_TRY(from.onlyStreams());
    auto created = create(std::make_unique<BorrowedFile>(target));
    if (!created)
        return created.error();
    auto& compact = static_cast<CompoundFileEngine&>(**created);
    compact.copyAttributes({}, from, 0);
    const std::vector<std::uint32_t> members = from.members();
    for (const bool mini : {true, false})
        for (const std::uint32_t index : members) {
            if ((from.size(index) < kMiniCutoff) != mini)
                continue;
            const std::string name = from.name(index).text();
            Bytes content;
            QUOBRIX_TRY(source.readStream(name, content));
            compact.write(name, std::move(content));
            compact.copyAttributes(name, from, index);
        }
    return compact.commit();
}

} // namespace quobrix::cfb
