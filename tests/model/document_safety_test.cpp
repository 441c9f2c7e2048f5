/// The document's file among other files: other programs that change it, compaction.
#include "repair/document_check.h"
#include "support/document_folder.h"
#include "support/document_streams.h"
#include "support/fault_folder.h"
#include "support/forwarding_files.h"
#include "support/make_link.h"
#include "support/set_time.h"

#include <sstream>
#include <stdexcept>
#include <utility>

namespace quobrix {
namespace {

using namespace test;

using DocumentSafety = DocumentFolder;

TEST_F(DocumentSafety, WhatAnotherCopyHasOpenIsNotReplaced) {
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

TEST_F(DocumentSafety, WrittenOnceAnotherCopyLetsGo) {
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

TEST_F(DocumentSafety, RemovesWhatKilledProgramsLeft) {
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

// Names that were free

TEST_F(DocumentSafety, WhatAppearsWhereAFileIsToBeMadeStays) {
    const fs::path target = folder_ / "New.car";
    for (const IfThere ifThere : {IfThere::Refuse, IfThere::Replace}) {
        fs::remove(target);
        TQuobrixDocument document;
        openAndAdd(document);
        const SaveOptions options = meanwhile([&] { put(target, "theirs"); });
        EXPECT_EQ(kindOf(document.saveAs(target, ifThere, options)), ErrorKind::Exists);
        EXPECT_EQ(bytes(target), "theirs");
        EXPECT_EQ(document.path(), path_);
        EXPECT_TRUE(document.modified());
        EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "New.car"}));
    }
}

TEST_F(DocumentSafety, NotDurableYetIsToldAndRetried) {
    struct Files final : ForwardingFiles {
        Result<void> flushFolder(const fs::path& folder) override {
            return fails ? Error{ErrorKind::Io, "flush"} : ForwardingFiles::flushFolder(folder);
        }
        bool fails = true;
    };
    for (const bool newName : {true, false}) {
        SCOPED_TRACE(newName);
        Files files;
        TQuobrixDocument document(files);
        openAndAdd(document);
        const fs::path target = newName ? folder_ / "New.car" : path_;
        const auto save = [&] { return newName ? document.saveAs(target) : document.compact(); };
        EXPECT_EQ(kindOf(save()), ErrorKind::NotDurable);
        EXPECT_EQ(document.path(), target);
        EXPECT_EQ(tripsIn(target), 2u);
        EXPECT_TRUE(document.modified());
        EXPECT_EQ(kindOf(document.save()), ErrorKind::NotDurable);
        files.fails = false;
        ASSERT_TRUE(document.save());
        EXPECT_FALSE(document.modified());
    }
}

// Folders without locks

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

TEST(LocklessFolder, ALockFileKeepsTheSecondWriterAway) {
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

TEST(LocklessFolder, WhoWasTakenOverSavesNoMore) {
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

// Other programs

TEST_F(DocumentSafety, AChangedFileIsNotOverwritten) {
    const std::string mine = bytes(path_);
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"time", [&] { setTime(path_, fs::last_write_time(path_) + std::chrono::seconds(1)); }},
        {"size", [&] { put(path_, mine + std::string(512, '\0')); }},
        {"header",
         [&] {
             const auto time = fs::last_write_time(path_);
             std::string changed = mine;
             ++changed[100];
             put(path_, changed);
             setTime(path_, time);
         }},
        {"another file",
         [&] {
             fs::rename(path_, folder_ / "moved");
             fs::copy_file(folder_ / "moved", path_);
             setTime(path_, fs::last_write_time(folder_ / "moved"));
             fs::remove(folder_ / "moved");
         }},
#ifndef _WIN32 // where the name of an open file stays until it is closed
        {"gone", [&] { fs::remove(path_); }},
#endif
    };
    for (const auto& [what, change] : changes) {
        SCOPED_TRACE(what);
        fs::remove(path_);
        fs::remove(backup_);
        put(path_, mine);
        TQuobrixDocument document;
        openAndAdd(document);
        ASSERT_TRUE(*document.loadRest());
        change();
        const bool gone = !fs::exists(path_);
        const std::string theirs = bytes(path_);
        EXPECT_EQ(kindOf(document.save()), ErrorKind::Changed);
        EXPECT_EQ(kindOf(document.compact()), ErrorKind::Changed);
        EXPECT_EQ(bytes(path_), theirs);
        EXPECT_TRUE(document.modified());
        ASSERT_TRUE(document.overwrite());
        EXPECT_EQ(tripsIn(path_), 2u);
        EXPECT_EQ(fs::exists(backup_), !gone);
        EXPECT_EQ(bytes(backup_), theirs);
        addTrip(document, kStart + 7200);
        ASSERT_TRUE(document.save());
        EXPECT_EQ(tripsIn(path_), 3u);
    }
}

TEST_F(DocumentSafety, ChangedWhileBackedUp) {
    makeDocument(folder_ / "Theirs.car", 9);
    const std::string mine = bytes(path_), theirs = bytes(folder_ / "Theirs.car");
    for (const bool question : {false, true}) { // whether to save without it
        SCOPED_TRACE(question);
        fs::remove(backup_);
        if (question)
            fs::create_directory(backup_);
        put(path_, mine);
        bool changes = true;
        const auto change = [&] {
            if (std::exchange(changes, false))
                put(path_, theirs);
        };
        SaveOptions options = meanwhile([] {}, change);
        options.saveWithoutBackup = [&](const Error&) {
            change();
            return true;
        };
        TQuobrixDocument document;
        openAndAdd(document);
        EXPECT_EQ(kindOf(document.save(options)), ErrorKind::Changed);
        EXPECT_EQ(bytes(path_), theirs);
        EXPECT_TRUE(document.modified());
        EXPECT_EQ(kindOf(document.save(options)), ErrorKind::Changed) << "until the person has decided";
#ifndef _WIN32 // where locks let nobody write into the file, so that it is another one by now and all of it is there
        EXPECT_EQ(kindOf(document.overwrite(options)), ErrorKind::Changed) << "a part of it is nowhere any more";
        put(path_, mine); // as it was, but for the time
        ASSERT_TRUE(*document.loadRest());
        put(path_, theirs);
#endif
        ASSERT_TRUE(document.overwrite(options));
        EXPECT_EQ(tripsIn(path_), 2u);
        if (!question) {
            EXPECT_EQ(bytes(backup_), theirs);
        }
    }
}

TEST_F(DocumentSafety, ReplacedWhileSaved) {
    fs::copy_file(path_, folder_ / "Theirs.car");
    TQuobrixDocument document;
    openAndAdd(document);
    ASSERT_TRUE(document.save());
    addTrip(document, kStart + 7200);
    const auto replace = [&] { EXPECT_TRUE(renameOver(folder_ / "Theirs.car", path_)); };
    EXPECT_EQ(kindOf(document.save(meanwhile([] {}, replace))), ErrorKind::Changed);
    EXPECT_TRUE(document.modified());
    EXPECT_EQ(tripsIn(path_), 1u);
}

TEST_F(DocumentSafety, AFailedSaveIsNotAnothersChange) {
    TQuobrixDocument document;
    openAndAdd(document);
    ASSERT_TRUE(document.save());
    addTrip(document, kStart + 7200);
    const SaveOptions failing{.runDisk = [](const DiskWork& work) {
        DiskProgress progress;
        EXPECT_TRUE(work(progress));
        return Error{ErrorKind::Io, "at the very end"};
    }};
    EXPECT_EQ(kindOf(document.save(failing)), ErrorKind::Io);
    const Result<void> again = document.save();
    ASSERT_TRUE(again) << again.error().detail;
    EXPECT_EQ(tripsIn(path_), 3u);
    EXPECT_EQ(tripsIn(backup_), 1u);
}

TEST_F(DocumentSafety, AChangedFileIsReloadedOrKept) {
    makeDocument(folder_ / "Theirs.car", 3);
    TQuobrixDocument document;
    openAndAdd(document);
    put(path_, bytes(folder_ / "Theirs.car"));
    ASSERT_EQ(kindOf(document.save()), ErrorKind::Changed);
    ASSERT_TRUE(document.open(path_, TDocument::Access::Edit));
    EXPECT_EQ(document.trips().rowCount(), 3u);
    EXPECT_FALSE(document.readOnly());
    EXPECT_EQ(openFile(path_, FileMode::ReadWrite).error().kind, ErrorKind::InUse);
    addTrip(document, kStart + 7200);
    EXPECT_TRUE(document.save());
    EXPECT_EQ(tripsIn(path_), 4u);
    addTrip(document, kStart + 7200);
    EXPECT_TRUE(renameOver(folder_ / "Theirs.car", path_));
    ASSERT_EQ(kindOf(document.save()), ErrorKind::Changed);
    ASSERT_TRUE(document.saveAs(folder_ / "Mine.car"));
    EXPECT_EQ(tripsIn(folder_ / "Mine.car"), 5u);
    EXPECT_EQ(tripsIn(path_), 3u);
}

TEST_F(DocumentSafety, LoadedContentIsNotReadAgain) {
    const std::string mine = bytes(path_), speeds = {30, 31, 32, 33, 34, 35, 36, 37};
    std::string garbled = mine; // with the same header and size
    const std::size_t at = garbled.find(speeds);
    ASSERT_NE(at, std::string::npos);
    garbled.replace(at, speeds.size(), speeds.size(), 'x');
    Streams expected;
    for (const std::string& there : {mine, garbled}) {
        put(path_, mine);
        TQuobrixDocument document;
        openAndAdd(document);
        ASSERT_TRUE(*document.loadRest());
        put(path_, there);
        const fs::path kept = folder_ / (there == mine ? "Kept.car" : "Kept too.car");
        ASSERT_TRUE(document.saveAs(kept));
        const Streams streams = streamsOf(kept);
        if (there == mine)
            expected = streams;
        EXPECT_TRUE(streams == expected);
    }
}

TEST_F(DocumentSafety, ForeignBytesAreNotMixedIn) {
    const fs::path other = folder_ / "Theirs.car", kept = folder_ / "Mine.car";
    {
        TQuobrixDocument made, theirs;
        for (int i = 0; i < 20; ++i)
            addTrip(made, kStart + 3600 * i);
        ASSERT_TRUE(made.saveAs(path_, IfThere::Replace));
        for (int i = 0; i < 5; ++i) { // of another history, so that everything lies elsewhere
            addTrip(theirs, kStart + 7000 * i);
            ASSERT_TRUE(theirs.saveAs(other));
        }
    }
    const std::string mine = bytes(path_);
    const std::optional<std::string> contents[] = {{}, bytes(other), mine.substr(0, mine.size() / 2), ""};
    for (const bool edited : {true, false}) {
        Streams expected; // that of the untouched file, which comes first
        for (const std::optional<std::string>& content : contents) {
            SCOPED_TRACE(content ? content->size() : 0);
            put(path_, mine);
            fs::remove(kept);
            TQuobrixDocument document;
            open(document);
            if (edited)
                addTrip(document, kStart);
            if (content) {
                put(path_, *content);
                ASSERT_EQ(kindOf(document.save()), ErrorKind::Changed);
            }
            const std::size_t known = document.store().damage().size();
            const SaveOptions failing{.runDisk = [](const DiskWork&) { return Error{ErrorKind::Io, {}}; }};
            EXPECT_EQ(kindOf(document.saveAs(kept, failing)), ErrorKind::Io);
            EXPECT_EQ(document.store().damage().size(), known) << "a save that fails takes nothing from the document";
            const Result<void> saved = document.saveAs(kept);
            ASSERT_TRUE(saved) << saved.error().detail;
            EXPECT_FALSE(document.readOnly());
            Streams streams = streamsOf(kept);
            if (!content)
                expected = streams;
            for (const auto& [name, stream] : expected) {
                const ObjectId id = idOfStream(name);
                EXPECT_TRUE(streams[name] == stream || (id != kNoObject && document.store().unreadable(id))) << name;
            }
            document.newDocument();
            EXPECT_EQ(tripsIn(kept), edited ? 21u : 20u);
        }
    }
}

TEST_F(DocumentSafety, AnotherCopysSavesAreNotMixedIn) {
    constexpr RowIndex kTrips = 60;
    constexpr int kSaves = 6;
    const fs::path kept = folder_ / "Kept.car";
    const auto setSpeeds = [](TQuobrixDocument& document, RowIndex trip, std::uint8_t speed) {
        document.trips().column<TTripLogSampleTableColumn>().object(trip)->speed().setAll(
            std::vector<std::uint8_t>(61, speed));
    };
    // Whether the trip shows what was there at first; if not it shows nothing.
    const auto shown = [](TQuobrixDocument& document, RowIndex trip) {
        const TTripLogSampleTable* samples = document.trips().column<TTripLogSampleTableColumn>().object(trip);
        if (!samples || samples->speed().storedRows() == 0)
            return false;
        EXPECT_EQ(samples->speed().values(), std::vector<std::uint8_t>(61, static_cast<std::uint8_t>(trip + 1)));
        return true;
    };
    {
        TQuobrixDocument made;
        for (RowIndex trip = 0; trip < kTrips; ++trip) {
            addTrip(made, kStart + 3600 * static_cast<std::int32_t>(trip));
            setSpeeds(made, trip, static_cast<std::uint8_t>(trip + 1));
        }
        ASSERT_TRUE(made.saveAs(path_, IfThere::Replace));
    }
    for (const bool edited : {false, true}) {
        SCOPED_TRACE(edited);
        const std::string before = bytes(path_);
        TQuobrixDocument writer, viewer;
        open(writer);
        open(viewer);
        ASSERT_EQ(viewer.readOnlyReason()->kind, ErrorKind::InUse);
        if (edited)
            addTrip(viewer, kStart - 3600);
        ASSERT_TRUE(shown(viewer, 0));
        int told = 0;
        viewer.whenOutdated([&] { ++told; });
        for (int save = 0; save < kSaves; ++save) {
            for (RowIndex trip = 0; trip < kTrips; ++trip)
                if (trip % kSaves == static_cast<RowIndex>(save))
                    setSpeeds(writer, trip, 200);
            ASSERT_TRUE(writer.save());
        }
        EXPECT_FALSE(viewer.outdated()) << "it has not looked yet";
        for (RowIndex trip = 1; trip < kTrips; ++trip)
            shown(viewer, trip);
        EXPECT_TRUE(viewer.outdated());
        EXPECT_EQ(told, 1);
        EXPECT_EQ(viewer.readOnlyReason()->kind, ErrorKind::Changed);
        EXPECT_EQ(kindOf(viewer.tryWriting()), ErrorKind::Changed);
        EXPECT_FALSE(viewer.edits().insertRows(viewer.drivers().id(), 0).ok()) << "on what is not whole";
        EXPECT_TRUE(shown(viewer, 0)) << "loaded before";
        EXPECT_FALSE(shown(viewer, kTrips - 1));
        EXPECT_TRUE(viewer.store().damage().empty()) << "a change is no damage";
        EXPECT_EQ(checkDocument(viewer).sound(), false);
        EXPECT_FALSE(*viewer.loadRest());
        EXPECT_EQ(kindOf(viewer.overwrite()), ErrorKind::Changed) << "not by a part of it";

        if (!edited) { // there is nothing of one's own to be kept
            EXPECT_EQ(kindOf(viewer.saveAs(kept)), ErrorKind::Changed);
            EXPECT_FALSE(fs::exists(kept));
        } else {
            ASSERT_TRUE(viewer.saveAs(kept));
            EXPECT_FALSE(viewer.outdated());
            EXPECT_FALSE(viewer.store().damage().empty()) << "what it lacks";
            TQuobrixDocument reader;
            ASSERT_TRUE(reader.open(kept, TDocument::Access::Read));
            EXPECT_EQ(reader.trips().rowCount(), kTrips + 1);
            EXPECT_TRUE(shown(reader, 0));
            EXPECT_FALSE(shown(reader, kTrips - 1));
        }
        ASSERT_TRUE(viewer.open(path_, TDocument::Access::Edit));
        EXPECT_EQ(viewer.readOnlyReason()->kind, ErrorKind::InUse);
        EXPECT_EQ(viewer.trips().column<TTripLogSampleTableColumn>().object(kTrips - 1)->speed().values()[0], 200);
        writer.newDocument();
        viewer.newDocument();
        put(path_, before);
    }
}

TEST_F(DocumentSafety, AFileIsOpenedWhileAnotherCopySavesIt) {
    /// Another copy saves at a few of the first moments when the file is read.
    class Saving final : public ForwardingFile {
    public:
        Saving(std::unique_ptr<File> file, const std::function<void()>& save)
            : ForwardingFile(*file), owned_(std::move(file)), save_(save) {}
        Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
            const Result<void> done = ForwardingFile::readAt(offset, out);
            save_();
            return done;
        }

    private:
        std::unique_ptr<File> owned_;
        const std::function<void()>& save_;
    };
    struct Files final : ForwardingFiles {
        Result<std::unique_ptr<File>> open(const fs::path& path, FileMode mode) override {
            auto file = openFile(path, mode);
            if (!file)
                return file;
            return std::unique_ptr<File>(std::make_unique<Saving>(*std::move(file), save));
        }
        std::function<void()> save = [] {};
    };
    for (int first = 0; first < 40; first += 3) {
        SCOPED_TRACE(first);
        TQuobrixDocument writer;
        open(writer);
        Files files;
        TQuobrixDocument viewer(files);
        int reads = 0;
        files.save = [&] {
            if (++reads - first == 1 || reads - first == 8) {
                addTrip(writer, kStart + reads);
                ASSERT_TRUE(writer.save());
            }
        };
        ASSERT_TRUE(viewer.open(path_, TDocument::Access::Edit));
        files.save = [] {};
        if (viewer.outdated()) {
            ASSERT_TRUE(viewer.open(path_, TDocument::Access::Edit));
        }
        EXPECT_EQ(viewer.trips().rowCount(), writer.trips().rowCount());
        EXPECT_TRUE(checkDocument(viewer).sound());
    }
    TQuobrixDocument writer;
    open(writer);
    Files files;
    files.save = [&, n = kStart]() mutable {
        addTrip(writer, ++n);
        ASSERT_TRUE(writer.save());
    };
    TQuobrixDocument viewer(files);
    EXPECT_EQ(kindOf(viewer.open(path_, TDocument::Access::Edit)), ErrorKind::InUse) << "it never comes to rest";
    EXPECT_FALSE(viewer.hasFile());
}

TEST_F(DocumentSafety, AnUnreadableFileLeavesTheDocument) {
    TQuobrixDocument document;
    openAndAdd(document);
    put(path_, "no document");
    EXPECT_EQ(kindOf(document.open(path_, TDocument::Access::Edit)), ErrorKind::NotADocument);
    EXPECT_EQ(document.trips().rowCount(), 2u);
    EXPECT_FALSE(document.readOnly());
#ifndef _WIN32 // where locks let nobody write into the file, so that it is another one by now
    EXPECT_EQ(openFile(path_, FileMode::ReadWrite).error().kind, ErrorKind::InUse);
#endif
}

TEST_F(DocumentSafety, ContentThatCannotBeBoundLeavesTheDocument) {
    struct Fragile final : TDocument {
        Fragile() : TDocument(modelTypes()) { newDocument(); }
        Result<void> bind() override {
            if (fails)
                throw std::bad_alloc();
            return {};
        }
        bool fails = false;
    };
    Fragile document;
    ASSERT_TRUE(document.open(path_, TDocument::Access::Edit));
    ObjectStore* const store = &document.store();
    document.fails = true;
    EXPECT_THROW(static_cast<void>(document.open(path_, TDocument::Access::Read)), std::bad_alloc);
    EXPECT_THROW(document.newDocument(), std::bad_alloc);
    EXPECT_EQ(&document.store(), store);
    EXPECT_EQ(document.path(), path_);
    EXPECT_FALSE(document.readOnly());
}

// Compaction

TEST_F(DocumentSafety, CompactionRemovesOnlyUnusedSpace) {
    TQuobrixDocument document;
    open(document);
    for (int i = 1; i < 60; ++i)
        addTrip(document, kStart + 3600 * i);
    ASSERT_TRUE(document.save());
    document.trips().removeRows(0, 50);
    ASSERT_TRUE(document.save());
    fs::permissions(path_, fs::perms(0640));
    const fs::perms permissions = fs::status(path_).permissions(); // as far as the system has them
    const Streams before = streamsOf(path_);
    const CompoundFile::Space space = document.space();
    ASSERT_GT(space.freeBytes, space.fileBytes / 2);

    document.trips().removeRows(0, 1); // is saved first
    ASSERT_TRUE(document.compact());
    EXPECT_FALSE(document.modified());
    EXPECT_EQ(tripsIn(path_), 9u);
    EXPECT_EQ(document.space().fileBytes, fs::file_size(path_));
    EXPECT_LT(document.space().fileBytes, space.fileBytes / 2);
    EXPECT_LT(document.space().freeBytes, document.space().fileBytes / 20);
    EXPECT_EQ(fs::status(path_).permissions(), permissions);
    EXPECT_EQ(openFile(path_, FileMode::ReadWrite).error().kind, ErrorKind::InUse);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak"}));

    const Streams compact = streamsOf(path_);
    ASSERT_TRUE(document.compact()); // there is nothing left to take away
    EXPECT_EQ(streamsOf(path_), compact);
    EXPECT_LT(compact.size(), before.size());
    addTrip(document, kStart);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(tripsIn(path_), 10u);
}

TEST_F(DocumentSafety, ReplacedWhileCompacted) {
    TQuobrixDocument document;
    open(document);
    const auto replace = [&] {
        fs::remove(path_);
        put(path_, "theirs");
    };
    EXPECT_EQ(kindOf(document.compact(meanwhile([] {}, replace))), ErrorKind::Changed);
    EXPECT_EQ(bytes(path_), "theirs");
#ifndef _WIN32 // where what the other program has put aside is there until it is closed
    EXPECT_EQ(files(), std::vector<std::string>{"Doc.car"});
#endif
}

TEST_F(DocumentSafety, RefusedCompactions) {
    TQuobrixDocument document, second;
    EXPECT_EQ(kindOf(document.compact()), ErrorKind::NotFound);
    open(document);
    ASSERT_TRUE(second.open(path_, TDocument::Access::Edit));
    EXPECT_EQ(kindOf(second.compact()), ErrorKind::InUse);
    ASSERT_TRUE(second.open(path_, TDocument::Access::Read));
    EXPECT_EQ(kindOf(second.compact()), ErrorKind::ReadOnly);
    document.newDocument();
    second.newDocument();

    const ObjectId distance = [&] {
        TQuobrixDocument reader;
        open(reader);
        return reader.trips().column<TTripLogDistanceColumn>().id();
    }();
    tamper(path_, [&](CompoundFile& file) { file.write(std::to_string(distance), {1}); });
    open(document);
    EXPECT_EQ(document.store().find(distance), nullptr);
    EXPECT_EQ(kindOf(document.compact()), ErrorKind::Corrupt);
    document.newDocument();
    tamper(path_, [&](CompoundFile& file) { file.write("Object Ids", {1}); });
    open(document);
    EXPECT_EQ(kindOf(document.compact()), ErrorKind::Corrupt);
}

TEST_F(DocumentSafety, CopiesCanBeCancelled) {
    const std::string before = bytes(path_);
    SaveOptions cancelling{.runDisk = [](const DiskWork& work) {
        DiskProgress progress;
        progress.cancelled = true;
        return work(progress);
    }};
    cancelling.saveWithoutBackup = [](const Error&) -> bool { throw std::logic_error("not asked"); };
    TQuobrixDocument document;
    open(document);
    EXPECT_EQ(kindOf(document.compact(cancelling)), ErrorKind::Cancelled);
    EXPECT_EQ(kindOf(document.saveAs(folder_ / "New.car", cancelling)), ErrorKind::Cancelled);
    addTrip(document, kStart + 3600);
    EXPECT_EQ(kindOf(document.save(cancelling)), ErrorKind::Cancelled);
    EXPECT_TRUE(document.modified());
    EXPECT_EQ(bytes(path_), before);
    EXPECT_EQ(files(), std::vector<std::string>{"Doc.car"});
}

} // namespace
} // namespace quobrix
