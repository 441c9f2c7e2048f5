#include "compound/compound_file.h"
#include "compound/format.h"

#include "support/compound_checker.h"
#include "support/memory_file.h"

#include <gtest/gtest.h>

#include <string_view>

namespace quobrix {
namespace {

using namespace test;

/// A stream's bytes, recognisable in the file wherever they lie.
Bytes content(char letter, std::size_t size) { return Bytes(size, static_cast<std::uint8_t>(letter)); }

class CompoundFileDamage : public testing::Test {
protected:
    CompoundFileDamage() {
        auto file = CompoundFile::create(std::make_unique<MemoryFile>(disk_));
        for (char letter = 'a'; letter <= 'z'; ++letter)
            (*file)->write(std::string(1, letter), content(letter, letter < 'm' ? 640 : 5120));
        EXPECT_TRUE((*file)->commit());
    }

    Result<std::unique_ptr<CompoundFile>> open() const {
        return CompoundFile::open(std::make_unique<MemoryFile>(disk_));
    }

    void put32(std::size_t offset, std::uint32_t value) {
        for (int i = 0; i < 4; ++i)
            disk_->at(offset + i) = static_cast<std::uint8_t>(value >> 8 * i);
    }
    /// Where the entry of a one-letter stream begins: its name, the terminator, and nothing for the rest of the name.
    std::size_t entryOf(char letter) const {
        std::string name(64, '\0');
        name[0] = letter;
        return std::string_view(reinterpret_cast<const char*>(disk_->data()), disk_->size()).find(name);
    }
    std::size_t sectorsFilledWith(char letter) const {
        std::size_t count = 0;
        for (std::size_t at = 512; at + 512 <= disk_->size(); at += 512)
            count += std::all_of(disk_->begin() + at, disk_->begin() + at + 512, [&](auto c) { return c == letter; });
        return count;
    }
    /// Everything except LOST can be read, and still can after saves that change all the rest.
    void expectLost(std::string_view lost) {
        for (int round = 0; round < 4; ++round) {
            auto file = open();
            ASSERT_TRUE(file) << file.error().detail;
            for (char letter = 'a'; letter <= 'z'; ++letter) {
                const std::string name(1, letter);
                if (lost.find(letter) != std::string_view::npos)
                    continue;
                const auto read = (*file)->read(name);
                ASSERT_TRUE(read && read->front() == letter) << name;
                (*file)->write(name, content(letter, read->size()));
            }
            (*file)->write("new", content('!', 3000 * (round + 1)));
            ASSERT_TRUE((*file)->commit());
        }
    }

    std::shared_ptr<Bytes> disk_ = std::make_shared<Bytes>();
};

TEST_F(CompoundFileDamage, OpeningSaysWhatIsWrong) {
    const auto kindOf = [](Bytes bytes) {
        auto file = CompoundFile::open(std::make_unique<MemoryFile>(std::move(bytes)));
        return file ? std::optional<ErrorKind>() : file.error().kind;
    };
    EXPECT_EQ(kindOf({}), ErrorKind::NotADocument);
    EXPECT_EQ(kindOf(Bytes(4096, 'x')), ErrorKind::NotADocument);
    EXPECT_EQ(kindOf({disk_->begin(), disk_->begin() + 100}), ErrorKind::Corrupt);
    EXPECT_EQ(kindOf({disk_->begin(), disk_->begin() + 512}), ErrorKind::Corrupt);
    Bytes later = *disk_;
    later[26] = 4;
    later[30] = 12;
    EXPECT_EQ(kindOf(later), ErrorKind::Unsupported);
}

TEST_F(CompoundFileDamage, AnEntryThatMakesNoSenseHidesOnlyItself) {
    for (const char letter : {'c', 'p'})
        disk_->at(entryOf(letter) + 66) = 9; // its type
    EXPECT_EQ((*open())->names().size(), 24u);
    const std::size_t sectors = sectorsFilledWith('p');
    EXPECT_EQ(sectors, 10u);
    expectLost("cp");
    EXPECT_EQ(sectorsFilledWith('p'), sectors);
}

TEST_F(CompoundFileDamage, DuplicateNames) {
    for (const char letter : {'b', 'd', 'q'})
        disk_->at(entryOf(letter)) = 'P';
    disk_->at(entryOf('p') + 120 + 3) = 1; // damaged at that
    {
        const auto file = *open();
        EXPECT_EQ(file->names().size(), 23u);
        EXPECT_TRUE(file->contains("p"));
        file->write("p", content('!', 100));
        ASSERT_TRUE(file->commit());
    }
    {
        const auto file = *open();
        EXPECT_EQ(*file->read("p"), content('!', 100));
        file->remove("p");
        EXPECT_FALSE(file->contains("p"));
        ASSERT_TRUE(file->commit());
    }
    EXPECT_FALSE((*open())->contains("p"));
    expectLost("bdpq");
    EXPECT_EQ((*open())->names().size(), 23u); // with the new one
}

TEST_F(CompoundFileDamage, CrossedAndEndlessChains) {
    const std::size_t p = entryOf('p'), q = entryOf('q'), s = entryOf('s');
    for (int i = 0; i < 4; ++i)
        disk_->at(p + 116 + i) = disk_->at(q + 116 + i); // begins where another does
    put32(s + 120, 1'000'000);                           // claims more than its chain has
    const auto file = open();
    ASSERT_TRUE(file);
    for (const char* name : {"p", "q", "s"})
        EXPECT_EQ((*file)->read(name).error().kind, ErrorKind::Corrupt);
    expectLost("pqs");
    EXPECT_EQ(sectorsFilledWith('q'), 10u);
    EXPECT_EQ(sectorsFilledWith('s'), 10u);
}

/// A stream's second sector is called free, or its chain goes on beyond the end of the file: neither may become
/// another's.
TEST_F(CompoundFileDamage, NothingIsPutBehindABrokenChain) {
    const auto markOf = [&](std::uint32_t sector) {
        const std::uint32_t page = cfb::load32(disk_->data() + 76 + 4 * (sector / 128));
        return static_cast<std::size_t>(cfb::sectorOffset(page)) + 4 * (sector % 128);
    };
    const std::uint32_t first = cfb::load32(disk_->data() + entryOf('p') + 116);
    const Bytes sound = *disk_;
    put32(markOf(cfb::load32(disk_->data() + markOf(first))), cfb::kFreeSector);
    expectLost("p");
    EXPECT_EQ(sectorsFilledWith('p'), 10u);
    *disk_ = sound;
    put32(markOf(first), static_cast<std::uint32_t>(disk_->size() / 512 + 20));
    expectLost("p");
    EXPECT_EQ(sectorsFilledWith('p'), 10u);
}

TEST_F(CompoundFileDamage, ALostAllocationTable) {
    put32(44, 0xFFFFFFFF); // a header that claims 2^32 pages of it
    const auto file = open();
    ASSERT_TRUE(file);
    EXPECT_EQ(*(*file)->read("q"), content('q', 5120));
    EXPECT_EQ((*file)->writable().error().kind, ErrorKind::Corrupt);
    MemoryFile target;
    EXPECT_EQ((*file)->compactTo(target).error().kind, ErrorKind::Corrupt);
    (*file)->write("q", {});
    const Bytes before = *disk_;
    EXPECT_EQ((*file)->commit().error().kind, ErrorKind::Corrupt);
    EXPECT_TRUE(*disk_ == before);
}

TEST_F(CompoundFileDamage, AnOddEndOfTheFileDoesNotMatter) {
    disk_->resize(disk_->size() + 700, 0xEE); // growth that a crash cut short
    expectLost("");
    EXPECT_EQ((*open())->read("new")->size(), 12000u);
}

TEST_F(CompoundFileDamage, AFileThatWasCutShortIsOnlyRead) {
    disk_->clear();
    {
        const auto file = *CompoundFile::create(std::make_unique<MemoryFile>(disk_));
        file->write("b", content('b', 640));
        file->write("x", content('x', 20'000));
        ASSERT_TRUE(file->commit());
        file->write("last", content('!', 10'000));
        ASSERT_TRUE(file->commit());
        file->remove("x"); // its sectors then take the tables of the next commits
        for (const std::size_t size : {1, 2, 3}) {
            file->write("small", content('s', size));
            ASSERT_TRUE(file->commit());
        }
    }
    const Bytes tail = content('!', 10'000 % 512);
    const auto found = std::find_end(disk_->begin(), disk_->end(), tail.begin(), tail.end());
    const auto end = static_cast<std::size_t>(found - disk_->begin()) + tail.size();
    disk_->resize(end); // how a writer may leave it that does not fill the last sector
    ASSERT_TRUE(open());
    EXPECT_EQ(*(*open())->read("last"), content('!', 10'000));
    EXPECT_TRUE((*open())->writable());
    for (const std::size_t lost : {1, 100, 272, 273, 1000, 5000}) {
        disk_->resize(end - lost);
        const auto file = *open();
        ASSERT_FALSE(file->read("last"));
        EXPECT_EQ(file->read("last").error().kind, ErrorKind::Corrupt);
        EXPECT_EQ(file->read("b")->size(), 640u);
        EXPECT_EQ(file->writable().error().kind, ErrorKind::Corrupt);
        file->write("new", content('n', 5000));
        EXPECT_EQ(file->commit().error().kind, ErrorKind::Corrupt);
        EXPECT_EQ(disk_->size(), end - lost);
    }
}

/// As some programs leave it: the mini stream is the last in the file, which ends with what is used of it.
TEST_F(CompoundFileDamage, AFileMayEndWithinItsMiniStream) {
    const auto get32 = [&](std::size_t at) { return cfb::load32(disk_->data() + at); };
    disk_->clear();
    {
        const auto file = *CompoundFile::create(std::make_unique<MemoryFile>(disk_));
        file->write("a", content('a', 100));
        file->write("b", content('b', 100));
        ASSERT_TRUE(file->commit());
    }
    const auto offsetOf = [](std::uint32_t sector) { return static_cast<std::size_t>(cfb::sectorOffset(sector)); };
    const std::size_t fat = offsetOf(get32(76)), root = offsetOf(get32(48));
    const std::uint32_t before = get32(root + cfb::entry::kStart);
    const std::size_t page = offsetOf(before);
    constexpr std::size_t kUsed = 4 * cfb::kMiniSectorSize;
    const auto last = static_cast<std::uint32_t>(disk_->size() / cfb::kSectorSize - 1);
    const Bytes used(disk_->begin() + page, disk_->begin() + page + kUsed);
    put32(fat + std::size_t{4} * before, cfb::kFreeSector);
    put32(fat + std::size_t{4} * last, cfb::kEndOfChain);
    put32(root + cfb::entry::kStart, last);
    put32(root + cfb::entry::kSize, kUsed);
    disk_->insert(disk_->end(), used.begin(), used.end());
    const Bytes whole = *disk_;

    for (const std::size_t size : {50, 100, 1000}) {
        *disk_ = whole;
        const auto file = *open();
        ASSERT_TRUE(file->writable());
        file->write("b", content('n', size));
        ASSERT_TRUE(file->commit());
        EXPECT_EQ(*(*open())->read("a"), content('a', 100));
        EXPECT_EQ(*(*open())->read("b"), content('n', size));
        EXPECT_EQ(examineCompoundFile(*disk_).fault, "");
    }
    // What is missing must not be in use, whatever the root entry says.
    *disk_ = whole;
    put32(root + cfb::entry::kSize, kUsed / 2);
    disk_->resize(disk_->size() - cfb::kMiniSectorSize);
    const auto file = *open();
    EXPECT_FALSE(file->read("b"));
    EXPECT_EQ(file->writable().error().kind, ErrorKind::Corrupt);
}

TEST_F(CompoundFileDamage, ForbiddenNames) {
    const auto file = *open();
    using namespace std::string_literals;
    for (const std::string& name : {""s, "a/b"s, "0123456789012345678901234567890123"s, "a\0b"s, "\xED\xA0\x80"s}) {
        file->write(name, {1});
        file->write("b", {2});
        EXPECT_EQ(file->commit().error().kind, ErrorKind::Unsupported);
        EXPECT_EQ(file->read("b")->size(), 640u);
        file->remove(name);
        EXPECT_TRUE(file->commit());
    }
    // Names that differ in case only are one.
    file->write("A", {1});
    EXPECT_EQ(*file->read("a"), Bytes{1});
}

} // namespace
} // namespace quobrix
