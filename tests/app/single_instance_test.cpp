#include "app/single_instance.h"

#include "support/temporary_folder.h"

#include <QTest>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <vector>

namespace quobrix {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class SingleInstanceTest : public ::testing::Test {
protected:
    /// Another copy that is started with FILE; whether that is opened by the first one.
    std::future<bool> start(const fs::path& file, std::chrono::milliseconds patience = 20s) {
        return std::async(std::launch::async, [this, file, patience] {
            SingleInstance later(settings_, patience);
            EXPECT_FALSE(later.first());
            const bool opened = later.handOver(file);
            EXPECT_EQ(later.first(), !opened && firstHasEnded_) << "it takes the place of one that has ended only";
            return opened;
        });
    }
    static bool ended(const std::future<bool>& copy) { return copy.wait_for(0s) == std::future_status::ready; }
    bool wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20'000); }

    const test::TemporaryFolder folder_;
    const fs::path settings_ = folder_ / "quobrix";
    std::atomic<bool> firstHasEnded_ = false;
    SingleInstance first_{settings_};
    std::vector<fs::path> files_;
    std::vector<SingleInstance::Opened> opened_;
    const SingleInstance::Open open_ = [this](const fs::path& file, const SingleInstance::Opened& opened) {
        files_.push_back(file);
        opened_.push_back(opened);
    };
};

TEST_F(SingleInstanceTest, TheFirstCopyOpensFilesOfLaterOnes) {
    ASSERT_TRUE(first_.first());
    first_.receive(open_);
    const std::vector<fs::path> sent{"/tmp/Żółw & Söhne.car", "/a b.car"};
    for (const fs::path& file : sent) {
        std::future<bool> copy = start(file);
        ASSERT_TRUE(wait([&] { return !opened_.empty(); }));
        EXPECT_FALSE(ended(copy)) << "a question may be open that has to be answered before";
        opened_.back()();
        opened_.clear();
        ASSERT_TRUE(wait([&] { return ended(copy); }));
        EXPECT_TRUE(copy.get());
    }
    EXPECT_EQ(files_, sent);
}

TEST_F(SingleInstanceTest, AnEndingCopyLeavesTheFileToTheSender) {
    first_.receive(open_);
    std::future<bool> copy = start("/a.car");
    ASSERT_TRUE(wait([&] { return !opened_.empty(); }));
    firstHasEnded_ = true;
    first_.release(); // still queued
    EXPECT_FALSE(copy.get());
    opened_.back()(); // too late, and harmless
}

TEST_F(SingleInstanceTest, ASilentCopyIsNotWaitedFor) {
    EXPECT_FALSE(start("/a.car", 50ms).get()) << "it takes no files yet";
    first_.receive(open_);
    EXPECT_FALSE(start("/a.car", 50ms).get()) << "it takes them, but stands still";
}

TEST_F(SingleInstanceTest, TheNextCopyIsFirstOnceTheFirstHasLetGo) {
    first_.release();
    SingleInstance next(settings_);
    EXPECT_TRUE(next.first());
    EXPECT_FALSE(next.handOver("/a.car"));
    const SingleInstance other(folder_ / "other");
    EXPECT_TRUE(other.first()) << "copies with other settings do not disturb each other";
}

TEST_F(SingleInstanceTest, ItsSocketIsPrivate) {
    const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
    const auto sockets = [](const fs::path& folder) {
        int count = 0;
        for (const auto& entry : fs::directory_iterator(folder))
            count += entry.is_socket();
        return count;
    };
    const fs::path shared = folder_ / "shared", runtime = folder_ / "runtime";
    for (const fs::path& folder : {shared, runtime})
        fs::create_directory(folder);
    fs::permissions(shared, fs::perms::all);
    fs::permissions(runtime, fs::perms::owner_all);
    const auto run = [&](const fs::path& runtimeFolder, const fs::path& settings) {
        qputenv("XDG_RUNTIME_DIR", runtimeFolder.c_str());
        SingleInstance copy(settings);
        EXPECT_TRUE(copy.first());
        copy.receive(open_);
        return std::array{sockets(shared), sockets(runtime), sockets(settings)};
    };
    using Counts = std::array<int, 3>;
    EXPECT_EQ(run(runtime, folder_ / "a"), (Counts{0, 1, 0}));
    EXPECT_EQ(run(shared, folder_ / "b"), (Counts{0, 0, 1}));
    EXPECT_EQ(run("", folder_ / "c"), (Counts{0, 0, 1}));
    const fs::path open = folder_ / "open", deep = folder_ / std::string(100, 'x');
    fs::create_directory(open);
    fs::permissions(open, fs::perms::all);
    EXPECT_EQ(run("", open), (Counts{0, 0, 0}));
    EXPECT_EQ(run("", deep), (Counts{0, 0, 0})) << "too long a path for a socket";
    qputenv("XDG_RUNTIME_DIR", before);
}

} // namespace
} // namespace quobrix
