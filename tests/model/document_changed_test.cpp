/// Other programs that change the document's file, or take its name.
#include "repair/document_check.h"
#include "support/document_folder.h"
#include "support/document_streams.h"
#include "support/forwarding_files.h"
#include "support/set_time.h"

#include <new>
#include <utility>

namespace quobrix {
namespace {

using namespace test;

using ChangedFile = DocumentFolder;

TEST_F(ChangedFile, AppearedFileStays) {
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

TEST_F(ChangedFile, IsNotOverwritten) {
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

TEST_F(ChangedFile, ChangedWhileBackedUp) {
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

TEST_F(ChangedFile, ReplacedWhileSaved) {
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

TEST_F(ChangedFile, FailedSaveIsOurs) {
    TQuobrixDocument document;
    openAndAdd(document);
    ASSERT_TRUE(document.save());
    addTrip(document, kStart + 7200);
    const SaveOptions failing{.runDisk = [](const DiskWork& work) {
        DiskProgress progress;
        EXPECT_TRUE(work(progress));
        return Error{ErrorKind::Io, ShownText::asItIs("at the very end")};
    }};
    EXPECT_EQ(kindOf(document.save(failing)), ErrorKind::Io);
    const Result<void> again = document.save();
    ASSERT_TRUE(again) << again.error().detail;
    EXPECT_EQ(tripsIn(path_), 3u);
    EXPECT_EQ(tripsIn(backup_), 1u);
}

TEST_F(ChangedFile, LoadedContentIsNotReadAgain) {
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

TEST_F(ChangedFile, ForeignBytesAreNotMixedIn) {
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

TEST_F(ChangedFile, SavesElsewhereAreNotMixedIn) {
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

TEST_F(ChangedFile, OpenedWhileSaved) {
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

TEST_F(ChangedFile, UnboundLeavesTheDocument) {
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

} // namespace
} // namespace quobrix
