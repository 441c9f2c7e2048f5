#include "app/single_instance.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <vector>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

TEST(SingleInstance, TheFirstCopyTakesTheFilesOfLaterOnes) {
    const QTemporaryDir folder;
    const fs::path settings = fs::path(folder.path().toStdString()) / "quobrix";
    SingleInstance first(settings);
    ASSERT_TRUE(first.first());
    std::vector<fs::path> files;
    first.receive([&](const fs::path& file) { files.push_back(file); });

    const SingleInstance second(settings);
    EXPECT_FALSE(second.first());
    const std::vector<fs::path> sent{"/tmp/Żółw & Söhne.car", "/a b.car"};
    for (const fs::path& file : sent)
        EXPECT_TRUE(second.send(file));
    EXPECT_TRUE(QTest::qWaitFor([&] { return files.size() == 2; }, 5000));
    EXPECT_EQ(files, sent);
}

TEST(SingleInstance, CopiesWithOtherSettingsDoNotDisturbEachOther) {
    const QTemporaryDir folder;
    const fs::path base = folder.path().toStdString();
    const SingleInstance one(base / "one");
    const SingleInstance other(base / "other");
    EXPECT_TRUE(one.first());
    EXPECT_TRUE(other.first());
}

TEST(SingleInstance, TheNextCopyIsFirstAgainOnceTheFirstHasEnded) {
    const QTemporaryDir folder;
    { const SingleInstance first(folder.path().toStdString()); }
    const SingleInstance next(folder.path().toStdString());
    EXPECT_TRUE(next.first());
    EXPECT_FALSE(next.send("/nobody.car"));
}

} // namespace
} // namespace quobrix
