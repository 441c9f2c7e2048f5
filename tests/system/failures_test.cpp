/// Downloads under circumstances that forbid them: one clear line, and nothing has changed.
#include "support/document_streams.h"
#include "system/programs.h"

#include <algorithm>
#include <fstream>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

class Failures : public Programs {
protected:
    void SetUp() override {
        attachHistory("COM3", "K-0042-B", 60);
        attachHistory("COM4", "K-0043-B", 300);
        ASSERT_EQ(download("Doc.car").exitCode, 0);
    }

    static void expectOneLine(const Outcome& outcome, const std::string& words) {
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.error.starts_with("quobrix-cli: ")) << outcome.error;
        EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1) << outcome.error;
        EXPECT_NE(outcome.error.find(words), std::string::npos) << outcome.error;
    }

    static Arguments into(const std::string& file) { return {"download", "--port", "COM4", "--into", file}; }
};

TEST_F(Failures, AFullDisk) {
#ifdef _WIN32
    GTEST_SKIP() << "Windows sets no limit to the size of a program's files, and a test has no disk of its own to fill";
#endif
    const std::string before = textOf(folder_ / "Doc.car");
    const Streams streams = streamsOf(folder_ / "Doc.car");
    // The largest file that the system allows, in blocks of 512 bytes, stands for the space on the disk. The logger's
    // memory must fit.
    const std::uintmax_t smallest =
        std::max(fs::file_size(folder_ / "Doc.car"), fs::file_size(folder_ / "ports" / "port-COM4.logger"));
    for (const std::uintmax_t more : {16u, 200u, 700u}) {
        const std::string limit = std::to_string((smallest / 1024 + more) * 2);
        const auto onFullDisk = [&](const std::string& file) {
            return cliUnder("/bin/sh", {"-c", "ulimit -f \"$0\"; exec \"$@\"", limit}, into(file));
        };
        expectOneLine(onFullDisk("Doc.car"), "cannot be saved because the disk is full");
        // What was written behind the old content belongs to nothing, and is where the next save begins.
        EXPECT_TRUE(textOf(folder_ / "Doc.car").starts_with(before));
        EXPECT_TRUE(streamsOf(folder_ / "Doc.car") == streams);
        EXPECT_EQ(cli({"check", "Doc.car"}).exitCode, 0);

        expectOneLine(onFullDisk("New.car"), "New.car cannot be saved because the disk is full");
        EXPECT_EQ(files(), std::vector<std::string>{"Doc.car"});
    }
    ASSERT_EQ(download("Doc.car", "COM4").exitCode, 0);
    EXPECT_EQ(cli({"check", "Doc.car"}).exitCode, 0);
}

TEST_F(Failures, NoPermission) {
    for (const char* const name : {"ports", "home"})
        fs::permissions(folder_ / name, fs::perms::all);
    for (const auto& entry : fs::directory_iterator(folder_ / "ports"))
        fs::permissions(entry.path(), fs::perms::all);
    fs::create_directory(folder_ / "Locked");
    fs::rename(folder_ / "Doc.car", folder_ / "Locked" / "Doc.car");
    const std::string before = textOf(folder_ / "Locked" / "Doc.car");
    fs::permissions(folder_ / "Locked" / "Doc.car", fs::perms(0444));
    fs::permissions(folder_ / "Locked", fs::perms(0555));
    const auto denied = [&](const Arguments& arguments) {
#ifndef _WIN32
        if (::geteuid() == 0)
            return cliUnder("/usr/bin/setpriv", {"--reuid=65534", "--regid=65534", "--clear-groups"}, arguments);
#endif
        return cli(arguments);
    };
#ifdef _WIN32 // whose Wine opens everything for an administrator
    const bool deniable = !std::ofstream(folder_ / "Locked" / "Doc.car", std::ios::app);
#else
    const bool deniable = denied({"--version"}).exitCode == 0;
#endif
    if (deniable) {
        expectOneLine(denied(into("Locked/Doc.car")),
                      "Locked/Doc.car cannot be saved because you do not have permission");
#ifndef _WIN32 // where a folder's mark does not keep files out
        expectOneLine(denied(into("Locked/New.car")),
                      "Locked/New.car cannot be saved because you do not have permission");
#endif
        EXPECT_EQ(textOf(folder_ / "Locked" / "Doc.car"), before);
        EXPECT_FALSE(fs::exists(folder_ / "Locked" / "New.car"));
    }
    fs::permissions(folder_ / "Locked", fs::perms::all);
    if (!deniable)
        GTEST_SKIP() << "nothing can be denied to this user";
}

TEST_F(Failures, NoLibrary) {
    const std::string before = textOf(folder_ / "Doc.car");
    std::ofstream(folder_ / "text.so") << "no library";
    for (const std::string library : {"nowhere/libQuobrix.so", "text.so"}) {
        const std::string path = (folder_ / library).string();
        const auto withIt = [&](const Arguments& arguments) {
            return runProgram(folder_.path(), QUOBRIX_CLI, arguments, {.environment = {{"QUOBRIX_LIBRARY", path}}});
        };
        expectOneLine(withIt(into("Doc.car")), "The logger library " + path);
        expectOneLine(withIt(into("New.car")), "The logger library " + path);
        EXPECT_EQ(withIt({"list", "trips", "Doc.car"}).exitCode, 0);
    }
    EXPECT_TRUE(textOf(folder_ / "Doc.car") == before);
    EXPECT_FALSE(fs::exists(folder_ / "New.car"));
}

} // namespace
} // namespace quobrix
