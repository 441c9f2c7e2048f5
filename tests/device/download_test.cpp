#include "device/download.h"

#include "support/document_streams.h"
#include "support/fake_logger_library.h"
#include "support/record_set_builder.h"
#include "support/scripted_prompter.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <utility>

namespace quobrix::testing {
namespace {

class Downloading : public ::testing::Test {
protected:
    Downloading() {
        fake_.loggers["COM1"] = "K-0042-B";
        fake_.trips = RecordSetBytes().add(plainTrip(), {10, 20, 30}).take();
        fake_.troubles = RecordSetBytes().add(plainTrouble()).take();
        LockedLogger(link_).openPort("COM1");
    }

    std::optional<MergeResult> download(ScriptedPrompter& prompter) {
        return Download({calls_, prompter, settings_, progress_, {}, document_},
                        {.startNewDocument =
                             [this] {
                                 ++begun_;
                                 document_.newDocument();
                                 return true;
                             },
                         .mayStartNewDocument = [this] { return mayBegin_; }})
            .run();
    }

    /// The example, or another document with one trip and OBJECTS objects.
    void open(const std::string& name, std::size_t objects = 0) {
        TQuobrixDocument made;
        made.trips().insertRows(0, 1);
        while (made.store().objectCount() < objects)
            made.store().create<TTripLogTimesColumn>();
        ASSERT_TRUE(made.saveAs(folder_ / name));
        made.newDocument();
        ASSERT_TRUE(document_.open(folder_ / name, TDocument::Access::Edit));
        ASSERT_TRUE(objects == 0 || document_.store().objectCount() == objects);
    }

    const test::TemporaryFolder folder_;
    FakeLoggerLibrary fake_;
    LoggerLink link_{FakeLoggerLibrary::library()};
    DirectCalls calls_{link_};
    Settings settings_{std::make_unique<MemorySettings>()};
    ProgressReporter progress_;
    TQuobrixDocument document_;
    bool mayBegin_ = true;
    int begun_ = 0;
};

TEST_F(Downloading, ANewDocumentOnlyForRecords) {
    const struct {
        const char* name;
        std::size_t objects;
        MessageId said;
    } documents[] = {{"Example.car", 0, MessageId::DownloadIntoExample},
                     {"Large.car", 18'001, MessageId::NewFileRecommended}};
    for (const auto& [name, objects, said] : documents) {
        SCOPED_TRACE(name);
        open(name, objects);
        ScriptedPrompter prompter{{said}, {said}, {MessageId::CannotConnect, Answer::No}, {said}, {said}, {said}};
        mayBegin_ = false;
        EXPECT_FALSE(download(prompter));
        EXPECT_EQ(fake_.count("GetSerialNumberAndTime"), 0) << "the logger is not asked for nothing";
        mayBegin_ = true;
        fake_.results["GetSerialNumberAndTime"] = QUOBRIX_TIMEOUT;
        EXPECT_FALSE(download(prompter));
        fake_.results = {{"GetLogBuffer", QUOBRIX_NOT_REPORTED}};
        EXPECT_FALSE(download(prompter));
        fake_.results.clear();
        const auto trips = std::exchange(fake_.trips, {}), troubles = std::exchange(fake_.troubles, {});
        EXPECT_EQ(download(prompter).value().summary(), "Nothing new.");
        EXPECT_EQ(begun_, 0);
        EXPECT_EQ(document_.trips().rowCount(), 1u);
        EXPECT_FALSE(document_.modified());

        fake_.trips = trips;
        fake_.troubles = troubles;
        EXPECT_EQ(download(prompter).value().summary(), "New: 1 trip, 1 trouble code.");
        EXPECT_EQ(std::exchange(begun_, 0), 1);
        EXPECT_FALSE(document_.hasFile());
        fake_.calls.clear();
    }
}

TEST_F(Downloading, ANewFileIsRecommendedBeyond18000Objects) {
    open("Full.car", 18'000);
    ScriptedPrompter silent;
    EXPECT_EQ(download(silent).value().added(), 2u);
    open("Fuller.car", 18'001);
    ScriptedPrompter asked{{MessageId::NewFileRecommended, Answer::No}};
    EXPECT_EQ(download(asked).value().added(), 2u);
    EXPECT_EQ(begun_, 0);
}

TEST_F(Downloading, WhatIsCancelledIsNotCurrent) {
    /// Cancels what may be cancelled, once it has been done.
    struct Cancelling final : LoggerCalls {
        explicit Cancelling(LoggerLink& l) : link(l) {}
        bool run(const CallTitle& title, const Call& call) override {
            LockedLogger logger(link);
            call(logger);
            return !(title.what == "Downloading" && title.cancellable);
        }
        void post(Call call) override {
            LockedLogger logger(link);
            call(logger);
        }
        LoggerLink& link;
    };
    Cancelling calls(link_);
    ScriptedPrompter silent;
    EXPECT_FALSE(Download({calls, silent, settings_, progress_, {}, document_}, {}).run());
    EXPECT_EQ(document_.trips().rowCount(), 0u);
    EXPECT_FALSE(LockedLogger(link_).status().logsCurrent) << "what was read of them went nowhere";
    EXPECT_TRUE(download(silent));
    EXPECT_TRUE(LockedLogger(link_).status().logsCurrent);
}

TEST_F(Downloading, NothingNewChangesOnlyTheTime) {
    ScriptedPrompter silent;
    const auto trips = std::exchange(fake_.trips, {}), troubles = std::exchange(fake_.troubles, {});
    EXPECT_EQ(download(silent).value().summary(), "Nothing new.");
    EXPECT_FALSE(document_.dataChanged());
    EXPECT_FALSE(document_.store().existingSingleton<TDownloadTable>()) << "there is nothing to keep";

    open("Test.car");
    EXPECT_EQ(download(silent).value().summary(), "Nothing new.");
    EXPECT_FALSE(document_.dataChanged());
    ASSERT_TRUE(document_.store().existingSingleton<TDownloadTable>());
    EXPECT_EQ(document_.store().existingSingleton<TDownloadTable>()->rowCount(), 1u);
}

} // namespace
} // namespace quobrix::testing
