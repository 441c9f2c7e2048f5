#include "compound/compound_file.h"

#include "support/compound_checker.h"
#include "support/document_streams.h"
#include "support/fault_file.h"
#include "support/memory_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace quobrix {
namespace {

using namespace test;

Streams contentOf(const CompoundFile& file) {
    Streams streams;
    for (const std::string& name : file.names()) {
        auto content = file.read(name);
        if (!content)
            return Streams{{"unreadable: " + name, {}}};
        streams[name] = *std::move(content);
    }
    return streams;
}

/// What opening these bytes yields; nothing when it fails, as it must only before the first commit.
std::optional<Streams> contentOf(Bytes image) {
    auto file = CompoundFile::open(std::make_unique<MemoryFile>(std::move(image)));
    return file ? std::optional(contentOf(**file)) : std::nullopt;
}

/// Writes, spills and commits of a random script, which knows at each moment what a reader may find.
class Script {
public:
    Script(FaultDisk& disk, unsigned seed) : disk_(disk), random_(seed) {
        auto file = CompoundFile::create(disk.file());
        while (!file) // the size could not be read
            file = CompoundFile::create(disk.file());
        file_ = *std::move(file);
    }

    bool allows(const std::optional<Streams>& found) const {
        return found == committed_ ||
               std::any_of(attempted_.begin(), attempted_.end(), [&](const Streams& it) { return found == it; });
    }
    const Streams& pending() const { return pending_; }
    CompoundFile& file() { return *file_; }

    void write(const std::string& name, std::size_t size) {
        Bytes bytes(size);
        for (std::size_t i = 0; i < size; i += 7)
            bytes[i] = static_cast<std::uint8_t>(random_());
        file_->write(name, bytes);
        pending_[name] = std::move(bytes);
    }
    void remove(const std::string& name) {
        file_->remove(name);
        pending_.erase(name);
    }
    void spill() {
        for (int attempt = 0; attempt < 4; ++attempt) {
            if (file_->spill())
                return;
            writeAgain();
        }
        ADD_FAILURE() << "no spill after four attempts";
    }
    void commit() {
        for (int attempt = 0; attempt < 4; ++attempt) {
            attempted_.push_back(pending_);
            if (file_->commit()) {
                committed_ = pending_;
                attempted_.clear();
                return;
            }
            // The user goes on working, and tries again.
            writeAgain();
            if (attempt == 1)
                change(2);
        }
        ADD_FAILURE() << "no commit after four attempts";
    }

    void change(int count) {
        static constexpr std::size_t kSizes[] = {0, 30, 64, 200, 1500, 4095, 4096, 6000, 20000};
        for (int i = 0; i < count; ++i) {
            const std::string name = std::to_string(random_() % 60);
            if (random_() % 4 == 0)
                remove(name);
            else
                write(name, kSizes[random_() % std::size(kSizes)]);
        }
    }

    void run(int rounds) {
        commit();
        for (int round = 0; round < rounds; ++round) {
            change(round % 3 == 0 ? 40 : 5);
            if (round % 2 == 0) {
                spill();
                change(10);
            }
            commit();
        }
    }

private:
    /// A failure has taken everything back; what a document then writes.
    void writeAgain() {
        const std::size_t failAt = std::exchange(disk_.failAt, 0);
        const Streams left = contentOf(*file_);
        EXPECT_TRUE(left == committed_.value_or(Streams()));
        EXPECT_FALSE(file_->commit());
        disk_.failAt = failAt;
        for (const auto& [name, bytes] : left)
            if (!pending_.contains(name))
                file_->remove(name);
        for (const auto& [name, bytes] : pending_)
            if (!left.contains(name) || left.at(name) != bytes)
                file_->write(name, bytes);
    }

    FaultDisk& disk_;
    std::mt19937 random_;
    std::unique_ptr<CompoundFile> file_;
    std::optional<Streams> committed_;
    Streams pending_;
    std::vector<Streams> attempted_; ///< commits that failed may have become durable all the same
};

class CompoundFileCrash : public testing::TestWithParam<unsigned> {};

TEST_P(CompoundFileCrash, APowerCutLeavesOldOrNew) {
    FaultDisk disk(GetParam());
    Script script(disk, GetParam());
    std::size_t cuts = 0;
    disk.afterEachChange = [&] {
        for (int cut = 0; cut < 8; ++cut, ++cuts)
            ASSERT_TRUE(script.allows(contentOf(disk.powerCut()))) << "after change " << disk.changes;
    };
    script.run(20);
    RecordProperty("cuts", static_cast<int>(cuts));
    const CompoundImage image = examineCompoundFile(disk.current());
    EXPECT_EQ(image.fault, "");
    EXPECT_TRUE(image.streams == script.pending());
}

INSTANTIATE_TEST_SUITE_P(Seeds, CompoundFileCrash, testing::Range(0u, 6u));

TEST(CompoundFileCrash, ALongSectorListIsMovedSafely) {
    FaultDisk disk(1);
    Script script(disk, 1);
    disk.afterEachChange = [&] {
        for (int cut = 0; cut < 3; ++cut)
            ASSERT_TRUE(script.allows(contentOf(disk.powerCut())));
    };
    script.write("small", 100);
    script.commit();
    // Beyond 109 pages of the allocation table (7 MB) their list no longer fits into the header.
    script.write("large", 7'200'000);
    script.spill();
    script.write("other", 9'000);
    script.commit();
    for (int round = 0; round < 4; ++round) {
        script.write("small", 200);
        script.write("other", 9'000);
        script.commit();
    }
    const CompoundImage image = examineCompoundFile(disk.current());
    EXPECT_EQ(image.fault, "");
    EXPECT_TRUE(image.streams == script.pending());
}

TEST(CompoundFileCrash, LeftoversOfAKilledSave) {
    for (const std::size_t leftover : {0, 1, 512, 100'000}) {
        FaultDisk made(1);
        Script script(made, 1);
        script.run(4);
        Bytes image = made.current();
        const std::size_t size = image.size();
        image.resize(size + leftover, 0xAB);
        for (unsigned seed = 1; seed <= 8; ++seed) {
            FaultDisk disk(seed, image);
            const auto file = *CompoundFile::open(disk.file());
            const Streams before = contentOf(*file);
            Streams after = before;
            after["new"] = Bytes(300, 7);
            disk.afterEachChange = [&] {
                for (int cut = 0; cut < 8; ++cut) {
                    const std::optional<Streams> found = contentOf(disk.powerCut());
                    ASSERT_TRUE(found == before || found == after);
                }
            };
            file->write("new", Bytes(300, 7));
            ASSERT_TRUE(file->commit());
            EXPECT_LT(disk.current().size(), size + 8 * 512) << leftover << " bytes";
            EXPECT_EQ(disk.current().size(), file->space().fileBytes);
            EXPECT_EQ(examineCompoundFile(disk.current()).fault, "");
        }
    }
}

/// Every operation fails once, alone or with those that follow it; the script goes on and nothing is lost.
class CompoundFileFailure : public testing::TestWithParam<std::pair<ErrorKind, std::size_t>> {};

TEST_P(CompoundFileFailure, OfAnyOperationLosesNothing) {
    const auto [kind, failures] = GetParam();
    for (std::size_t failAt = 1;; ++failAt) {
        FaultDisk disk(static_cast<unsigned>(failAt));
        disk.failAt = failAt;
        disk.failures = failures;
        disk.failWith = kind;
        Script script(disk, 5);
        disk.afterEachChange = [&] {
            ASSERT_TRUE(script.allows(contentOf(disk.powerCut()))) << "operation " << failAt << " failed";
        };
        script.run(5);
        if (HasFailure())
            return;
        ASSERT_TRUE(contentOf(disk.powerCut()) == script.pending()) << "operation " << failAt << " failed";
        const CompoundImage image = examineCompoundFile(disk.current());
        ASSERT_EQ(image.fault, "") << "operation " << failAt << " failed";
        if (disk.operations < failAt)
            break; // the script ended before it
    }
}

TEST(CompoundFileFailure, LeavesTheFileAsLargeAsItWas) {
    for (std::size_t failAt = 1;; ++failAt) {
        FaultDisk disk(static_cast<unsigned>(failAt));
        Script script(disk, 5);
        script.change(30);
        script.commit();
        const std::size_t size = disk.current().size();
        CompoundFile& file = script.file();
        disk.failAt = disk.operations + failAt;
        disk.failWith = ErrorKind::DiskFull;
        file.write("large", Bytes(50'000));
        const auto spilled = file.spill();
        file.write("0", Bytes(30'000));
        const auto committed = file.commit();
        if (spilled && committed)
            break;
        EXPECT_EQ((spilled ? committed : spilled).error().kind, ErrorKind::DiskFull);
        if (!committed) {
            EXPECT_EQ(disk.current().size(), size) << "operation " << failAt << " failed";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, CompoundFileFailure,
                         testing::Values(std::pair(ErrorKind::Io, std::size_t{1}),
                                         std::pair(ErrorKind::DiskFull, std::size_t{3})));

} // namespace
} // namespace quobrix
