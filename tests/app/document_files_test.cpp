#include "app/document_files.h"

#include "app/recent_files.h"
#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "support/document_streams.h"
#include "support/fault_folder.h"
#include "support/sample_trip.h"
#include "support/scripted_prompter.h"
#include "support/temporary_folder.h"
#include "support/text_file.h"

#include <gtest/gtest.h>

#include <fstream>

namespace quobrix {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedPrompter;

class ScriptedChooser final : public FileChooser {
public:
    std::optional<fs::path> chooseToOpen() override { return next; }
    std::optional<fs::path> chooseLogs() override { return next; }
    std::optional<SavePlace> chooseToSave(const fs::path& suggested) override {
        lastSuggested = suggested;
        return next ? std::optional(SavePlace{*next, ifThere}) : std::nullopt;
    }
    std::optional<fs::path> next, lastSuggested;
    IfThere ifThere = IfThere::Refuse;
};

class DocumentFilesTest : public ::testing::Test {
protected:
    ~DocumentFilesTest() override { fs::current_path(startFolder_); }

    static Result<void> atOnce(const DiskWork& work) {
        DiskProgress progress;
        return work(progress);
    }
    DocumentFiles files(Prompter& prompter) {
        return {document_,
                settings_,
                recent_,
                prompter,
                chooser_,
                atOnce,
                {[this] {
                     log_ += "replacing ";
                     if (onReplacing_)
                         onReplacing_();
                 },
                 [this] { log_ += "replaced "; }, [](bool) {},
                 [this](const ShownText& event) { events_.push_back(event); }}};
    }
    void addTrip() {
        test::addTrip(document_, test::kStart);
        document_.setDataChanged();
    }
    /// A file with one trip; the document is new and empty afterwards.
    fs::path savedFile(const char* name) {
        addTrip();
        EXPECT_TRUE(document_.saveAs(folder_ / name));
        document_.newDocument();
        return folder_ / name;
    }
    static std::string bytes(const fs::path& path) { return test::textOf(path); }
    /// Trips an hour apart, from the first one on.
    void addTrips(int count) {
        for (int i = 0; i < count; ++i)
            test::addTrip(document_, test::kStart + 3600 * i);
    }
    /// What a person adds to an opened document.
    void addLater() {
        test::addTrip(document_, test::kStart + 9000);
        document_.setDataChanged();
    }
    std::string lastFile() const { return settings_.getText("Program Config", "Last File Opened"); }

    const fs::path startFolder_ = fs::current_path();
    const test::TemporaryFolder folder_;
    Settings settings_{std::make_unique<MemorySettings>()};
    RecentFiles recent_{settings_};
    TQuobrixDocument document_;
    ScriptedChooser chooser_;
    std::string log_;
    std::vector<std::string> events_;
    std::function<void()> onReplacing_;
};

TEST_F(DocumentFilesTest, ANewDocumentAsksOnlyIfDataWasAdded) {
    ScriptedPrompter silent;
    EXPECT_TRUE(files(silent).close());
    EXPECT_EQ(lastFile(), "");

    addTrip();
    ScriptedPrompter cancelled{{MessageId::SaveChanges, std::nullopt}};
    EXPECT_FALSE(files(cancelled).newFile());
    EXPECT_EQ(document_.trips().rowCount(), 1u);

    ScriptedPrompter saving{{MessageId::SaveChanges, Answer::Yes}};
    EXPECT_FALSE(files(saving).close()) << "no file was chosen";
    EXPECT_EQ(chooser_.lastSuggested, fs::path("Quobrix Data.car"));
    EXPECT_EQ(document_.trips().rowCount(), 1u);

    ScriptedPrompter declined{{MessageId::SaveChanges, Answer::No}};
    EXPECT_TRUE(files(declined).newFile());
    EXPECT_EQ(document_.trips().rowCount(), 0u);
    EXPECT_EQ(log_, "replacing replaced ");
}

TEST_F(DocumentFilesTest, ANewDocumentThatHoldsNothingAsksNothing) {
    ASSERT_TRUE(document_.edits().insertRows(document_.drivers().id(), 0).ok());
    EXPECT_TRUE(document_.dataChanged());
    document_.edits().undo();
    EXPECT_FALSE(document_.dataChanged()) << "nothing is left of what was added";
    document_.setDataChanged(); // a download from an empty logger
    ScriptedPrompter silent;
    EXPECT_TRUE(files(silent).newFile());
}

TEST_F(DocumentFilesTest, AnOpenedDocumentIsSavedSilently) {
    const fs::path path = savedFile("a.car");
    ScriptedPrompter silent;
    DocumentFiles flows = files(silent);
    ASSERT_TRUE(flows.open(path));
    EXPECT_EQ(fs::current_path(), fs::canonical(folder_.path()));
    EXPECT_EQ(recent_.list(), std::vector{path});
    addLater();
    ASSERT_TRUE(flows.close());
    EXPECT_EQ(lastFile(), utf8(path));

    TQuobrixDocument again;
    ASSERT_TRUE(again.open(path, TDocument::Access::Read));
    EXPECT_EQ(again.trips().rowCount(), 2u);
}

TEST_F(DocumentFilesTest, ASavedNewDocumentAsksOnce) {
    addTrip();
    chooser_.next = folder_ / "a.car";
    ScriptedPrompter prompter{{MessageId::SaveChanges, Answer::Yes}};
    DocumentFiles flows = files(prompter);
    ASSERT_TRUE(flows.save());
    EXPECT_TRUE(flows.untitled());
    EXPECT_TRUE(flows.close());
    test::addTrip(document_, 1'700'009'000);
    EXPECT_TRUE(flows.close());
    EXPECT_FALSE(document_.modified());
}

TEST_F(DocumentFilesTest, TheExampleIsNeverWritten) {
    const fs::path path = savedFile("eXample.CAR");
    const std::string before = bytes(path);
    ScriptedPrompter silent;
    DocumentFiles flows = files(silent);
    ASSERT_TRUE(flows.openExample(path));
    EXPECT_EQ(lastFile(), "");
    EXPECT_EQ(recent_.list(), std::vector{path});
    addTrip();
    EXPECT_FALSE(flows.save());
    EXPECT_EQ(chooser_.lastSuggested, fs::path("Quobrix Data.car")) << "a name that is not refused, in no folder yet";
    EXPECT_TRUE(flows.close());
    EXPECT_EQ(bytes(path), before);
}

TEST_F(DocumentFilesTest, AFileThatCannotBeOpenedLeavesTheDocument) {
    const fs::path path = savedFile("a.car");
    std::ofstream(folder_ / "text.car") << "not a document";
    ScriptedPrompter prompter{{MessageId::FileNotADocument},
                              {MessageId::FileNotFound},
                              {MessageId::FileIsDirectory},
                              {MessageId::FileIsDirectory},
                              {MessageId::FileUnnamed}};
    DocumentFiles flows = files(prompter);
    ASSERT_TRUE(flows.open(path));
    EXPECT_FALSE(flows.open(folder_ / "text.car"));
    EXPECT_FALSE(flows.open(folder_ / "missing.car"));
    EXPECT_FALSE(flows.open(folder_.path()));
    EXPECT_FALSE(flows.open(folder_ / ""));
    EXPECT_TRUE(prompter.shown.back().starts_with(utf8(folder_ / "") + " cannot be opened")) << prompter.shown.back();
    EXPECT_FALSE(flows.open(""));
    EXPECT_EQ(document_.trips().rowCount(), 1u);
    EXPECT_EQ(document_.path(), path);
    EXPECT_EQ(recent_.list(), std::vector{path});
}

TEST_F(DocumentFilesTest, ADamagedFileIsToldOfOnce) {
    const fs::path path = savedFile("a.car");
    test::tamper(path, [](CompoundFile& file) { file.remove("Version"); });
    ScriptedPrompter prompter{{MessageId::DamagedReadOnly}};
    DocumentFiles flows = files(prompter);
    ASSERT_TRUE(flows.open(path));
    EXPECT_NE(prompter.shown.at(0).find("\n\nthe stream \"Version\" is missing\n\n"), std::string::npos)
        << prompter.shown.at(0);
    chooser_.next = folder_ / "b.car";
    EXPECT_TRUE(flows.save()); // nothing was changed, so nothing is asked
    EXPECT_EQ(document_.path(), folder_ / "b.car");
    EXPECT_FALSE(document_.readOnly());
    EXPECT_EQ(events_.at(0), "Damage was met in " + utf8(path) + ": the stream \"Version\" is missing");
    EXPECT_EQ(events_.at(1), utf8(folder_ / "b.car") + " was saved.");

    const ObjectId trips = document_.trips().id();
    document_.newDocument();
    test::tamper(folder_ / "b.car", [&](CompoundFile& file) { file.write(std::to_string(trips), {}); });
    ScriptedPrompter again{{MessageId::DamagedReadOnly}};
    ASSERT_TRUE(files(again).open(folder_ / "b.car"));
    EXPECT_NE(again.shown.at(0).find("\n\nTrip Log"), std::string::npos) << again.shown.at(0);
    EXPECT_EQ(again.shown.at(0).find("cannot be read\nTrip Log"), std::string::npos);

    // Everything that the index names is there, but not everything that is there is named.
    document_.newDocument();
    const fs::path doubtful = savedFile("c.car");
    test::tamper(doubtful, [](CompoundFile& file) { file.write("66666", {1}); });
    ScriptedPrompter doubt{{MessageId::DamagedDocument}};
    DocumentFiles doubting = files(doubt);
    ASSERT_TRUE(doubting.open(doubtful));
    EXPECT_NE(doubt.shown.at(0).find("There may be more than is shown: the index does not know the stream \"66666\""),
              std::string::npos)
        << doubt.shown.at(0);
    doubting.tellDamage(); // no news
}

TEST_F(DocumentFilesTest, OpeningTheOpenFileByALink) {
    const fs::path path = savedFile("a.car");
    fs::create_symlink(path, folder_ / "link.car");
    ScriptedPrompter silent;
    DocumentFiles flows = files(silent);
    ASSERT_TRUE(flows.open(path));
    log_.clear();
    EXPECT_TRUE(flows.open(folder_ / "link.car"));
    EXPECT_EQ(log_, "");
}

TEST_F(DocumentFilesTest, ChoicesForAChangedFile) {
    const fs::path path = savedFile("a.car");
    fs::rename(path, folder_ / "theirs.car");
    struct Case {
        std::string choice; ///< none: cancelled
        bool closed;
        std::size_t trips; ///< in a.car then; they have one, the document two
        std::vector<std::string> files;
    };
    for (const Case& c : {Case{"", false, 1, {"a.car", "theirs.car"}},
                          Case{"Save &As...", true, 1, {"a (2).car", "a.car", "theirs.car"}},
                          Case{"&Reload", true, 1, {"a.car", "theirs.car"}},
                          Case{"&Overwrite", true, 2, {"a.car", "a.car.bak", "theirs.car"}}}) {
        SCOPED_TRACE(c.choice);
        fs::copy_file(folder_ / "theirs.car", path, fs::copy_options::overwrite_existing);
        ScriptedPrompter prompter = c.choice.empty() ? ScriptedPrompter({{MessageId::FileChangedOnDisk, std::nullopt}})
                                                     : ScriptedPrompter({{MessageId::FileChangedOnDisk}}, {c.choice});
        DocumentFiles flows = files(prompter);
        ASSERT_TRUE(flows.open(path));
        addLater();
        fs::remove(path);
        fs::copy_file(folder_ / "theirs.car", path);
        chooser_.next = folder_ / "a (2).car";
        chooser_.lastSuggested.reset();
        log_.clear();
        EXPECT_EQ(flows.close(), c.closed);
        EXPECT_EQ(chooser_.lastSuggested.has_value(), c.choice == "Save &As...");
        EXPECT_EQ(chooser_.lastSuggested.value_or(folder_ / "a (2).car"), folder_ / "a (2).car");
        EXPECT_EQ(log_, c.choice == "&Reload" ? "replacing replaced " : "");
        TQuobrixDocument there;
        ASSERT_TRUE(there.open(path, TDocument::Access::Read));
        EXPECT_EQ(there.trips().rowCount(), c.trips);
        EXPECT_EQ(folder_.names(), c.files);
        document_.newDocument();
        fs::remove(folder_ / "a (2).car");
    }
}

TEST_F(DocumentFilesTest, ACutFileIsNotOverwritten) {
    constexpr int kTrips = 200; // more than what is read ahead
    addTrips(kTrips);
    const fs::path path = folder_ / "a.car", backup = folder_ / "a.car.bak";
    ASSERT_TRUE(document_.saveAs(path));
    document_.newDocument();
    const std::string sound = bytes(path), stump = sound.substr(0, 5 << 10);
    fs::copy_file(path, backup);
    for (const bool loaded : {false, true}) {
        SCOPED_TRACE(loaded);
        std::ofstream(path, std::ios::binary) << sound;
        ScriptedPrompter prompter = loaded ? ScriptedPrompter({{MessageId::FileChangedOnDisk}}, {"&Overwrite"})
                                           : ScriptedPrompter({{MessageId::DamagedDocument},
                                                               {MessageId::FileDestroyedOnDisk, std::nullopt},
                                                               {MessageId::FileDestroyedOnDisk},
                                                               {MessageId::DamagedDocument}}, // what else is not there
                                                              {"Save &As..."});
        DocumentFiles flows = files(prompter);
        ASSERT_TRUE(flows.open(path));
        addTrip();
        if (loaded) {
            ASSERT_TRUE(*document_.loadRest());
        }
        std::ofstream(path, std::ios::binary) << stump;
        chooser_.next = folder_ / "b.car";
        if (!loaded) { // it is met before, and asked about until it is decided
            for (RowIndex trip = 0; trip < kTrips; ++trip)
                if (auto* samples = document_.trips().column<TTripLogSampleTableColumn>().object(trip))
                    samples->speed().storedRows();
            EXPECT_FALSE(document_.store().damage().empty());
            flows.tellDamage();
            EXPECT_FALSE(flows.save());
        }
        ASSERT_TRUE(flows.save());
        EXPECT_TRUE(bytes(backup) == sound) << "the only good one";
        if (!loaded) {
            EXPECT_TRUE(bytes(path) == stump);
            EXPECT_EQ(document_.path(), folder_ / "b.car");
        } else {
            EXPECT_NE(prompter.shown.at(0).find("kept as a.car.2.bak"), std::string::npos) << prompter.shown.at(0);
            EXPECT_TRUE(bytes(folder_ / "a.car.2.bak") == stump);
            document_.newDocument();
            TQuobrixDocument saved;
            ASSERT_TRUE(saved.open(path, TDocument::Access::Read));
            EXPECT_EQ(saved.trips().rowCount(), kTrips + 1u);
            EXPECT_TRUE(*saved.loadRest() && saved.store().damage().empty());
        }
        document_.newDocument();
    }
}

TEST_F(DocumentFilesTest, FoldersWithoutLocks) {
    test::FaultFolder folder(1);
    folder.locks = false;
    TQuobrixDocument running(folder), document(folder);
    const fs::path path = "/Doc.car";
    ASSERT_TRUE(running.saveAs(path));
    ScriptedPrompter prompter({{MessageId::FileLocked}, {MessageId::FileLocked}, {MessageId::FolderWithoutLocks}},
                              {"Open &Read-Only", "&Take Over"});
    DocumentFiles flows(document, settings_, recent_, prompter, chooser_, atOnce, {[] {}, [] {}, [](bool) {}});
    ASSERT_TRUE(flows.open(path));
    EXPECT_TRUE(document.readOnly());
    ASSERT_TRUE(flows.newFile());
    ASSERT_TRUE(flows.open(path));
    EXPECT_FALSE(document.readOnly());
    ASSERT_TRUE(flows.newFile());
    running.newDocument();
    ASSERT_TRUE(flows.open(path)); // and nothing more is said
    EXPECT_TRUE(prompter.shown.at(0).starts_with("Doc.car is in use: ")) << prompter.shown.at(0);
    EXPECT_NE(prompter.shown.at(2).find("the file Doc.car.lock beside it"), std::string::npos) << prompter.shown.at(2);
}

TEST_F(DocumentFilesTest, WhatAppearsUnderAChosenNameIsAskedAbout) {
    const fs::path path = savedFile("a.car");
    ScriptedPrompter prompter{{MessageId::ReplaceFile, Answer::No}, {MessageId::ReplaceFile, Answer::Yes}};
    DocumentFiles flows = files(prompter);
    addTrip();
    chooser_.next = path;
    EXPECT_FALSE(flows.save());
    EXPECT_FALSE(fs::exists(folder_ / "a.car.bak"));
    EXPECT_TRUE(flows.save());
    EXPECT_EQ(prompter.shown.at(0), "a.car already exists.\n\nReplace it? What it holds now is kept as a.car.bak.");
    EXPECT_TRUE(fs::exists(folder_ / "a.car.bak"));
    ScriptedPrompter silent; // the file dialog has asked
    fs::remove(folder_ / "b.car");
    fs::copy_file(path, folder_ / "b.car");
    chooser_.next = folder_ / "b.car";
    chooser_.ifThere = IfThere::Replace;
    EXPECT_TRUE(files(silent).saveAs());
    EXPECT_TRUE(fs::exists(folder_ / "b.car.bak"));
}

TEST_F(DocumentFilesTest, OffersReloadOfAChangedFile) {
    const fs::path path = savedFile("a.car");
    TQuobrixDocument running;
    ASSERT_TRUE(running.open(path, TDocument::Access::Edit));
    ScriptedPrompter prompter{
        {MessageId::FileOutdated, Answer::No}, {MessageId::FileOutdated, Answer::No}, {MessageId::FileOutdated}};
    DocumentFiles flows = files(prompter);
    ASSERT_TRUE(flows.open(path));
    const auto change = [&] {
        test::addTrip(running, 1'700'009'000);
        ASSERT_TRUE(running.save());
        for (const ObjectId id : document_.store().objectIds()) // what is not loaded yet, and has not been read ahead
            document_.store().find(id);
        ASSERT_TRUE(document_.outdated());
    };
    EXPECT_FALSE(flows.offerReload()) << "nothing has changed";
    change();
    flows.tellDamage(); // there is none
    EXPECT_FALSE(flows.offerReload());
    chooser_.next = folder_ / "b.car";
    EXPECT_FALSE(flows.saveAs()) << "what is here is not whole, and nothing of it is only here";
    EXPECT_FALSE(fs::exists(folder_ / "b.car"));
    EXPECT_TRUE(flows.offerReload());
    EXPECT_EQ(document_.trips().rowCount(), 2u);
    change();
    EXPECT_TRUE(flows.open(path)) << "the same one anew";
    EXPECT_EQ(document_.trips().rowCount(), 3u);
}

TEST_F(DocumentFilesTest, SavesOnceTheOtherCopyIsGone) {
    const fs::path path = savedFile("a.car");
    TQuobrixDocument running;
    ASSERT_TRUE(running.open(path, TDocument::Access::Edit));
    ScriptedPrompter prompter{{MessageId::ReadOnlyDocument, std::nullopt}, {MessageId::ReadOnlyDocument, std::nullopt}};
    DocumentFiles flows = files(prompter);
    ASSERT_TRUE(flows.open(path));
    addLater();
    EXPECT_FALSE(flows.save());
    EXPECT_FALSE(flows.close());
    running.newDocument();
    EXPECT_TRUE(flows.save());
    EXPECT_FALSE(document_.readOnly());
    EXPECT_FALSE(document_.modified());
}

TEST_F(DocumentFilesTest, AFileThatIsGoneIsSavedAgainOrElsewhere) {
    for (const char* const choice : {"&Save Again", "Save &As..."}) {
        document_.newDocument();
        fs::remove_all(folder_ / "sub");
        fs::create_directory(folder_ / "sub");
        const fs::path path = savedFile("sub/a.car");
        ScriptedPrompter prompter({{MessageId::FileGoneFromDisk}}, {choice});
        DocumentFiles flows = files(prompter);
        ASSERT_TRUE(flows.open(path));
        fs::remove(path);
        chooser_.next = folder_ / "sub" / "b.car";
        EXPECT_TRUE(flows.save()); // though nothing was changed
        EXPECT_EQ(document_.path().filename(), choice == std::string_view("&Save Again") ? "a.car" : "b.car");
        EXPECT_TRUE(fs::exists(document_.path()));
    }
}

TEST_F(DocumentFilesTest, WithoutABackupTheUserDecides) {
    const fs::path path = savedFile("a.car");
    fs::create_directory(folder_ / "a.car.bak");
    const std::string before = bytes(path);
    ScriptedPrompter prompter{{MessageId::NoBackup, Answer::No}, {MessageId::NoBackup, Answer::Yes}};
    DocumentFiles flows = files(prompter);
    ASSERT_TRUE(flows.open(path));
    addTrip();
    EXPECT_FALSE(flows.close());
    EXPECT_EQ(bytes(path), before);
    EXPECT_TRUE(flows.close());
    EXPECT_FALSE(document_.modified());
    EXPECT_TRUE(prompter.shown.front().starts_with("a.car.bak cannot be saved because it is a folder."));
}

TEST_F(DocumentFilesTest, PagesComeBackEvenIfOpeningThrows) {
    const fs::path path = savedFile("a.car");
    ScriptedPrompter silent;
    DocumentFiles flows = files(silent);
    addTrip();
    ASSERT_TRUE(document_.saveAs(folder_ / "b.car"));
    onReplacing_ = [] { throw std::runtime_error("out of memory"); };
    EXPECT_THROW(flows.open(path), std::runtime_error);
    EXPECT_EQ(log_, "replacing replaced ");
    EXPECT_EQ(document_.title(), "b.car");
}

TEST_F(DocumentFilesTest, OffersCompactionOnce) {
    addTrips(100);
    const fs::path path = folder_ / "a.car";
    ASSERT_TRUE(document_.saveAs(path));
    ScriptedPrompter prompter({{MessageId::CompactionOffered, std::nullopt}, {MessageId::CompactionOffered}},
                              {"&Compact Now"});
    {
        DocumentFiles flows = files(prompter);
        ASSERT_TRUE(flows.open(path));
        document_.trips().removeRows(0, 90);
        ASSERT_TRUE(flows.save()); // declined
        document_.trips().removeRows(0, 1);
        ASSERT_TRUE(flows.save());
        document_.newDocument();
    }
    const std::uintmax_t before = fs::file_size(path);
    DocumentFiles nextRun = files(prompter);
    ASSERT_TRUE(nextRun.open(path));
    EXPECT_LT(fs::file_size(path), before / 2);
    EXPECT_EQ(document_.trips().rowCount(), 9u);
}

TEST_F(DocumentFilesTest, CompactionIsNotOfferedAgain) {
    addTrips(100);
    ScriptedPrompter prompter({{MessageId::CompactionOffered}}, {"&Don't Ask Again"});
    for (const char* const name : {"a.car", "b.car"}) {
        ASSERT_TRUE(document_.saveAs(folder_ / name));
        DocumentFiles flows = files(prompter);
        document_.trips().removeRows(0, document_.trips().rowCount() - 1);
        ASSERT_TRUE(flows.save());
        addTrips(100);
    }
}

TEST_F(DocumentFilesTest, RecentFilesAreNine) {
    for (int i = 0; i < 11; ++i)
        recent_.add(folder_ / std::to_string(i));
    recent_.add(folder_ / "5");
    recent_.remove(folder_ / "9");
    const auto list = recent_.list();
    ASSERT_EQ(list.size(), 8u);
    EXPECT_EQ(list[0], folder_ / "5");
    EXPECT_EQ(list[1], folder_ / "10");
    EXPECT_EQ(list[7], folder_ / "2");
}

} // namespace
} // namespace quobrix
