/// The document's file among other files: its backup, other programs that change it, compaction.
#include "support/document_streams.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

constexpr std::int32_t kStart = 1'700'000'000;

class DocumentSafety : public testing::Test {
protected:
    DocumentSafety() {
        TQuobrixDocument made;
        addTrip(made, kStart);
        EXPECT_TRUE(made.saveAs(path_));
    }

    static std::string bytes(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    static void put(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }
    static std::size_t tripsIn(const fs::path& path) {
        TQuobrixDocument document;
        EXPECT_TRUE(document.open(path, TDocument::Access::Read)) << path;
        return document.trips().rowCount();
    }
    /// The names in the folder, in order.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }
    void open(TQuobrixDocument& document) { ASSERT_TRUE(document.open(path_, TDocument::Access::Edit)); }
    void openAndAdd(TQuobrixDocument& document) {
        open(document);
        addTrip(document, kStart + 3600);
    }
    template <class T>
    static ErrorKind kindOf(const Result<T>& result) {
        EXPECT_FALSE(result);
        return result ? ErrorKind{} : result.error().kind;
    }

    TemporaryFolder folder_;
    const fs::path path_ = folder_ / "Doc.car", backup_ = folder_ / "Doc.car.bak";
};

// The backup

TEST_F(DocumentSafety, TheFileAsItWasIsKeptBeforeTheFirstChangeOfARun) {
    fs::permissions(path_, fs::perms::owner_read | fs::perms::owner_write);
    const std::string before = bytes(path_);
    TQuobrixDocument document;
    openAndAdd(document);
    EXPECT_FALSE(fs::exists(backup_));
    ASSERT_TRUE(document.save());
    EXPECT_EQ(bytes(backup_), before);
    EXPECT_EQ(fs::status(backup_).permissions(), fs::status(path_).permissions());
    addTrip(document, kStart + 7200);
    ASSERT_TRUE(document.save());
    ASSERT_TRUE(document.open(path_, TDocument::Access::Edit)); // in the same run
    addTrip(document, kStart + 9000);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(bytes(backup_), before);

    document.newDocument(); // lets go of the file
    TQuobrixDocument nextRun;
    openAndAdd(nextRun);
    ASSERT_TRUE(nextRun.save());
    EXPECT_EQ(tripsIn(backup_), 4u);
    EXPECT_EQ(tripsIn(path_), 5u);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak"}));
}

TEST_F(DocumentSafety, SavingNothingTouchesNothing) {
    const std::string before = bytes(path_);
    put(backup_, "old backup");
    const auto time = fs::last_write_time(path_) - std::chrono::hours(1);
    fs::last_write_time(path_, time);
    TQuobrixDocument document;
    open(document);
    ASSERT_TRUE(document.save());
    ASSERT_TRUE(document.saveAs(path_));
    EXPECT_EQ(bytes(path_), before);
    EXPECT_EQ(fs::last_write_time(path_), time);
    EXPECT_EQ(bytes(backup_), "old backup");
}

TEST_F(DocumentSafety, TheBackupLiesBesideTheFileAndNotBesideALinkToIt) {
    fs::create_directory(folder_ / "links");
    fs::create_symlink(path_, folder_ / "links" / "link.car");
    TQuobrixDocument document;
    ASSERT_TRUE(document.open(folder_ / "links" / "link.car", TDocument::Access::Edit));
    addTrip(document, kStart + 3600);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(tripsIn(backup_), 1u);
    EXPECT_EQ(TDocument::backupPath(document.path()), backup_);
    ASSERT_TRUE(document.compact());
    EXPECT_TRUE(fs::is_symlink(folder_ / "links" / "link.car"));
    EXPECT_EQ(tripsIn(path_), 2u);
}

TEST_F(DocumentSafety, ABackupThatIsALinkGivesWayAndWhatItLeadsToStays) {
    const std::string before = bytes(path_);
    const fs::path elsewhere = folder_ / "elsewhere";
    put(elsewhere, "somebody's");
    for (const fs::path& leadsTo : {elsewhere, folder_ / "missing", fs::path("."), path_}) {
        fs::remove(backup_);
        fs::create_symlink(leadsTo, backup_);
        put(path_, before);
        TQuobrixDocument document;
        openAndAdd(document);
        ASSERT_TRUE(document.save()) << leadsTo;
        EXPECT_FALSE(fs::is_symlink(backup_)) << leadsTo;
        EXPECT_EQ(bytes(backup_), before) << leadsTo;
        EXPECT_EQ(tripsIn(path_), 2u) << leadsTo;
    }
    EXPECT_EQ(bytes(elsewhere), "somebody's");
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak", "elsewhere"}));
}

TEST_F(DocumentSafety, ABackupThatIsOpenCanBeSavedOverItsFile) {
    put(backup_, bytes(path_));
    {
        TQuobrixDocument document;
        openAndAdd(document);
        ASSERT_TRUE(document.save());
    }
    const std::string newer = bytes(path_);
    TQuobrixDocument document, running;
    ASSERT_TRUE(document.open(backup_, TDocument::Access::Edit));
    ASSERT_TRUE(document.saveAs(path_));
    EXPECT_EQ(tripsIn(path_), 1u);
    EXPECT_EQ(bytes(backup_), newer) << "what was replaced is kept";
    EXPECT_EQ(document.path(), path_);
    // That of another copy is left to it.
    document.newDocument();
    ASSERT_TRUE(running.open(backup_, TDocument::Access::Edit));
    TQuobrixDocument nextRun;
    addTrip(nextRun, kStart);
    EXPECT_EQ(kindOf(nextRun.saveAs(path_)), ErrorKind::InUse);
    EXPECT_EQ(bytes(backup_), newer);
}

TEST_F(DocumentSafety, TheExampleIsNeverKept) {
    fs::copy_file(path_, folder_ / "example.CAR");
    TQuobrixDocument document;
    ASSERT_TRUE(document.open(folder_ / "example.CAR", TDocument::Access::Edit));
    addTrip(document, kStart + 3600);
    ASSERT_TRUE(document.save());
    EXPECT_FALSE(fs::exists(folder_ / "example.CAR.bak"));
}

TEST_F(DocumentSafety, WithoutABackupItIsSavedOnlyIfThatIsWanted) {
    fs::create_directory(backup_);
    const std::string before = bytes(path_);
    TQuobrixDocument document;
    openAndAdd(document);
    EXPECT_EQ(kindOf(document.save()), ErrorKind::IsDirectory);
    int asked = 0;
    bool answer = false;
    const SaveOptions options{.saveWithoutBackup = [&](const Error& reason) {
        ++asked;
        EXPECT_EQ(reason.kind, ErrorKind::IsDirectory);
        return answer;
    }};
    EXPECT_EQ(kindOf(document.save(options)), ErrorKind::Cancelled);
    EXPECT_EQ(bytes(path_), before);
    answer = true;
    ASSERT_TRUE(document.save(options));
    addTrip(document, kStart + 7200);
    ASSERT_TRUE(document.save(options)); // known now
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(tripsIn(path_), 3u);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak"}));
}

TEST_F(DocumentSafety, WhatSaveAsReplacesIsKept) {
    const fs::path other = folder_ / "Other.car";
    put(other, "something else");
    TQuobrixDocument document;
    openAndAdd(document);
    ASSERT_TRUE(document.saveAs(other));
    EXPECT_EQ(bytes(folder_ / "Other.car.bak"), "something else");
    EXPECT_EQ(tripsIn(other), 2u);
    EXPECT_EQ(tripsIn(path_), 1u);
    EXPECT_FALSE(fs::exists(backup_));
}

TEST_F(DocumentSafety, WhatAnotherCopyHasOpenIsNotReplaced) {
    const fs::path other = folder_ / "Other.car";
    fs::copy_file(path_, other);
    TQuobrixDocument document, running;
    ASSERT_TRUE(running.open(other, TDocument::Access::Edit));
    openAndAdd(document);
    EXPECT_EQ(kindOf(document.saveAs(other, {.saveWithoutBackup = [](const Error&) { return true; }})),
              ErrorKind::InUse);
    EXPECT_EQ(document.path(), path_);
    EXPECT_EQ(tripsIn(other), 1u);
    ASSERT_TRUE(running.open(backup_.parent_path() / "Doc.car", TDocument::Access::Read)); // lets go of the other
    EXPECT_TRUE(document.saveAs(other));
}

TEST_F(DocumentSafety, AFileThatAnotherCopyHadIsWrittenOnceThatLetsGoOfIt) {
    TQuobrixDocument running, document;
    open(running);
    openAndAdd(document);
    EXPECT_EQ(document.readOnlyReason()->kind, ErrorKind::InUse);
    EXPECT_EQ(kindOf(document.save()), ErrorKind::ReadOnly);
    running.newDocument();
    ASSERT_TRUE(document.tryWriting());
    EXPECT_FALSE(document.readOnly());
    ASSERT_TRUE(document.save());
    EXPECT_EQ(tripsIn(path_), 2u);
    EXPECT_EQ(kindOf(openFile(path_, FileMode::ReadWrite)), ErrorKind::InUse) << "locked now";
}

TEST_F(DocumentSafety, WhatAnotherCopyHasSavedMeanwhileIsNotOverwrittenUnasked) {
    TQuobrixDocument running, document;
    openAndAdd(running);
    openAndAdd(document);
    addTrip(document, kStart + 7200);
    ASSERT_TRUE(running.save());
    EXPECT_EQ(kindOf(document.save()), ErrorKind::ReadOnly) << "still held";
    running.newDocument();
    EXPECT_EQ(kindOf(document.tryWriting()), ErrorKind::Changed);
    EXPECT_EQ(document.readOnlyReason()->kind, ErrorKind::Changed);
    EXPECT_EQ(kindOf(document.save()), ErrorKind::Changed);
    EXPECT_EQ(tripsIn(path_), 2u);
    ASSERT_TRUE(document.overwrite());
    EXPECT_FALSE(document.readOnly());
    EXPECT_EQ(tripsIn(path_), 3u);
    EXPECT_EQ(tripsIn(backup_), 2u);
}

TEST_F(DocumentSafety, WhatKilledProgramsLeftIsRemovedAndNothingElse) {
    const fs::path held = folder_ / ".quobrix-00000000000000ff.tmp";
    for (const char* const name : {".quobrix-0123456789abcdef.tmp", ".quobrix-0123.tmp", "quobrix-0123456789abcdef.tmp",
                                   ".quobrix-0123456789abcdeX.tmp"})
        put(folder_ / name, "x");
    fs::create_directory(folder_ / ".quobrix-1111111111111111.tmp");
    fs::create_symlink(path_, folder_ / ".quobrix-2222222222222222.tmp");
    const auto holder = openFile(held, FileMode::Create);
    ASSERT_TRUE(holder);
    TQuobrixDocument document;
    ASSERT_TRUE(document.open(path_, TDocument::Access::Read));
    EXPECT_TRUE(fs::exists(folder_ / ".quobrix-0123456789abcdef.tmp"));
    open(document);
    EXPECT_FALSE(fs::exists(folder_ / ".quobrix-0123456789abcdef.tmp"));
    EXPECT_TRUE(fs::exists(held));
    EXPECT_EQ(files().size(), 7u);
}

// Other programs

TEST_F(DocumentSafety, AFileThatHasChangedIsNotOverwrittenUnasked) {
    const std::string mine = bytes(path_);
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"time", [&] { fs::last_write_time(path_, fs::last_write_time(path_) + std::chrono::seconds(1)); }},
        {"size", [&] { put(path_, mine + std::string(512, '\0')); }},
        {"header",
         [&] {
             const auto time = fs::last_write_time(path_);
             std::string changed = mine;
             ++changed[100];
             put(path_, changed);
             fs::last_write_time(path_, time);
         }},
        {"another file",
         [&] {
             fs::rename(path_, folder_ / "moved");
             fs::copy_file(folder_ / "moved", path_);
             fs::last_write_time(path_, fs::last_write_time(folder_ / "moved"));
             fs::remove(folder_ / "moved");
         }},
        {"gone", [&] { fs::remove(path_); }},
    };
    for (const auto& [what, change] : changes) {
        SCOPED_TRACE(what);
        fs::remove(path_);
        fs::remove(backup_);
        put(path_, mine);
        TQuobrixDocument document;
        openAndAdd(document);
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

TEST_F(DocumentSafety, AFileThatChangesWhileItsBackupIsMadeIsNotOverwrittenUnasked) {
    TQuobrixDocument other;
    for (int i = 0; i < 9; ++i)
        addTrip(other, kStart + 86400 * i);
    ASSERT_TRUE(other.saveAs(folder_ / "Theirs.car"));
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
        const SaveOptions options{.saveWithoutBackup =
                                      [&](const Error&) {
                                          change();
                                          return true;
                                      },
                                  .runDisk =
                                      [&](const DiskWork& work) {
                                          DiskProgress progress;
                                          const Result<void> done = work(progress);
                                          change();
                                          return done;
                                      }};
        TQuobrixDocument document;
        openAndAdd(document);
        EXPECT_EQ(kindOf(document.save(options)), ErrorKind::Changed);
        EXPECT_EQ(bytes(path_), theirs);
        EXPECT_TRUE(document.modified());
        EXPECT_EQ(kindOf(document.save(options)), ErrorKind::Changed) << "until the person has decided";
        ASSERT_TRUE(document.overwrite(options));
        EXPECT_EQ(tripsIn(path_), 2u);
        if (!question) {
            EXPECT_EQ(bytes(backup_), theirs);
        }
    }
}

TEST_F(DocumentSafety, AChangedFileCanBeReadAnewOrKeptBesideOnesOwn) {
    TQuobrixDocument theirs;
    openAndAdd(theirs);
    addTrip(theirs, kStart + 9000);
    ASSERT_TRUE(theirs.saveAs(folder_ / "Theirs.car"));
    theirs.newDocument();
    for (const bool inPlace : {false, true}) {
        SCOPED_TRACE(inPlace);
        TQuobrixDocument document;
        openAndAdd(document);
        if (inPlace)
            put(path_, bytes(folder_ / "Theirs.car"));
        else
            fs::copy_file(folder_ / "Theirs.car", path_, fs::copy_options::overwrite_existing);
        ASSERT_EQ(kindOf(document.save()), ErrorKind::Changed);
        ASSERT_TRUE(document.open(path_, TDocument::Access::Edit));
        EXPECT_EQ(document.trips().rowCount(), 3u);
        EXPECT_FALSE(document.readOnly());
        EXPECT_EQ(openFile(path_, FileMode::ReadWrite).error().kind, ErrorKind::InUse);
        addTrip(document, kStart + 7200);
        EXPECT_TRUE(document.save());
        EXPECT_EQ(tripsIn(path_), 4u);
    }
    TQuobrixDocument document;
    openAndAdd(document);
    fs::rename(folder_ / "Theirs.car", path_);
    ASSERT_EQ(kindOf(document.save()), ErrorKind::Changed);
    ASSERT_TRUE(document.saveAs(folder_ / "Mine.car"));
    EXPECT_EQ(tripsIn(folder_ / "Mine.car"), 5u);
    EXPECT_EQ(tripsIn(path_), 3u);
}

TEST_F(DocumentSafety, WhatAnotherProgramHasWrittenIntoTheFileIsNotTakenForTheDocument) {
    const fs::path other = folder_ / "Theirs.car", kept = folder_ / "Mine.car";
    {
        TQuobrixDocument made, theirs;
        for (int i = 0; i < 20; ++i)
            addTrip(made, kStart + 3600 * i);
        ASSERT_TRUE(made.saveAs(path_));
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

TEST_F(DocumentSafety, AFileThatHasBecomeUnreadableLeavesTheDocument) {
    TQuobrixDocument document;
    openAndAdd(document);
    put(path_, "no document");
    EXPECT_EQ(kindOf(document.open(path_, TDocument::Access::Edit)), ErrorKind::NotADocument);
    EXPECT_EQ(document.trips().rowCount(), 2u);
    EXPECT_FALSE(document.readOnly());
    EXPECT_EQ(openFile(path_, FileMode::ReadWrite).error().kind, ErrorKind::InUse);
}

TEST_F(DocumentSafety, ContentThatCannotBeBoundLeavesTheDocument) {
    struct Fragile final : TDocument {
        Fragile() : TDocument(modelTypes()) { newDocument(); }
        void bind() override {
            if (fails)
                throw std::bad_alloc();
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

TEST_F(DocumentSafety, CompactionTakesAwayUnusedSpaceAndNothingElse) {
    TQuobrixDocument document;
    open(document);
    for (int i = 1; i < 60; ++i)
        addTrip(document, kStart + 3600 * i);
    ASSERT_TRUE(document.save());
    document.trips().removeRows(0, 50);
    ASSERT_TRUE(document.save());
    fs::permissions(path_, fs::perms(0640));
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
    EXPECT_EQ(fs::status(path_).permissions(), fs::perms(0640));
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

TEST_F(DocumentSafety, CompactionDoesNotReplaceWhatAnotherProgramWritesMeanwhile) {
    TQuobrixDocument document;
    open(document);
    const SaveOptions options{.runDisk = [&](const DiskWork& work) {
        DiskProgress progress;
        const Result<void> done = work(progress);
        fs::remove(path_);
        put(path_, "theirs");
        return done;
    }};
    EXPECT_EQ(kindOf(document.compact(options)), ErrorKind::Changed);
    EXPECT_EQ(bytes(path_), "theirs");
    EXPECT_EQ(files(), std::vector<std::string>{"Doc.car"});
}

TEST_F(DocumentSafety, CompactionIsRefusedWhereItCouldLoseSomething) {
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
    const SaveOptions cancelling{.saveWithoutBackup = [](const Error&) -> bool { throw std::logic_error("not asked"); },
                                 .runDisk =
                                     [](const DiskWork& work) {
                                         DiskProgress progress;
                                         progress.cancelled = true;
                                         return work(progress);
                                     }};
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
