#include "app/document_files.h"

#include "app/recent_files.h"
#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "support/sample_trip.h"
#include "support/scripted_prompter.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace quobrix {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedPrompter;

class ScriptedChooser final : public FileChooser {
public:
    std::optional<fs::path> chooseToOpen() override { return next; }
    std::optional<fs::path> chooseToSave(const fs::path& suggested) override {
        lastSuggested = suggested;
        return next;
    }
    std::optional<fs::path> next, lastSuggested;
};

class DocumentFilesTest : public ::testing::Test {
protected:
    DocumentFilesTest() : startFolder_(fs::current_path()) {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    ~DocumentFilesTest() override {
        fs::current_path(startFolder_);
        fs::remove_all(folder_);
    }

    DocumentFiles files(Prompter& prompter) {
        return {document_,
                settings_,
                recent_,
                prompter,
                chooser_,
                [](const std::function<Result<void>()>& work) { return work(); },
                {[this] { log_ += "replacing "; }, [this] { log_ += "replaced "; }, [] {}}};
    }
    void addTrip() {
        test::addTrip(document_, 1'700'000'000);
        document_.setDataChanged();
    }
    /// A file with one trip; the document is new and empty afterwards.
    fs::path savedFile(const char* name) {
        addTrip();
        EXPECT_TRUE(document_.saveAs(folder_ / name));
        document_.newDocument();
        return folder_ / name;
    }
    static std::string bytes(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::string lastFile() const { return settings_.getText("Program Config", "Last File Opened"); }

    fs::path startFolder_;
    fs::path folder_ = fs::weakly_canonical(::testing::TempDir()) /
                       (std::string("quobrix-") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
    Settings settings_{std::make_unique<MemorySettings>()};
    RecentFiles recent_{settings_};
    TQuobrixDocument document_;
    ScriptedChooser chooser_;
    std::string log_;
};

TEST_F(DocumentFilesTest, ANewDocumentAsksOnlyIfDataWasAdded) {
    ScriptedPrompter silent;
    EXPECT_TRUE(files(silent).close());
    EXPECT_EQ(lastFile(), "");

    addTrip();
    ScriptedPrompter cancelled{{MessageId::SaveChanges, std::nullopt}};
    EXPECT_FALSE(files(cancelled).newFile());
    EXPECT_EQ(document_.trips().rowCount(), 1u);

    ScriptedPrompter declined{{MessageId::SaveChanges, Answer::No}};
    EXPECT_TRUE(files(declined).newFile());
    EXPECT_EQ(document_.trips().rowCount(), 0u);
    EXPECT_EQ(log_, "replacing replaced ");
}

TEST_F(DocumentFilesTest, SavingAtTheQuestionThatIsThenCancelledKeepsTheDocument) {
    addTrip();
    ScriptedPrompter prompter{{MessageId::SaveChanges, Answer::Yes}};
    EXPECT_FALSE(files(prompter).close());
    EXPECT_EQ(chooser_.lastSuggested, fs::path("Quobrix Data.car"));
}

TEST_F(DocumentFilesTest, AnOpenedDocumentIsSavedSilentlyAndRemembered) {
    const fs::path path = savedFile("a.car");
    ScriptedPrompter silent;
    DocumentFiles flows = files(silent);
    ASSERT_TRUE(flows.open(path));
    EXPECT_EQ(fs::current_path(), folder_);
    EXPECT_EQ(recent_.list(), std::vector{path});
    test::addTrip(document_, 1'700'009'000);
    document_.setDataChanged();
    ASSERT_TRUE(flows.close());
    EXPECT_EQ(lastFile(), utf8(path));

    TQuobrixDocument again;
    ASSERT_TRUE(again.open(path, TDocument::Access::Read));
    EXPECT_EQ(again.trips().rowCount(), 2u);
}

TEST_F(DocumentFilesTest, ANewDocumentThatWasSavedAsksOnlyForWhatCameAfter) {
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

TEST_F(DocumentFilesTest, TheExampleIsNeverWrittenAndNeverAsksAndSaveLeadsElsewhere) {
    const fs::path path = savedFile("eXample.CAR");
    const std::string before = bytes(path);
    ScriptedPrompter silent;
    DocumentFiles flows = files(silent);
    ASSERT_TRUE(flows.openExample(path));
    EXPECT_EQ(lastFile(), "");
    EXPECT_EQ(recent_.list(), std::vector{path});
    addTrip();
    EXPECT_FALSE(flows.save());
    EXPECT_EQ(chooser_.lastSuggested, path);
    EXPECT_TRUE(flows.close());
    EXPECT_EQ(bytes(path), before);
}

TEST_F(DocumentFilesTest, AFileThatCannotBeOpenedLeavesTheDocument) {
    const fs::path path = savedFile("a.car");
    std::ofstream(folder_ / "text.car") << "not a document";
    ScriptedPrompter prompter{{MessageId::FileNotADocument}, {MessageId::FileNotFound}, {MessageId::FileIsDirectory}};
    DocumentFiles flows = files(prompter);
    ASSERT_TRUE(flows.open(path));
    EXPECT_FALSE(flows.open(folder_ / "text.car"));
    EXPECT_FALSE(flows.open(folder_ / "missing.car"));
    EXPECT_FALSE(flows.open(folder_));
    EXPECT_EQ(document_.trips().rowCount(), 1u);
    EXPECT_EQ(document_.path(), path);
    EXPECT_EQ(recent_.list(), std::vector{path});
}

TEST_F(DocumentFilesTest, OpeningTheOpenFileUnderAnotherNameChangesNothing) {
    const fs::path path = savedFile("a.car");
    fs::create_symlink(path, folder_ / "link.car");
    ScriptedPrompter silent;
    DocumentFiles flows = files(silent);
    ASSERT_TRUE(flows.open(path));
    log_.clear();
    EXPECT_TRUE(flows.open(folder_ / "link.car"));
    EXPECT_EQ(log_, "");
}

TEST_F(DocumentFilesTest, AFileThatWasReplacedMeanwhileIsNotLostSilently) {
    const fs::path path = savedFile("a.car");
    ScriptedPrompter prompter{{MessageId::FileChanged}, {MessageId::ReadOnlyDocument, Answer::Yes}};
    DocumentFiles flows = files(prompter);
    ASSERT_TRUE(flows.open(path));
    addTrip();
    fs::remove(path);
    std::ofstream(path) << "another program's";
    chooser_.next = folder_ / "rescued.car";
    EXPECT_TRUE(flows.close());
    EXPECT_EQ(bytes(path), "another program's");
    EXPECT_TRUE(fs::exists(folder_ / "rescued.car"));
}

TEST_F(DocumentFilesTest, RecentFilesAreNineTheNewestInFrontAndEachOnce) {
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
