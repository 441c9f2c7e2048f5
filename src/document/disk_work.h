#pragma once

#include "base/result.h"
#include "platform/file.h"
#include "texts/source_text.h"

#include <atomic>
#include <cstdint>
#include <functional>

namespace quobrix {

// What the disk may be busy with.
inline constexpr SourceText kSaving("Saving"), kCopying("Copying the file"), kCompacting("Compacting the file"),
    kKeepingBackup("Keeping a backup of the file"), kCopyingWhatCanBeRead("Copying what can be read");

/// What the thread that works and the one that paints tell each other.
struct DiskProgress {
    /// Bytes written, and about how many there will be. Work of which the latter is 0 cannot be cancelled.
    std::atomic<std::uint64_t> done = 0, total = 0;
    std::atomic<bool> cancelled = false;
    /// What is being done.
    std::atomic<const SourceText*> what = &kSaving;
};

/// The part of a save that waits for the disk. It touches no object of the document.
using DiskWork = std::function<Result<void>(DiskProgress&)>;
/// Runs it. The window does so on another thread and paints meanwhile.
using DiskRunner = std::function<Result<void>(const DiskWork&)>;

/// A copy that is being written to FILE: counted, and given up with Cancelled as soon as that is wanted.
class ProgressFile final : public ForwardingFile {
public:
    ProgressFile(File& file, DiskProgress& progress, const SourceText& what, std::uint64_t total)
        : ForwardingFile(file), progress_(progress) {
        progress_.what = &what;
        progress_.done = 0;
        progress_.total = total;
    }
    ~ProgressFile() override { progress_.total = 0; }
    ProgressFile(const ProgressFile&) = delete;
    ProgressFile& operator=(const ProgressFile&) = delete;

    Result<void> writeAt(std::uint64_t offset, ByteView bytes) override {
        if (progress_.cancelled)
            return Error{ErrorKind::Cancelled, {}};
        progress_.done += bytes.size();
        return file_.writeAt(offset, bytes);
    }

private:
    DiskProgress& progress_;
};

} // namespace quobrix
