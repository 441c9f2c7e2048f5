#pragma once

#include "platform/file.h"

#include <functional>
#include <random>
#include <vector>

namespace quobrix::test {

/// Counts operations and makes some fail: number failAt (from 1) and failures - 1 after it.
struct FailingOperations {
    std::size_t failAt = 0;
    std::size_t failures = 1;
    ErrorKind failWith = ErrorKind::Io;
    std::size_t operations = 0;
    bool failed = false; ///< any has

    bool fails() {
        ++operations;
        const bool now = failAt != 0 && operations >= failAt && operations < failAt + failures;
        failed = failed || now;
        return now;
    }
};

/// A disk that remembers what is durable and what is only on its way, and fails when told to: reads, writes, sizes,
/// cuts and flushes. A failing write leaves a part; after a failing flush the writes before it may never become
/// durable.
class FaultDisk : public FailingOperations {
public:
    /// CONTENT is there, durably.
    explicit FaultDisk(unsigned seed, const Bytes& content = {})
        : random_(seed), current_(content), durable_(content) {}

    /// CONTENT is there now, durably. Files over this disk must be opened anew.
    void replace(const Bytes& content) {
        current_ = durable_ = content;
        onTheWay_.clear();
        sizes_.clear();
    }

    /// What a file over this disk reads back, whether durable or not.
    const Bytes& current() const { return current_; }

    /// What a power cut leaves now: everything up to the last flush, and of the writes since then any part, in any
    /// order. Only a write of 512 bytes at the beginning is whole or not there at all.
    Bytes powerCut();

    /// Called after each write, cut and flush that succeeds.
    std::function<void()> afterEachChange;
    std::size_t changes = 0; ///< writes, cuts and flushes that succeeded

    std::unique_ptr<File> file();

private:
    friend class FaultFile;
    struct Write {
        std::uint64_t offset;
        Bytes bytes;
    };

    void changed();
    static void apply(Bytes& to, const Write& write, std::size_t begin, std::size_t end);
    void applySome(Bytes& to);

    std::mt19937 random_;
    Bytes current_;
    Bytes durable_;
    std::vector<Write> onTheWay_;
    std::vector<std::size_t> sizes_; ///< the file was cut to, and may not be yet
};

} // namespace quobrix::test
