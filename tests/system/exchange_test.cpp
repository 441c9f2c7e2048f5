/// A downloaded document through the eyes of other programs that read compound files, and saved again.
#include "model/quobrix_document.h"
#include "support/document_streams.h"
#include "system/programs.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

class Exchange : public Programs {
protected:
    void SetUp() override {
        attachHistory("COM3", "K-0042-B", 20);
        const Outcome downloaded = download("Doc.car");
        ASSERT_EQ(downloaded.exitCode, 0) << downloaded.error;
    }

    Outcome run(const std::string& program, const Arguments& arguments) {
        return runProgram(folder_.path(), "/usr/bin/env", [&] {
            Arguments all{program};
            all.insert(all.end(), arguments.begin(), arguments.end());
            return all;
        }());
    }
    static bool installed(const std::string& program) {
        return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
    }

    /// The streams that a document is to have by what its index streams say, given by READ(name).
    static std::vector<std::string> expectedNames(const std::function<Bytes(const std::string&)>& read) {
        std::vector<std::string> names{"Contents",      "Version",    "Next Available Id",
                                       "Available Ids", "Object Ids", "Singleton Ids"};
        const Bytes ids = read("Object Ids");
        ByteReader in(ids);
        const std::uint32_t count = in.u32();
        EXPECT_EQ(ids.size(), 4 + std::size_t{4} * count);
        for (std::uint32_t i = 0; i < count && in.remaining() > 0; ++i)
            names.push_back(std::to_string(in.u32()));
        std::ranges::sort(names);
        return names;
    }

    static Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }
};

TEST_F(Exchange, LibgsfListsAndReadsEveryStream) {
    if (!installed("gsf"))
        GTEST_SKIP() << "gsf of libgsf is not installed";
    const auto cat = [&](const std::string& name) { return bytesOf(run("gsf", {"cat", "Doc.car", name}).out); };
    const Outcome listing = run("gsf", {"list", "Doc.car"});
    ASSERT_EQ(listing.exitCode, 0) << listing.error;
    std::istringstream lines(listing.out);
    std::map<std::string, std::size_t> sizes;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream cells(line);
        std::string kind, name;
        std::size_t size = 0;
        if (cells >> kind >> size && kind == "f" && std::getline(cells >> std::ws, name))
            sizes[name] = size;
    }
    std::vector<std::string> names;
    for (const auto& [name, size] : sizes)
        names.push_back(name);
    EXPECT_EQ(names, expectedNames(cat));
    EXPECT_EQ(cat("Contents"), u32s({2}));
    EXPECT_EQ(cat("Version"), u32s({3}));

    const Streams own = streamsOf(folder_ / "Doc.car");
    std::size_t count = 0;
    for (const auto& [name, content] : own) {
        EXPECT_EQ(sizes[name], content.size()) << name;
        if (++count % 25 == 0) { // a process each
            EXPECT_EQ(cat(name), content) << name;
        }
    }
}

TEST_F(Exchange, SevenZipExtractsEveryStream) {
    if (!installed("7z"))
        GTEST_SKIP() << "7z is not installed";
    ASSERT_EQ(run("7z", {"x", "-tcompound", "-oextracted", "Doc.car"}).exitCode, 0);
    Streams found;
    for (const auto& entry : fs::directory_iterator(folder_ / "extracted"))
        found[entry.path().filename().string()] = bytesOf(contentOf(entry.path()));
    EXPECT_TRUE(found == streamsOf(folder_ / "Doc.car"));
    const Outcome listing = run("7z", {"l", "-tcompound", "Doc.car"});
    EXPECT_NE(listing.out.find(" " + std::to_string(found.size()) + " files"), std::string::npos) << listing.out;
}

TEST_F(Exchange, SavedAgainItIsTheSameInEveryStream) {
    const Streams before = streamsOf(folder_ / "Doc.car");
    TQuobrixDocument document;
    ASSERT_TRUE(document.open(folder_ / "Doc.car", TDocument::Access::Edit));
    for (const ObjectId id : document.store().objectIds()) {
        ASSERT_NE(document.store().find(id), nullptr) << id;
        document.store().find(id)->setModified();
    }
    ASSERT_TRUE(document.save());
    EXPECT_TRUE(streamsOf(folder_ / "Doc.car") == before);
    ASSERT_TRUE(document.saveAs(folder_ / "Copy.car"));
    EXPECT_TRUE(streamsOf(folder_ / "Copy.car") == before);
    // What a download without news leaves: only its time.
    auto* const downloads = document.store().existingSingleton<TDownloadTable>();
    ASSERT_TRUE(downloads);
    const std::string time = std::to_string(downloads->column<TDownloadTableMostRecentDownloadColumn>().id());
    document.newDocument();
    EXPECT_TRUE(download("Doc.car").out.starts_with("Nothing new. Already present: 20 trips"));
    Streams after = streamsOf(folder_ / "Doc.car");
    after[time] = before.at(time);
    EXPECT_TRUE(after == before);
}

} // namespace
} // namespace quobrix
