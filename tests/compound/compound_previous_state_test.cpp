#include "compound/layout.h"
#include "compound/previous_state.h"

#include "compound/compound_file.h"
#include "support/document_streams.h"
#include "support/fault_file.h"
#include "support/memory_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>
#include <string_view>

namespace quobrix {
namespace {

using namespace test;

/// Random saves, of which some fail, some are killed and some end in a power cut. It knows the states that were there.
class PreviousState : public testing::TestWithParam<unsigned> {
protected:
    static std::uint32_t transactionOf(const Bytes& image) { return cfb::Header::decode(image)->transaction; }

    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_()) % limit; }

    void reopen(const Bytes& image) {
        file_.reset();
        disk_.replace(image);
        file_ = *CompoundFile::open(disk_.file());
        states_[transactionOf(image)] = pending_ = streamsOf(*file_);
    }

    void change() {
        static constexpr std::uint32_t kSizes[] = {1, 64, 200, 700, 4095, 4096, 9000, 30000};
        for (std::uint32_t i = 0; i < 1 + below(12); ++i) {
            const std::string name = std::to_string(below(60));
            if (below(3) == 0) {
                file_->remove(name);
                pending_.erase(name);
                continue;
            }
            // Alike but for a few bytes, as the columns of trips are: one in another's place still makes sense.
            Bytes content(kSizes[below(std::size(kSizes))], 7);
            for (std::size_t at = 0; at < content.size(); at += 512)
                content[at] = static_cast<std::uint8_t>(random_());
            file_->write(name, content);
            pending_[name] = std::move(content);
        }
    }

    /// Of IMAGE without its last LOST bytes.
    void expectPreviousOrNothing(Bytes image, std::size_t lost) {
        const std::uint32_t transaction = transactionOf(image);
        image.resize(image.size() - std::min(image.size() - 512, lost));
        MemoryFile file(std::move(image));
        auto past = cfb::previousState(file);
        ASSERT_TRUE(past);
        ++asked_;
        if (!*past)
            return;
        ++found_;
        const auto opened = CompoundFile::open(*std::move(past));
        ASSERT_TRUE(opened && states_.contains(transaction - 1));
        EXPECT_TRUE(streamsOf(**opened) == states_[transaction - 1]) << transaction << " without " << lost;
    }

    void examine(const Bytes& image) {
        for (const std::size_t lost : {0, 100, 512, 1500, 5000, 20000})
            expectPreviousOrNothing(image, lost + below(64));
        // A sector that nothing leads to has another's content, as if a save had been killed.
        MemoryFile file(image);
        const auto layout = cfb::readLayout(file);
        ASSERT_TRUE(layout);
        const auto sectors = static_cast<std::uint32_t>(image.size() / 512 - 1);
        for (int i = 0; i < 8; ++i) {
            const std::uint32_t sector = below(sectors), other = below(sectors);
            if (sector < layout->fat.count() * 128u && cfb::load32(layout->fat.at(4 * sector)) != cfb::kFreeSector)
                continue;
            Bytes garbled = image;
            std::copy_n(image.begin() + 512 * (other + 1), 512, garbled.begin() + 512 * (sector + 1));
            expectPreviousOrNothing(std::move(garbled), 0);
        }
    }

    /// A note elsewhere than where each attempt to save puts it may be an earlier attempt's.
    static void expectNothingWithTheNoteElsewhere(Bytes image) {
        constexpr std::string_view kMark("Before\0\1", 8);
        for (std::size_t at = 512, end = image.size(); at + 512 <= end; at += 512)
            if (std::equal(kMark.begin(), kMark.end(), image.data() + at)) {
                image.resize(image.size() + 512);
                std::copy_n(image.data() + at, 512, image.data() + image.size() - 512);
                std::fill_n(image.data() + at, 512, std::uint8_t{0});
            }
        MemoryFile moved(std::move(image));
        const auto past = cfb::previousState(moved);
        EXPECT_TRUE(past && !*past);
    }

    std::mt19937 random_{GetParam()};
    FaultDisk disk_{GetParam()};
    std::unique_ptr<CompoundFile> file_ = *CompoundFile::create(disk_.file());
    Streams pending_;
    std::map<std::uint32_t, Streams> states_; ///< by the header's count of commits
    std::size_t asked_ = 0, found_ = 0;
};

TEST_P(PreviousState, IsExactlyWhatItWasOrNotFound) {
    change();
    ASSERT_TRUE(file_->commit());
    reopen(disk_.current());
    std::size_t afterSave = 0, foundAfterSave = 0;
    for (int step = 0; step < 150; ++step) {
        change();
        switch (below(8)) {
        case 0: // killed on the way
            (void)file_->spill();
            reopen(disk_.current());
            break;
        case 1: // of what is not durable any part is there
            if (below(2) != 0)
                (void)file_->spill();
            reopen(disk_.powerCut());
            break;
        case 2: // fails, once or until the end
            disk_.failAt = disk_.operations + 1 + below(12);
            disk_.failures = below(2) == 0 ? 1 : 1000;
            if (const bool done = bool(file_->commit()); disk_.failAt = 0, done)
                states_[transactionOf(disk_.current())] = pending_;
            else
                pending_ = streamsOf(*file_);
            if (below(2) == 0)
                reopen(below(2) == 0 ? disk_.powerCut() : disk_.current());
            break;
        default:
            ASSERT_TRUE(below(4) != 0 || file_->spill());
            ASSERT_TRUE(file_->commit());
            states_[transactionOf(disk_.current())] = pending_;
            const std::size_t before = found_;
            expectPreviousOrNothing(disk_.current(), 0);
            ++afterSave;
            foundAfterSave += found_ - before;
            expectNothingWithTheNoteElsewhere(disk_.current());
        }
        examine(disk_.current());
    }
    EXPECT_GE(foundAfterSave, afterSave * 9 / 10); // but for those after a failure that left doubts
    EXPECT_GT(found_, asked_ / 4);
    std::printf("[  COUNTED ] previous state: %zu of %zu saves; of %zu damaged files %zu\n", foundAfterSave, afterSave,
                asked_, found_);
}

INSTANTIATE_TEST_SUITE_P(Seeds, PreviousState, testing::Range(0u, 6u));

} // namespace
} // namespace quobrix
