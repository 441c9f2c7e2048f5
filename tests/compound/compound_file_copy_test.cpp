#include "compound/compound_file.h"

#include "support/compound_checker.h"
#include "support/document_streams.h"
#include "support/fault_file.h"
#include "support/memory_file.h"

#include <gtest/gtest.h>

#include <string_view>
#include <thread>

namespace quobrix {
namespace {

using namespace test;

Bytes content(int seed, std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(seed + i * i / 64);
    return bytes;
}

/// Copies in one of the two ways; both give the committed streams.
using Copy = Result<void> (CompoundFile::*)(File&) const;

class CompoundFileCopy : public testing::TestWithParam<Copy> {
protected:
    /// A file of some megabytes with free space and streams of all sizes.
    CompoundFileCopy() {
        for (int i = 0; i < 300; ++i)
            write(i, i);
        EXPECT_TRUE(file_->commit());
        for (int i = 0; i < 300; i += 3) {
            file_->remove(std::to_string(i));
            streams_.erase(std::to_string(i));
        }
        EXPECT_TRUE(file_->commit());
    }

    void write(int index, int seed) {
        const std::string name = std::to_string(index);
        streams_[name] = content(seed, index % 10 == 1 ? 100'000u : index % 10 == 2 ? 0u : index * 13u);
        file_->write(name, streams_[name]);
    }

    Result<void> copyTo(File& target) const { return ((*file_).*GetParam())(target); }

    std::shared_ptr<Bytes> disk_ = std::make_shared<Bytes>();
    std::unique_ptr<CompoundFile> file_ = *CompoundFile::create(std::make_unique<MemoryFile>(disk_));
    Streams streams_;
};

TEST_P(CompoundFileCopy, HoldsWhatIsCommittedAndNothingElse) {
    const Streams committed = streams_;
    write(5, 99);
    write(1000, 1);
    ASSERT_TRUE(file_->spill());
    const auto copied = std::make_shared<Bytes>();
    MemoryFile target(copied);
    ASSERT_TRUE(copyTo(target));
    const CompoundImage image = examineCompoundFile(*copied);
    EXPECT_EQ(image.fault, "");
    EXPECT_TRUE(image.streams == committed);
    if (GetParam() == &CompoundFile::compactTo) {
        const auto compact = *CompoundFile::open(std::make_unique<MemoryFile>(copied));
        EXPECT_EQ(compact->space().freeBytes, 0u);
        EXPECT_LT(copied->size(), disk_->size() * 3 / 4);
    }
}

TEST_P(CompoundFileCopy, IsOfOneStateWhateverIsCommittedMeanwhile) {
    const Streams atTheBeginning = streams_;
    FaultDisk target(1);
    int commits = 0;
    target.afterEachChange = [&] {
        for (int i = 0; i < 120; ++i)
            write((commits * 120 + i) % 300, 50 + commits + i);
        ASSERT_TRUE(file_->commit());
        ++commits;
    };
    ASSERT_TRUE(copyTo(*target.file()));
    EXPECT_GE(commits, 3);
    const CompoundImage image = examineCompoundFile(target.current());
    EXPECT_EQ(image.fault, "");
    EXPECT_TRUE(image.streams == atTheBeginning);
    const CompoundImage source = examineCompoundFile(*disk_);
    EXPECT_EQ(source.fault, "");
    EXPECT_TRUE(source.streams == streams_);
    // What the copy has kept from being reused is free space again after the next commit.
    std::size_t size = 0;
    for (int round = 0; round < 4; ++round) {
        write(1, round);
        ASSERT_TRUE(file_->commit());
        size = round == 0 ? disk_->size() : size;
    }
    EXPECT_EQ(disk_->size(), size);
}

TEST_P(CompoundFileCopy, GoesAlongsideAnotherThread) {
    const Streams atTheBeginning = streams_;
    const auto copied = std::make_shared<Bytes>();
    std::thread other([&] {
        for (int round = 0; round < 20; ++round) {
            file_->write("1", content(round, 5000));
            EXPECT_TRUE(file_->commit());
            EXPECT_TRUE(file_->read("299"));
        }
    });
    MemoryFile target(copied);
    EXPECT_TRUE(copyTo(target));
    other.join();
    CompoundImage image = examineCompoundFile(*copied);
    EXPECT_EQ(image.fault, "");
    image.streams["1"] = atTheBeginning.at("1"); // which of its states was the last one is open
    EXPECT_TRUE(image.streams == atTheBeginning);
}

INSTANTIATE_TEST_SUITE_P(Ways, CompoundFileCopy, testing::Values(&CompoundFile::copyTo, &CompoundFile::compactTo));

class CompoundFileCompaction : public testing::Test {
protected:
    CompoundFileCompaction() {
        const auto file = *CompoundFile::create(std::make_unique<MemoryFile>(disk_));
        for (const char* name : {"a", "b", "c"})
            file->write(name, Bytes(6000, static_cast<std::uint8_t>(name[0])));
        EXPECT_TRUE(file->commit());
        entryOfB_ = entryOfB(*disk_);
    }

    /// Where its directory entry begins, which lies behind all contents.
    static std::size_t entryOfB(const Bytes& file) {
        return std::string_view(reinterpret_cast<const char*>(file.data()), file.size())
            .rfind(std::string_view("b\0\0\0", 4));
    }

    Result<void> compact(std::shared_ptr<Bytes> into = std::make_shared<Bytes>()) const {
        const auto file = *CompoundFile::open(std::make_unique<MemoryFile>(disk_));
        EXPECT_TRUE(file->writable());
        MemoryFile target(into);
        return file->compactTo(target);
    }

    std::shared_ptr<Bytes> disk_ = std::make_shared<Bytes>();
    std::size_t entryOfB_ = 0;
};

TEST_F(CompoundFileCompaction, RefusesToLeaveAnythingOut) {
    const Bytes sound = *disk_;
    disk_->at(entryOfB_ + 117) = 0x7F; // its chain begins nowhere
    EXPECT_EQ(compact().error().kind, ErrorKind::Corrupt);
    *disk_ = sound;
    disk_->at(entryOfB_ + 66) = 9; // no type
    EXPECT_EQ(compact().error().kind, ErrorKind::Corrupt);
    *disk_ = sound;
    disk_->at(entryOfB_ + 66) = 1; // an inner storage
    EXPECT_EQ(compact().error().kind, ErrorKind::Unsupported);
    *disk_ = sound;
    disk_->at(entryOfB_) = '!'; // what the format keeps out of names
    EXPECT_EQ(compact().error().kind, ErrorKind::Unsupported);
}

TEST_F(CompoundFileCompaction, KeepsWhatOtherProgramsSayOfAStream) {
    for (std::size_t i = 80; i < 116; ++i) // class id, state bits and times
        disk_->at(entryOfB_ + i) = static_cast<std::uint8_t>(i);
    const auto compacted = std::make_shared<Bytes>();
    ASSERT_TRUE(compact(compacted));
    const std::size_t entry = entryOfB(*compacted);
    ASSERT_LT(entry, compacted->size());
    EXPECT_TRUE(
        std::equal(disk_->begin() + entryOfB_ + 80, disk_->begin() + entryOfB_ + 116, compacted->begin() + entry + 80));
}

} // namespace
} // namespace quobrix
