#include "model/value_check.h"
#include "repair/document_check.h"
#include "support/document_streams.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"
#include "tables/tabbed_text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

namespace quobrix::test {
namespace {

class DocumentEdits : public ::testing::Test {
protected:
    DocumentEdits() {
        for (int i = 0; i < 20; ++i)
            addTrip(document_, 1'000'000'000 + 1000 * i);
        const std::vector<std::string> loggers{"K-0042-B", "K-0043-B", "K-0044-B"}, drivers{"1", "2", "3"};
        document_.loggers().addMissing(loggers);
        document_.drivers().addMissing(drivers);
        document_.store().singleton<TCurrentSpeedBandsTable>().insertRows(0, 4);
        document_.store().singleton<TCurrentParametersTable>().insertRows(0, 5);
    }
    TableEdits& edits() { return document_.edits(); }
    EditOutcome type(const Table& table, std::string_view key, RowIndex row, std::string_view text) {
        return edits().type(table.id(), table.indexOf(key), row, text, context_);
    }

    TQuobrixDocument document_;
    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
};

TEST_F(DocumentEdits, TheExampleRefusesEveryEditAndSaysWhy) {
    ASSERT_TRUE(type(document_.trips(), "TTripLogCommentsColumn", 0, "mine").ok());
    const TemporaryFolder folder;
    ASSERT_TRUE(document_.saveAs(folder / "Example.car"));
    const std::string why = "The example file cannot be edited. Start a new file, or open one of your own.";
    EXPECT_EQ(type(document_.trips(), "TTripLogCommentsColumn", 0, "other").refusal, why);
    EXPECT_EQ(edits().insertRows(document_.vehicles().id(), 0).refusal, why);
    EXPECT_EQ(edits().removeRows(document_.vehicles().id(), {0}).refusal, why);
    EXPECT_EQ(document_.trips().column<TTripLogCommentsColumn>().at(0), "mine");
    ASSERT_TRUE(document_.saveAs(folder / "My own.car"));
    EXPECT_TRUE(type(document_.trips(), "TTripLogCommentsColumn", 0, "other").ok());
}

TEST_F(DocumentEdits, WhatIsUndoneNeedsNoSaving) {
    const TemporaryFolder folder;
    ASSERT_TRUE(document_.saveAs(folder / "My own.car"));
    for (const char* comment : {"Rain", "Snow"})
        ASSERT_TRUE(type(document_.trips(), "TTripLogCommentsColumn", 0, comment).ok());
    for (const bool modified : {true, false}) {
        edits().undo();
        document_.forgetUnchanged();
        EXPECT_EQ(document_.modified(), modified);
    }
    edits().redo();
    document_.forgetUnchanged();
    EXPECT_TRUE(document_.modified());
    ASSERT_TRUE(document_.save());
    edits().undo();
    document_.forgetUnchanged();
    EXPECT_TRUE(document_.modified()) << "the file has the edit";
    edits().redo();
    document_.forgetUnchanged();
    EXPECT_FALSE(document_.modified());
    addTrip(document_, 1'500'000'000);
    document_.forgetUnchanged();
    EXPECT_TRUE(document_.modified());
}

/// An older document: one that lacks a column.
class OlderDocument : public DocumentEdits {
protected:
    OlderDocument() {
        DriverNamesTable& drivers = document_.drivers();
        const ObjectId lacked = drivers.column<DriverNamesNameColumn>().id();
        const std::string table = std::to_string(drivers.id());
        EXPECT_TRUE(document_.saveAs(path_));
        document_.newDocument();
        tamper(path_, [&](CompoundFile& file) {
            Bytes content = *file.read(table); // u32 class, u8 layout, u32 rows, u32 columns, pairs of u32
            content[9] = 2;
            content.erase(content.begin() + 13 + 8, content.begin() + 13 + 16);
            file.write(table, content);
            file.remove(std::to_string(lacked));
            const Bytes ids = *file.read("Object Ids");
            ByteReader all(ids);
            ByteWriter left;
            left.u32(all.u32() - 1);
            while (all.remaining() > 0)
                if (const std::uint32_t each = all.u32(); each != lacked)
                    left.u32(each);
            file.write("Object Ids", left.take());
            file.write("Available Ids", u32s({1, lacked}));
        });
        before_ = streamsOf(path_);
        EXPECT_TRUE(document_.open(path_, TDocument::Access::Edit));
    }
    Table& drivers() { return document_.drivers(); }
    EditOutcome name(RowIndex row, std::string_view text) {
        return type(drivers(), "DriverNamesNameColumn", row, text);
    }

    TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_ / "Older.car";
    Streams before_;
};

TEST_F(OlderDocument, GetsAColumnWithItsFirstCell) {
    const Column& names = drivers().column<DriverNamesNameColumn>();
    const std::vector<std::function<void()>> edits = {
        [&] { ASSERT_TRUE(name(1, "Ann").ok()); },
        [&] { ASSERT_TRUE(DocumentEdits::edits().insertRows(drivers().id(), 1, 2).ok()); },
        [&] {
            ASSERT_TRUE(DocumentEdits::edits().removeRows(drivers().id(), {0, 2}).ok());
        },
        [&] {
            ASSERT_TRUE(DocumentEdits::edits()
                            .group("a group",
                                   [&] {
                                       DocumentEdits::edits().insertRows(drivers().id(), 0);
                                       name(0, "Joe");
                                       return name(2, "Ann");
                                   })
                            .ok());
            EXPECT_FALSE(DocumentEdits::edits()
                             .group("a group that is taken back",
                                    [&] {
                                        name(0, "Jim");
                                        return EditOutcome{.refusal = ShownText::asItIs("no")};
                                    })
                             .ok());
        },
    };
    for (std::size_t i = 0; i < edits.size(); ++i)
        for (const bool saved : {false, true}) {
            SCOPED_TRACE(std::to_string(i) + (saved ? ", saved" : ""));
            edits[i]();
            for (int turn = 0; turn < 2; ++turn) {
                if (saved) {
                    ASSERT_TRUE(document_.save());
                }
                DocumentEdits::edits().undo();
                ASSERT_FALSE(DocumentEdits::edits().canUndo());
                document_.forgetUnchanged();
                EXPECT_EQ(document_.modified(), saved);
                ASSERT_TRUE(document_.save());
                EXPECT_TRUE(streamsOf(path_) == before_);
                DocumentEdits::edits().redo();
            }
            while (DocumentEdits::edits().canUndo())
                DocumentEdits::edits().undo();
            DocumentEdits::edits().clear();
            ASSERT_TRUE(document_.save());
        }
    EXPECT_EQ(&names, &drivers().column<DriverNamesNameColumn>()) << "which spreadsheets show";

    ASSERT_TRUE(name(2, "Ann").ok());
    EXPECT_EQ(names.value(2), Value(std::string("Ann")));
    ASSERT_TRUE(document_.save());
    document_.newDocument();
    ASSERT_TRUE(document_.open(path_, TDocument::Access::Edit));
    EXPECT_EQ(document_.drivers().name(2), "Ann");
    EXPECT_TRUE(checkDocument(document_).sound());
}

TEST_F(DocumentEdits, NothingMovesBesideAnUnreadableColumn) {
    const TemporaryFolder folder;
    const ObjectId drivers = document_.drivers().id();
    const std::string damaged = std::to_string(document_.drivers().column<DriverNamesNameColumn>().id());
    ASSERT_TRUE(document_.saveAs(folder / "Test.car"));
    document_.newDocument();
    tamper(folder / "Test.car", [&](CompoundFile& file) { file.write(damaged, {1, 2, 3}); });
    const Streams before = streamsOf(folder / "Test.car");
    ASSERT_TRUE(document_.open(folder / "Test.car", TDocument::Access::Edit));

    const std::string why = "could not be read from the file";
    const std::size_t ids = 0, names = 1;
    const TabbedText block = *TabbedText::parse("8\tAnn\n9\tJoe\n");
    const std::vector<std::size_t> both{ids, names};
    const std::vector<RowIndex> last{2};
    for (const EditOutcome& outcome :
         {type(document_.drivers(), "DriverNamesNameColumn", 0, "Ann"), edits().insertRows(drivers, 0),
          edits().removeRows(drivers, {0}), edits().paste(drivers, both, last, block, context_),
          edits().set(drivers, {{ids, 0, Value(std::int64_t{8})}, {names, 0, Value(std::string("Ann"))}}, context_,
                      "")})
        EXPECT_NE(outcome.refusal.find(why), std::string::npos) << outcome.refusal;
    EXPECT_NE(document_.drivers().column(names).lockedBecause(0).find(why), std::string::npos);
    for (const Finding& finding : checkValues(document_, context_))
        EXPECT_NE(finding.column->key, "DriverNamesNameColumn") << finding.text;
    EXPECT_FALSE(edits().canUndo() || document_.modified());

    EXPECT_TRUE(type(document_.drivers(), "DriverNamesIDColumn", 0, "8").ok());
    ASSERT_TRUE(document_.save());
    Streams after = streamsOf(folder / "Test.car");
    after[std::to_string(document_.drivers().column(ids).id())] =
        before.at(std::to_string(document_.drivers().column(ids).id()));
    EXPECT_TRUE(after == before);
}

TEST_F(DocumentEdits, WhatOfRecordsCanBeEdited) {
    const TTripLogTable& trips = document_.trips();
    for (std::size_t i = 0; i < trips.columnCount(); ++i) {
        const std::string_view key = trips.column(i).spec().key;
        EXPECT_EQ(trips.column(i).editable(), key == "TTripLogCommentsColumn" || key == "TTripLogTripTypeColumn")
            << key;
    }
    EXPECT_FALSE(edits().insertRows(trips.id(), 0).ok());
    EXPECT_TRUE(edits().removeRows(trips.id(), {0}).ok());
    document_.troubles().insertRows(0, 1);
    EXPECT_TRUE(edits().removeRows(document_.troubles().id(), {0}).ok());
    EXPECT_TRUE(type(trips, "TTripLogCommentsColumn", 0, "Rain").ok());
}

TEST_F(DocumentEdits, UnreadableTripsAreNotDeleted) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / "Test.car";
    const auto& trips = document_.trips();
    const std::string parts[] = {
        std::to_string(trips.column<TTripLogSampleTableColumn>().at(1)),
        std::to_string(trips.column<TTripLogSpeedBandsTableColumn>().object(2)->column(0).id()),
        std::to_string(trips.column<TTripLogHardBrakeTimesColumnColumn>().at(3))};
    ASSERT_TRUE(document_.saveAs(path));
    document_.newDocument();
    tamper(path, [&](CompoundFile& file) {
        for (const std::string& part : parts)
            file.write(part, {1, 2, 3});
    });
    const Streams before = streamsOf(path);
    ASSERT_TRUE(document_.open(path, TDocument::Access::Edit));
    for (const std::vector<RowIndex>& rows : {std::vector<RowIndex>{1}, {2}, {3}, {0, 3}})
        EXPECT_NE(edits().removeRows(document_.trips().id(), rows).refusal.find("could not be read"),
                  std::string::npos);
    EXPECT_FALSE(edits().canUndo() || document_.modified());
    ASSERT_TRUE(edits().removeRows(document_.trips().id(), {0, 4}).ok());
    ASSERT_TRUE(document_.save());
    edits().undo();
    ASSERT_TRUE(document_.save());
    EXPECT_TRUE(streamsOf(path) == before);
}

TEST_F(DocumentEdits, HistoryCountsDeletedTrips) {
    TTripLogTable& trips = document_.trips();
    trips.column<TTripLogHardBrakeTimesColumnColumn>().object(0)->setAll(std::vector<std::int32_t>(25'000));
    const std::size_t free = document_.store().freeIds().size(), objects = document_.store().objectCount();
    ASSERT_TRUE(edits().removeRows(trips.id(), {0}).ok());
    const std::size_t gone = objects - document_.store().objectCount();
    EXPECT_GT(edits().historySize(), 100'000u);
    edits().undo();
    EXPECT_LT(edits().historySize(), 10'000u) << "what is back in the document is not counted";
    edits().redo();
    ASSERT_TRUE(type(trips, "TTripLogCommentsColumn", 0, std::string(TableEdits::kMostBytes, 'x')).ok());
    edits().undo();
    EXPECT_FALSE(edits().canUndo()) << "the deleted trip was let go of";
    EXPECT_EQ(document_.store().objectCount(), objects - gone);
    EXPECT_EQ(document_.store().freeIds().size(), free + gone);
    const ObjectId first = document_.store().freeIds().front();
    EXPECT_EQ(document_.store().create<TTripLogTimesColumn>().id(), first) << "it is given out again";
}

TEST_F(DocumentEdits, AnotherDocumentHasAnotherHistory) {
    type(document_.trips(), "TTripLogCommentsColumn", 0, "Rain");
    document_.newDocument();
    EXPECT_FALSE(edits().canUndo());
    EXPECT_FALSE(document_.dataChanged());
    EXPECT_FALSE(edits().insertRows(document_.vehicles().id(), 0).ok() && document_.vehicles().rowCount() != 1);
}

TEST_F(DocumentEdits, ChecksEveryTableOfTheDocument) {
    edits().insertRows(document_.vehicles().id(), 1);
    type(document_.vehicles(), "TVehicleNamesNameColumn", 1, "Van");
    document_.store().singleton<TCurrentSpeedBandsTable>().removeRows(1, 3);
    document_.store().singleton<TCurrentParametersTable>().removeRows(0, 5);
    std::vector<std::string> found;
    for (const Finding& finding : checkValues(document_, context_))
        found.push_back(std::string(finding.title) + "/" + std::string(finding.column->key) + "/" +
                        std::to_string(finding.row) + (finding.severity == Severity::Required ? "!" : ""));
    EXPECT_EQ(found,
              (std::vector<std::string>{"Vehicle ID/TVehicleNamesVinColumn/1!", "Quobrix ID/TQuobrixNamesNameColumn/0",
                                        "Quobrix ID/TQuobrixNamesNameColumn/1", "Quobrix ID/TQuobrixNamesNameColumn/2",
                                        "Driver ID/DriverNamesNameColumn/0", "Driver ID/DriverNamesNameColumn/1",
                                        "Driver ID/DriverNamesNameColumn/2"}));
}

} // namespace
} // namespace quobrix::test
