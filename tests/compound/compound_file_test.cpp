#include "compound/allocation.h"
#include "compound/compound_file.h"

#include "support/compound_checker.h"
#include "support/document_streams.h"
#include "support/memory_file.h"

#include <gtest/gtest.h>

#include <random>

namespace quobrix {
namespace {

using namespace test;

Bytes noise(std::mt19937& random, std::size_t size) {
    Bytes bytes(size);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    return bytes;
}

std::unique_ptr<CompoundFile> opened(const std::shared_ptr<Bytes>& disk) {
    auto file = CompoundFile::open(std::make_unique<MemoryFile>(disk));
    EXPECT_TRUE(file) << file.error().detail;
    return file ? *std::move(file) : nullptr;
}

TEST(CompoundFile, SpaceIsReusedUpToTheLimitOfTheFormat) {
    using namespace cfb;
    AllocationTable table(100, Reuse::AfterCommit);
    ASSERT_TRUE(table.allocate(60));
    table.commit(false);
    for (std::uint32_t sector = 10; sector < 30; ++sector)
        table.release(sector);
    // What the header on disk leads to is not given out, so only the 40 at the end are there.
    EXPECT_EQ(table.allocate(41).error().kind, ErrorKind::Unsupported);
    EXPECT_EQ(table.allocate(40)->front().first, 60u);
    EXPECT_EQ(table.allocate(1).error().kind, ErrorKind::Unsupported);
    table.commit(false);
    const auto runs = table.allocate(20);
    ASSERT_TRUE(runs);
    EXPECT_EQ(runs->size(), 1u);
    EXPECT_EQ(runs->front().first, 10u);
    EXPECT_EQ(table.freeCount(), 0u);
}

TEST(CompoundFile, ManySmallSaves) {
    std::mt19937 random(1);
    const auto disk = std::make_shared<Bytes>();
    const auto file = *CompoundFile::create(std::make_unique<MemoryFile>(disk));
    const auto write = [&](std::size_t index) {
        file->write(std::to_string(index), Bytes(index * 7 % 6000 + random() % 40, 'x'));
    };
    for (std::size_t i = 0; i < 300; ++i)
        write(i);
    ASSERT_TRUE(file->commit());
    const std::size_t size = disk->size();
    for (int save = 0; save < 1000; ++save) {
        for (int i = 0; i < 5; ++i)
            write(random() % 300);
        ASSERT_TRUE(file->commit());
    }
    EXPECT_LT(disk->size(), 2 * size);
    EXPECT_LT(file->space().freeBytes, disk->size() / 2);
    EXPECT_EQ(examineCompoundFile(*disk).fault, "");
}

/// Thousands of random operations, with a map as the oracle and the independent checker after each commit.
class CompoundFileModel : public testing::TestWithParam<unsigned> {};

TEST_P(CompoundFileModel, FollowsAMap) {
    std::mt19937 random(GetParam());
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    const auto disk = std::make_shared<Bytes>();
    auto created = CompoundFile::create(std::make_unique<MemoryFile>(disk));
    ASSERT_TRUE(created);
    std::unique_ptr<CompoundFile> file = *std::move(created);
    Streams model, committed;
    const std::size_t names = 20 + below(600);
    for (int step = 0; step < 2500; ++step) {
        const std::string name = (below(2) ? "" : "Name ") + std::to_string(below(names));
        switch (below(16)) {
        case 0:
            ASSERT_TRUE(file->commit());
            committed = model;
            {
                const CompoundImage image = examineCompoundFile(*disk);
                ASSERT_EQ(image.fault, "");
                ASSERT_TRUE(image.streams == model);
            }
            break;
        case 1:
            ASSERT_TRUE(file->spill());
            break;
        case 2:
            if (!committed.empty() && below(4) == 0) { // goes back to what is committed
                file = opened(disk);
                ASSERT_TRUE(file);
                model = committed;
            }
            break;
        case 3:
        case 4:
        case 5:
            file->remove(name);
            model.erase(name);
            break;
        case 6:
        case 7: {
            const auto content = file->read(name);
            ASSERT_EQ(bool(content), model.contains(name));
            if (content) {
                ASSERT_TRUE(*content == model[name]);
            }
            ASSERT_EQ(file->contains(name), model.contains(name));
            break;
        }
        default: {
            static constexpr std::size_t kSizes[] = {1, 64, 65, 200, 511, 512, 513, 4095, 4096, 4097, 9000, 70000};
            const std::size_t largest = kSizes[below(std::size(kSizes))];
            model[name] = noise(random, below(8) == 0 ? 0 : below(2) ? largest : below(largest));
            file->write(name, model[name]);
        }
        }
    }
    EXPECT_TRUE(streamsOf(*file) == model);
}

INSTANTIATE_TEST_SUITE_P(Seeds, CompoundFileModel, testing::Range(0u, 6u));

} // namespace
} // namespace quobrix
