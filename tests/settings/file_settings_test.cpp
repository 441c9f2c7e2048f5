#include "settings/file_settings.h"
#include "support/make_link.h"
#include "support/temporary_folder.h"
#include "support/text_file.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

class FileSettingsTest : public testing::Test {
protected:
    void put(const std::string& text) const { test::putText(file_, text); }

    test::TemporaryFolder folder_;
    fs::path file_ = folder_ / "Quobrix.conf";
};

TEST_F(FileSettingsTest, AnyTextSurvivesAsNameAndAsValue) {
    const std::string texts[] = {"plain",        " blanks \t",
                                 "a=b",          "[x]",
                                 "#c",           ";d",
                                 "back\\slash",  "\\x41",
                                 "two\nlines\r", "C:\\New Folder\\x.car",
                                 "Żółw 車",      std::string("nul\0byte", 8)};
    {
        FileSettings settings(folder_ / "deeper" / "still" / "Quobrix.conf");
        for (const std::string& text : texts)
            settings.write(text, text, text);
    }
    const FileSettings settings(folder_ / "deeper" / "still" / "Quobrix.conf");
    for (const std::string& text : texts)
        EXPECT_EQ(settings.read(text, text), text);
}

TEST_F(FileSettingsTest, UnknownLinesStayWhereTheyAre) {
    put("# mine\r\n\r\n[A]\nx=1\n??\ny = 2 \nbad=\\q\n\n[B]\nz=3\n");
    FileSettings settings(file_);
    EXPECT_EQ(settings.read("A", "y"), "2");
    EXPECT_EQ(settings.read("B", "x"), "");
    settings.write("A", "x", "");
    settings.write("A", "new", "4");
    settings.write("C", "c", "5");
    EXPECT_EQ(test::textOf(file_), "# mine\n\n[A]\n??\ny = 2 \nnew=4\nbad=\\q\n\n[B]\nz=3\n\n[C]\nc=5\n");
}

TEST_F(FileSettingsTest, AnotherProgramsChangesAreKept) {
    FileSettings one(file_), other(file_);
    one.write("S", "a", "1");
    other.write("S", "b", "2");
    one.write("S", "c", "3");
    EXPECT_EQ(test::textOf(file_), "[S]\na=1\nb=2\nc=3\n");
}

TEST_F(FileSettingsTest, AnUnreadableFileMeansDefaultsAndGoesAside) {
    const std::string noise("[S]\na=1\n\0\xff garbage", 19);
    put(noise);
    FileSettings settings(file_);
    EXPECT_EQ(settings.read("S", "a"), "");
    EXPECT_EQ(test::textOf(file_), noise) << "reading alone must change nothing";
    settings.write("S", "b", "2");
    settings.write("S", "c", "3");
    EXPECT_EQ(test::textOf(folder_ / "Quobrix.conf.unreadable"), noise);
    EXPECT_EQ(test::textOf(file_), "[S]\nb=2\nc=3\n");
}

TEST_F(FileSettingsTest, AFolderInPlaceOfTheFileGoesAsideToo) {
    fs::create_directories(file_ / "inside");
    FileSettings settings(file_);
    settings.write("S", "b", "2");
    EXPECT_TRUE(fs::exists(folder_ / "Quobrix.conf.unreadable" / "inside"));
    EXPECT_EQ(FileSettings(file_).read("S", "b"), "2");
}

TEST_F(FileSettingsTest, UnwritableValuesHoldForTheRun) {
    test::putText(folder_ / "file", "in the way");
    FileSettings settings(folder_ / "file" / "Quobrix.conf");
    settings.write("S", "a", "1");
    settings.write("S", "b", "2");
    EXPECT_EQ(settings.read("S", "a"), "1");
    EXPECT_EQ(settings.read("S", "b"), "2");
}

TEST_F(FileSettingsTest, ASymbolicLinkStaysOne) {
    if (!test::makeLink("elsewhere.conf", file_))
        GTEST_SKIP() << test::kNoLinks;
    put("[S]\na=1\n");
    FileSettings(file_).write("S", "a", "2");
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_EQ(test::textOf(folder_ / "elsewhere.conf"), "[S]\na=2\n");
}

} // namespace
} // namespace quobrix
