/// Whether two programs may write to one document: locks, and lock files where the file system has none.
#include "support/document_folder.h"
#include "support/fault_folder.h"
#include "support/make_link.h"

#include <sstream>

namespace quobrix {
namespace {

using namespace test;

using DocumentLocks = DocumentFolder;

TEST_F(DocumentLocks, OpenElsewhereIsNotReplaced) {
    const fs::path other = folder_ / "Other.car";
    fs::copy_file(path_, other);
    TQuobrixDocument document, running;
    ASSERT_TRUE(running.open(other, TDocument::Access::Edit));
    openAndAdd(document);
    EXPECT_EQ(
        kindOf(document.saveAs(other, IfThere::Replace, {.saveWithoutBackup = [](const Error&) { return true; }})),
        ErrorKind::InUse);
    EXPECT_EQ(document.path(), path_);
    EXPECT_EQ(tripsIn(other), 1u);
    ASSERT_TRUE(running.open(backup_.parent_path() / "Doc.car", TDocument::Access::Read)); // lets go of the other
    EXPECT_TRUE(document.saveAs(other, IfThere::Replace));
}

TEST_F(DocumentLocks, WrittenOnceReleased) {
    for (const bool savedMeanwhile : {false, true}) {
        SCOPED_TRACE(savedMeanwhile);
        TQuobrixDocument running, document;
        openAndAdd(running);
        openAndAdd(document);
        addTrip(document, kStart + 7200);
        EXPECT_EQ(document.readOnlyReason()->kind, ErrorKind::InUse);
        ASSERT_TRUE(*document.loadRest());
        if (savedMeanwhile) {
            ASSERT_TRUE(running.save());
        }
        EXPECT_EQ(kindOf(document.save()), ErrorKind::ReadOnly) << "still held";
        running.newDocument();
        if (savedMeanwhile) {
            EXPECT_EQ(kindOf(document.tryWriting()), ErrorKind::Changed);
            EXPECT_EQ(document.readOnlyReason()->kind, ErrorKind::Changed);
            EXPECT_EQ(kindOf(document.save()), ErrorKind::Changed);
            EXPECT_EQ(tripsIn(path_), 4u);
            ASSERT_TRUE(document.overwrite());
            EXPECT_EQ(tripsIn(backup_), 4u);
        } else {
            ASSERT_TRUE(document.tryWriting() && document.save());
        }
        EXPECT_FALSE(document.readOnly());
        EXPECT_EQ(tripsIn(path_), savedMeanwhile ? 5u : 3u);
        EXPECT_EQ(kindOf(openFile(path_, FileMode::ReadWrite)), ErrorKind::InUse) << "locked now";
    }
}

TEST_F(DocumentLocks, RemovesLeftovers) {
    const fs::path held = folder_ / ".quobrix-00000000000000ff.tmp";
    for (const char* const name : {".quobrix-0123456789abcdef.tmp", ".quobrix-0123.tmp", "quobrix-0123456789abcdef.tmp",
                                   ".quobrix-0123456789abcdeX.tmp"})
        put(folder_ / name, "x");
    fs::create_directory(folder_ / ".quobrix-1111111111111111.tmp");
    const bool linked = makeLink(path_, folder_ / ".quobrix-2222222222222222.tmp");
    const auto holder = openFile(held, FileMode::Create);
    ASSERT_TRUE(holder);
    TQuobrixDocument document;
    ASSERT_TRUE(document.open(path_, TDocument::Access::Read));
    EXPECT_TRUE(fs::exists(folder_ / ".quobrix-0123456789abcdef.tmp"));
    open(document);
    EXPECT_FALSE(fs::exists(folder_ / ".quobrix-0123456789abcdef.tmp"));
    EXPECT_TRUE(fs::exists(held));
    EXPECT_EQ(files().size(), linked ? 7u : 6u);
}

/// A folder with a document of one trip, on a file system without locks.
struct Lockless {
    Lockless() {
        folder.locks = false;
        TQuobrixDocument made(folder);
        addTrip(made, kStart);
        EXPECT_TRUE(made.saveAs(path));
    }
    void open(TQuobrixDocument& document) { ASSERT_TRUE(document.open(path, TDocument::Access::Edit)); }
    std::string lockText() {
        const Bytes content = folder.current().at(lock);
        return {content.begin(), content.end()};
    }
    /// Somebody else has left a lock file: the document's with LINE (from 0) replaced.
    void leaveLock(std::size_t line, const std::string& text) {
        TQuobrixDocument document(folder);
        open(document);
        std::istringstream in(lockText());
        std::string out;
        for (std::string l; std::getline(in, l);)
            out += (line-- == 0 ? text : l) + "\n";
        document.newDocument();
        folder.replace(lock, Bytes(out.begin(), out.end()));
    }
    bool locked() { return folder.current().contains(lock); }

    FaultFolder folder{1};
    const fs::path path = "/Doc.car", lock = "/Doc.car.lock";
};

TEST(LocklessFolder, OneWriter) {
    Lockless there;
    EXPECT_FALSE(there.locked());
    TQuobrixDocument first(there.folder), second(there.folder);
    there.open(first);
    EXPECT_EQ(first.lockFile(), there.lock);
    ASSERT_TRUE(there.locked());
    there.open(second);
    ASSERT_TRUE(second.lockedBy());
    EXPECT_EQ(second.readOnlyReason()->kind, ErrorKind::InUse);
    EXPECT_NE(second.lockedBy()->text().find(thisProcess().host), std::string::npos);
    EXPECT_TRUE(second.lockedBy()->timeText().ends_with(" UTC"));
    addTrip(second, kStart + 3600);
    EXPECT_EQ(second.save().error().kind, ErrorKind::ReadOnly);
    addTrip(first, kStart + 7200);
    ASSERT_TRUE(first.saveAs("/Copy.car")); // which lets go of the other
    EXPECT_EQ(first.lockFile(), fs::path("/Copy.car.lock"));
    EXPECT_FALSE(there.locked());
    ASSERT_TRUE(second.save());
    EXPECT_FALSE(second.lockedBy());
    ASSERT_TRUE(second.open(there.path, TDocument::Access::Edit)) << "its own anew";
    EXPECT_FALSE(second.readOnly());
    EXPECT_EQ(first.saveAs(there.path, IfThere::Replace).error().kind, ErrorKind::InUse);
    second.newDocument();
    ASSERT_TRUE(first.saveAs(there.path, IfThere::Replace));
    ASSERT_TRUE(first.compact());
    EXPECT_TRUE(there.locked());
    first.newDocument();
    EXPECT_EQ(there.folder.current().size(), 3u) << "two documents and a backup";
}

TEST(LocklessFolder, StaleLockFiles) {
    struct Case {
        const char* what;
        std::size_t line;
        std::string text;
        bool removed;
    };
    for (const Case& c :
         {Case{"a process that is gone", 4, "999999999", true},
          Case{"an earlier start of this computer", 2, "x", !thisProcess().boot.empty()},
          Case{"another computer", 1, "else\x1b[1mwhere", false}, Case{"no lock file of ours", 0, "hello", false}}) {
        SCOPED_TRACE(c.what);
        Lockless there;
        there.leaveLock(c.line, c.text);
        TQuobrixDocument document(there.folder);
        there.open(document);
        EXPECT_EQ(document.readOnly(), !c.removed);
        if (!c.removed) {
            EXPECT_EQ(document.lockedBy()->text().find('\x1b'), std::string::npos);
            ASSERT_TRUE(document.takeOver());
        }
        addTrip(document, kStart + 3600);
        ASSERT_TRUE(document.save());
        document.newDocument();
        EXPECT_FALSE(there.locked());
    }
}

TEST(LocklessFolder, TakenOverSavesNoMore) {
    Lockless there;
    TQuobrixDocument first(there.folder), second(there.folder);
    there.open(first);
    there.open(second);
    ASSERT_TRUE(second.takeOver());
    addTrip(first, kStart + 3600);
    EXPECT_EQ(first.save().error().kind, ErrorKind::ReadOnly);
    EXPECT_TRUE(first.lockedBy());
    addTrip(second, kStart + 3600);
    ASSERT_TRUE(second.save());
    first.newDocument();
    EXPECT_TRUE(there.locked()) << "it is the other's now";
}

} // namespace
} // namespace quobrix
