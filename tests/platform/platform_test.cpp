#include "platform/dynamic_library.h"
#include "platform/event_log.h"
#include "platform/file_system.h"
#include "platform/log_file.h"
#include "platform/paths.h"
#include "platform/rename_new.h"
#include "support/forwarding_files.h"
#include "support/make_link.h"
#include "support/temporary_folder.h"
#include "support/text_file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <vector>

#if defined(_WIN32)
#include <windows.h>

#include <sddl.h>
#else
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace quobrix {
namespace {

namespace fs = std::filesystem;
using namespace test;

#ifdef _WIN32
constexpr const char* kDevice = "NUL";
#else
constexpr const char* kDevice = "/dev/null";
#endif

class PlatformTest : public testing::Test {
protected:
    static void put(const fs::path& path, std::string_view text) {
        ASSERT_TRUE(
            writeFileAtomically(path, ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())));
    }
    static std::string get(const fs::path& path) {
        const auto bytes = readFile(path, 1000);
        return bytes ? std::string(bytes->begin(), bytes->end()) : "error " + bytes.error().detail;
    }
    std::size_t entries() const { return own_.names().size(); }

    const TemporaryFolder own_;
    const fs::path folder_ = own_.path();
};

TEST_F(PlatformTest, OpeningSaysWhatIsWrong) {
    EXPECT_EQ(openFile(folder_ / "none", FileMode::Read).error().kind, ErrorKind::NotFound);
    EXPECT_EQ(openFile(folder_, FileMode::Read).error().kind, ErrorKind::IsDirectory);
    EXPECT_EQ(openFile(folder_, FileMode::ReadWrite).error().kind, ErrorKind::IsDirectory);
    EXPECT_EQ(openFile(kDevice, FileMode::ReadWrite).error().kind, ErrorKind::NotADocument);
    put(folder_ / "a", "text");
    EXPECT_FALSE(openFile(folder_ / "a", FileMode::Create));
    auto file = openFile(folder_ / "a", FileMode::Read);
    Bytes five(5);
    EXPECT_EQ((*file)->readAt(0, five).error().kind, ErrorKind::Corrupt);
    EXPECT_FALSE((*file)->writeAt(0, five));
    EXPECT_EQ(readFile(folder_ / "a", 3).error().kind, ErrorKind::Unsupported);
}

/// More pieces than a system takes at once, of all sizes, and what they are together.
struct Pieces {
    Pieces() {
        for (std::size_t i = 0; i < 3000; ++i) {
            whole.insert(whole.end(), i == 1500 ? 700'000 : i % 37, static_cast<std::uint8_t>(i));
            ends.push_back(whole.size());
        }
        for (std::size_t i = 0, begin = 0; i < ends.size(); begin = ends[i++])
            views.push_back(ByteView(whole).subspan(begin, ends[i] - begin));
    }
    Bytes whole;
    std::vector<std::size_t> ends;
    std::vector<ByteView> views;
};

TEST_F(PlatformTest, PiecesAreWrittenOneBehindTheOther) {
    const Pieces pieces;
    const auto file = *openFile(folder_ / "a", FileMode::Create);
    ASSERT_TRUE(file->writeAt(0, Bytes(100, 'x')));
    ASSERT_TRUE(file->gatherAt(50, pieces.views));
    ASSERT_TRUE(file->File::gatherAt(2'000'000, pieces.views)); // the general way, without the system's help
    for (const std::uint64_t offset : {50, 2'000'000}) {
        Bytes read(pieces.whole.size());
        ASSERT_TRUE(file->readAt(offset, read));
        EXPECT_TRUE(read == pieces.whole);
    }
    EXPECT_EQ(*file->size(), 2'000'000 + pieces.whole.size());
}

#if !defined(_WIN32) // which sets no limit to the size of a program's files
TEST_F(PlatformTest, ADiskThatIsFullInTheMiddleOfAWriteIsTold) {
    const Pieces pieces;
    const auto file = *openFile(folder_ / "a", FileMode::Create);
    const LogFile log(folder_ / "a.log");
    const std::string almostFull = std::string(499'990, 'x') + '\n';
    putText(log.path(), almostFull);
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    rlimit small = limit;
    small.rlim_cur = 500'000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto gathered = file->gatherAt(0, pieces.views);
    const auto written = file->writeAt(0, pieces.whole);
    const auto logged = log.append("more than nine bytes");
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, before);
    EXPECT_EQ(gathered.error().kind, ErrorKind::DiskFull);
    EXPECT_EQ(written.error().kind, ErrorKind::DiskFull);
    EXPECT_EQ(*file->size(), 500'000u);
    EXPECT_EQ(logged.error().kind, ErrorKind::DiskFull);
    EXPECT_TRUE(textOf(log.path()) == almostFull) << "no half lines";
}
#endif

TEST_F(PlatformTest, ALogFileIsBegunAnewBeforeItGrowsTooLarge) {
    const LogFile log(folder_ / "new folder" / "a.log", 20);
    EXPECT_TRUE(log.append("one\r\n2\x1B[2J  three \xFF"));
    EXPECT_EQ(textOf(log.path()), "one 2 [2J three \uFFFD\n") << "20 bytes";
    EXPECT_TRUE(log.append("abc") && log.append("the second file"));
    EXPECT_EQ(textOf(log.older()), "one 2 [2J three \uFFFD\n");
    EXPECT_EQ(textOf(log.path()), "abc\nthe second file\n");
    EXPECT_TRUE(log.append("the third file"));
    EXPECT_EQ(textOf(log.older()), "abc\nthe second file\n");
    EXPECT_EQ(textOf(log.path()), "the third file\n");
    EXPECT_TRUE(log.append(std::string(LogFile::kLongestLine - 1, 'x') + "\u00E9"));
    EXPECT_EQ(textOf(log.path()), std::string(LogFile::kLongestLine - 1, 'x') + "\u2026\n");
    EXPECT_EQ(log.older().filename(), "a.old.log");

    const LogFile cut(folder_ / "cut.log");
    putText(cut.path(), "half a li");
    EXPECT_TRUE(cut.append("next"));
    EXPECT_EQ(textOf(cut.path()), "half a li\nnext\n");
    EXPECT_FALSE(LogFile({}).append("nowhere") || LogFile(folder_).append("a folder"));
}

TEST_F(PlatformTest, ProgramsShareALogFile) {
    constexpr int kLines = 200;
    const auto write = [&](const char* line) {
        const LogFile log(folder_ / "a.log", 3 * kLines);
        for (int i = 0; i < kLines; ++i)
            while (!log.append(line))
                ; // InUse: the other one was quicker all the while
    };
    { const std::jthread first(write, "aa"), second(write, "bb"); }
    const LogFile log(folder_ / "a.log");
    EXPECT_EQ(textOf(log.older()).size(), 3u * kLines);
    const std::string both = textOf(log.older()) + textOf(log.path());
    const auto of = [&](const char* line) {
        int count = 0;
        for (std::size_t at = 0; at < both.size(); at += 3)
            count += both.substr(at, 3) == line;
        return count;
    };
    EXPECT_EQ(of("aa\n"), kLines);
    EXPECT_EQ(of("bb\n"), kLines);
}

TEST_F(PlatformTest, NobodyWaitsForTheEventLog) {
    class HangingFiles final : public ForwardingFiles {
    public:
        std::atomic<bool> hang = true;
        Result<std::unique_ptr<File>> open(const fs::path& path, FileMode mode) override {
            hang.wait(true);
            return ForwardingFiles::open(path, mode);
        }
    } files;
    {
        EventLog events(LogFile(folder_ / "events.txt", LogFile::kLargest, files), [] { return "today"; });
        events.note(ShownText::asItIs("started"));
        events.note(ShownText::asItIs("lost\nand found"));
        EXPECT_EQ(textOf(folder_ / "events.txt"), "");
        files.hang = false;
        files.hang.notify_all();
    }
    EXPECT_EQ(textOf(folder_ / "events.txt"), "today started\ntoday lost and found\n");
    EventLog(LogFile(folder_), [] { return ""; }).note(ShownText::asItIs("cannot be written"));
}

TEST_F(PlatformTest, IdentityIsOfTheFileNotOfItsName) {
    put(folder_ / "a", "1");
    put(folder_ / "b", "1");
    const bool linked = makeLink("a", folder_ / "link");
    fs::create_hard_link(folder_ / "a", folder_ / "hard");
    const auto identity = [&](const char* name) { return fileStatus(folder_ / name)->identity; };
    if (linked) {
        EXPECT_EQ(identity("link"), identity("a"));
    }
    EXPECT_EQ(identity("hard"), identity("a"));
    EXPECT_NE(identity("b"), identity("a"));
    EXPECT_EQ(fileStatus(folder_ / "none").error().kind, ErrorKind::NotFound);
}

TEST_F(PlatformTest, LinksAreFollowedToTheirEnd) {
    fs::create_directory(folder_ / "sub");
    if (!makeLink("sub/second", folder_ / "first"))
        GTEST_SKIP() << kNoLinks;
    ASSERT_TRUE(makeLink(folder_ / "end", folder_ / "sub" / "second"));
    EXPECT_EQ(*resolveLinks(folder_ / "first"), folder_ / "end"); // which does not exist
    EXPECT_EQ(*resolveLinks(folder_ / "plain"), folder_ / "plain");
    ASSERT_TRUE(makeLink("circle", folder_ / "circle"));
    EXPECT_FALSE(resolveLinks(folder_ / "circle"));
    put(folder_ / "first", "through links");
    EXPECT_TRUE(fs::is_symlink(folder_ / "first"));
    EXPECT_EQ(get(folder_ / "end"), "through links");
}

TEST_F(PlatformTest, AFileThatIsThereIsRefused) {
    const fs::path target = folder_ / "a";
    auto replacement = ReplacementFile::create(target);
    ASSERT_TRUE(replacement && replacement->file().writeAt(0, Bytes{'n'}));
    put(target, "appeared");
    EXPECT_EQ(replacement->commit(IfThere::Refuse).error().kind, ErrorKind::Exists);
    EXPECT_EQ(get(target), "appeared");
    fs::remove(target);
    EXPECT_TRUE(replacement->commit(IfThere::Refuse));
    EXPECT_EQ(get(target), "n");
    EXPECT_EQ(entries(), 1u);
}

TEST_F(PlatformTest, EachWayOfRenamingRefusesWhatIsThere) {
    using Way = std::optional<Result<void>> (*)(const fs::path&, const fs::path&);
    const Way ways[] = {
#ifndef _WIN32
        renameNewInOneCall, renameNewByLink,
        [](const fs::path& from, const fs::path& to) { return std::optional(renameNewByPlaceholder(from, to)); },
#endif
        [](const fs::path& from, const fs::path& to) { return std::optional(renameNew(from, to)); }};
    const fs::path from = folder_ / "new", to = folder_ / "a", link = folder_ / "link";
    std::vector<fs::path> taken{to};
    if (makeLink("nowhere", link))
        taken.push_back(link);
    for (const Way way : ways) {
        put(from, "new");
        put(to, "old");
        if (!way(from, to)) // not offered by this file system
            continue;
        for (const fs::path& there : taken)
            EXPECT_EQ(way(from, there)->error().kind, ErrorKind::Exists);
        EXPECT_EQ(get(to), "old");
        fs::remove(to);
        EXPECT_TRUE(*way(from, to));
        EXPECT_EQ(get(to), "new");
        EXPECT_FALSE(fs::exists(from));
    }
}

#if !defined(_WIN32) // which gives no file to another user, and for which Wine makes no links
TEST_F(PlatformTest, AnothersLinkInASharedFolderIsNotFollowed) {
    const fs::path shared = folder_ / "shared", link = shared / "link";
    fs::create_directory(shared);
    put(folder_ / "end", "text");
    fs::create_symlink(folder_ / "end", link);
    if (::lchown(link.c_str(), 65534, 65534) != 0)
        GTEST_SKIP() << "nothing can be given to another user";
    EXPECT_EQ(*resolveLinks(link), folder_ / "end");
    fs::permissions(shared, fs::perms::all | fs::perms::sticky_bit);
    EXPECT_EQ(resolveLinks(link).error().kind, ErrorKind::AccessDenied);
    ASSERT_EQ(::lchown(link.c_str(), ::geteuid(), ::getegid()), 0);
    EXPECT_EQ(*resolveLinks(link), folder_ / "end");
}
#endif

TEST_F(PlatformTest, AReplacementIsWholeOrGone) {
    const fs::path target = folder_ / "a";
    put(target, "old");
    fs::permissions(target, fs::perms::owner_read | fs::perms::group_read);
    {
        auto abandoned = ReplacementFile::create(target);
        ASSERT_TRUE(abandoned);
        ASSERT_TRUE(abandoned->file().writeAt(0, Bytes{'n'}));
        EXPECT_EQ(get(target), "old");
    }
    EXPECT_EQ(entries(), 1u);
    std::unique_ptr<File> file;
    {
        auto replacement = ReplacementFile::create(target);
        file = replacement->takeFile();
        ASSERT_TRUE(file->writeAt(0, Bytes{'n', 'e', 'w'}));
        ASSERT_TRUE(replacement->commit());
    }
    EXPECT_EQ(get(target), "new");
    EXPECT_EQ(entries(), 1u);
#ifdef _WIN32
    EXPECT_NE(fs::status(target).permissions() & fs::perms::owner_write, fs::perms::none);
#else
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
#endif
    // The file handed out is the target now, and still locked.
    EXPECT_EQ(openFile(target, FileMode::ReadWrite).error().kind, ErrorKind::InUse);
    EXPECT_EQ(ReplacementFile::create(folder_ / "none" / "a").error().kind, ErrorKind::NotFound);
    EXPECT_EQ(ReplacementFile::create(folder_).error().kind, ErrorKind::IsDirectory);
#if !defined(_WIN32)
    EXPECT_EQ(ReplacementFile::create(kDevice).error().kind, ErrorKind::NotADocument) << "a device stays";
#endif
}

TEST_F(PlatformTest, AnOpenFileIsReplacedAndStaysReadable) {
    const fs::path target = folder_ / "a";
    put(target, "old");
    auto open = openFile(target, FileMode::ReadWrite);
    ASSERT_TRUE(open);
    put(target, "new");
    Bytes old(3);
    EXPECT_TRUE((*open)->readAt(0, old));
    EXPECT_EQ(std::string(old.begin(), old.end()), "old");
    *open = nullptr;
    EXPECT_EQ(get(target), "new");
    EXPECT_EQ(entries(), 1u);
}

TEST_F(PlatformTest, OffsetsAreNotCutTo32Bits) {
    constexpr std::uint64_t kFar = 5'000'000'000; // where only a few bytes of the disk are taken
    const auto file = *openFile(folder_ / "a", FileMode::Create);
    ASSERT_TRUE(file->writeAt(0, Bytes{1}));
    ASSERT_TRUE(file->writeAt(kFar, Bytes{2}));
    Bytes byte(1);
    EXPECT_TRUE(file->readAt(kFar, byte));
    EXPECT_EQ(byte, Bytes{2});
    EXPECT_EQ(fileStatus(folder_ / "a")->size, kFar + 1);
    ASSERT_TRUE(file->resize(kFar));
    EXPECT_EQ(*file->size(), kFar);
}

#if defined(_WIN32)
TEST_F(PlatformTest, MarksOfAFileDoNotKeepItFromBeingReplaced) {
    const fs::path target = folder_ / "a";
    put(target, "old");
    ASSERT_TRUE(SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_TRUE(hideFile(target));
    constexpr DWORD kMarks = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;
    EXPECT_EQ(GetFileAttributesW(target.c_str()) & kMarks, kMarks) << "its other marks stay";
    const HANDLE held =
        CreateFileW(target.c_str(), FILE_READ_DATA, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const auto refused = writeFileAtomically(target, Bytes{'n'}); // another program lets nobody move it
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, ErrorKind::InUse);
    CloseHandle(held);
    EXPECT_EQ(get(target), "old");
    EXPECT_EQ(GetFileAttributesW(target.c_str()) & kMarks, kMarks);
    EXPECT_EQ(entries(), 1u);
    put(target, "new");
    EXPECT_EQ(get(target), "new");
    EXPECT_EQ(hideFile(folder_ / "none").error().kind, ErrorKind::NotFound);
}

TEST_F(PlatformTest, AReplacementIsNeverMoreOpen) { // by its access list; where files have modes see below
    const fs::path target = folder_ / "a";
    put(target, "old");
    const auto list = [](const fs::path& path) {
        std::vector<std::byte> descriptor(1000);
        DWORD size = 0;
        EXPECT_TRUE(GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), 1000, &size));
        descriptor.resize(size);
        return descriptor;
    };
    const auto before = list(target);
    PSECURITY_DESCRIPTOR own = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;FA;;;WD)", 1, &own, nullptr));
    ASSERT_TRUE(SetFileSecurityW(target.c_str(), DACL_SECURITY_INFORMATION, own));
    LocalFree(own);
    const auto given = list(target);
    ASSERT_NE(given, before);
    put(target, "new");
    EXPECT_EQ(get(target), "new");
    EXPECT_EQ(list(target), given);
    EXPECT_EQ(list(ReplacementFile::create(folder_ / "b", target)->temporary()), given);
}
#endif

#if !defined(_WIN32)
/// The system's calls, with a look at the new file before it gets its permissions.
class WatchedFiles final : public test::ForwardingFiles {
public:
    std::optional<fs::perms> atFirst;

    Result<void> adoptPermissions(const fs::path& temporary, const fs::path& like) override {
        atFirst = fs::status(temporary).permissions();
        return system().adoptPermissions(temporary, like);
    }
};

TEST_F(PlatformTest, AReplacementIsNeverMoreOpen) {
    const auto mask = ::umask(0);
    WatchedFiles files;
    const auto permissionsOfNew = [&](const fs::path& target, const fs::path& like) {
        const auto replacement = ReplacementFile::create(target, like, files);
        return replacement ? fs::status(replacement->temporary()).permissions() : fs::perms::unknown;
    };
    const fs::path target = folder_ / "a", other = folder_ / "b";
    constexpr auto kOwner = fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_EQ(permissionsOfNew(target, {}), fs::perms(0666)) << "as the user's mask says";
    put(target, "private");
    for (const fs::perms wanted : {kOwner, kOwner | fs::perms::group_read}) {
        fs::permissions(target, wanted);
        EXPECT_EQ(permissionsOfNew(target, {}), wanted);
        EXPECT_EQ(files.atFirst, kOwner);
        EXPECT_EQ(permissionsOfNew(other, target), wanted);
        EXPECT_EQ(files.atFirst, kOwner);
    }
    ::umask(mask);
}
#endif

TEST_F(PlatformTest, ProgramFolderLeavesTheReleaseFolderOut) {
#ifdef _WIN32
    EXPECT_EQ(programFolder(L"C:\\Quobrix\\quobrix.exe").native(), L"C:\\Quobrix\\");
    EXPECT_EQ(programFolder(L"C:\\Work\\Release\\quobrix.exe").native(), L"C:\\Work\\");
    EXPECT_EQ(programFolder(L"C:\\Work\\Release\\Sub\\quobrix.exe").native(), L"C:\\Work\\Sub\\");
    EXPECT_EQ(programFolder(L"C:\\Release\\Release\\quobrix.exe").native(), L"C:\\Release\\");
    EXPECT_EQ(programFolder(L"C:\\PreRelease\\quobrix.exe").native(), L"C:\\PreRelease\\");
    EXPECT_EQ(executablePath().filename(), "platform_test.exe");
    EXPECT_TRUE(fs::exists(executablePath()));
#else
    EXPECT_EQ(programFolder("/opt/quobrix/quobrix"), "/opt/quobrix/");
    EXPECT_EQ(programFolder("/work/Release/sub/quobrix"), "/work/sub/");
    EXPECT_EQ(programFolder("/work/Release/Release/quobrix"), "/work/Release/");
    EXPECT_EQ(programFolder("/work/PreRelease/quobrix"), "/work/PreRelease/");
    EXPECT_EQ(programFolder(""), "") << "where the system does not tell, it is not the current folder";
    EXPECT_TRUE(fs::equivalent(executablePath(), "/proc/self/exe"));
#endif
}

TEST_F(PlatformTest, LibrariesAreLoadedByPath) {
    EXPECT_EQ(DynamicLibrary::open(folder_ / "none.so").error().kind, ErrorKind::NotFound);
    put(folder_ / "text.so", "no library");
    EXPECT_EQ(DynamicLibrary::open(folder_ / "text.so").error().kind, ErrorKind::Unsupported);
    EXPECT_EQ(DynamicLibrary::open("libm.so.6").error().kind, ErrorKind::Unsupported) << "not sought anywhere";
#ifdef _WIN32
    EXPECT_NE(fileVersion(fs::path(std::getenv("SystemRoot")) / "system32" / "kernel32.dll"), std::nullopt);
#endif
    EXPECT_EQ(fileVersion(folder_), std::nullopt);
}

TEST_F(PlatformTest, PrivateFolders) {
    const fs::path folder = folder_ / "private";
    fs::create_directory(folder);
    EXPECT_FALSE(onlyUserWrites(folder / "none"));
    EXPECT_FALSE(onlyUserWrites(""));
#ifndef _WIN32 // whose folders have no modes
    for (const auto& [mode, expected] : {std::pair(0700, true), {0755, true}, {0775, false}, {0702, false}}) {
        fs::permissions(folder, static_cast<fs::perms>(mode));
        EXPECT_EQ(onlyUserWrites(folder), expected) << mode;
    }
    EXPECT_FALSE(onlyUserWrites("/tmp"));
#else
    EXPECT_TRUE(onlyUserWrites(folder));
#endif
}

} // namespace
} // namespace quobrix
