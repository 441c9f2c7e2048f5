#include "model/value_check.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"
#include "tables/tabbed_text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace quobrix::test {
namespace {

using Streams = std::map<ObjectId, Bytes>;

Streams streamsOf(TQuobrixDocument& document) {
    Streams streams;
    for (const PersistentObject* object : document.store().loadedObjects()) {
        ByteWriter out;
        object->write(out);
        streams[object->id()] = out.take();
    }
    return streams;
}

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

/// Edits of all kinds, at random, in all tables that have anything to edit. Many are refused.
class RandomEdits {
public:
    RandomEdits(TQuobrixDocument& document, const TextContext& context, std::uint32_t seed)
        : document_(document), context_(context), random_(seed) {
        for (PersistentObject* object : document.store().loadedObjects())
            if (const auto* table = dynamic_cast<const Table*>(object))
                for (std::size_t i = 0; i < table->columnCount(); ++i)
                    if (table->column(i).editable() && !(tables_.size() && tables_.back() == table))
                        tables_.push_back(table);
    }

    void one() {
        TableEdits& edits = document_.edits();
        const Table& table = *tables_[below(tables_.size())];
        const ObjectId id = table.id();
        const RowIndex row = below(table.rowCount() + 2);
        const std::size_t column = editableColumn(table);
        switch (below(8)) {
        case 0:
            edits.insertRows(id, row, 1 + below(3));
            break;
        case 1:
            edits.removeRows(id, {row, below(table.rowCount() + 1)});
            break;
        case 2:
            edits.fill(id, {{column}}, std::vector<RowIndex>{row, row / 2}, text(), context_, "fill");
            break;
        case 3: {
            TabbedText block(2);
            for (std::size_t i = 2 * (1 + below(3)); i > 0; --i)
                block.add(text());
            edits.paste(id, std::vector<std::size_t>{column, (column + 1) % table.columnCount()},
                        std::vector<RowIndex>{row}, block, context_);
            break;
        }
        case 4:
            edits.group("a group", [&] {
                edits.insertRows(id, row);
                edits.type(id, column, row, text(), context_);
                return edits.type(id, column, row / 2, text(), context_);
            });
            break;
        case 5:
            below(2) ? edits.undo() : edits.redo();
            break;
        default:
            edits.type(id, column, row, text(), context_);
        }
    }
    std::size_t tables() const { return tables_.size(); }

private:
    std::size_t below(std::size_t limit) { return random_() % limit; }
    std::string text() {
        static const char* const texts[] = {
            "",    "7",    "12", "x", "K-0077-C", "Joe", "1GTEK19T23E999999", "50", "Zoë ", "30 kph", "Battery Voltage",
            "1e3", "a\nb", "-1"};
        return below(3) ? texts[below(std::size(texts))] : std::to_string(random_() % 1000);
    }
    std::size_t editableColumn(const Table& table) {
        std::size_t column = 0;
        do
            column = below(table.columnCount());
        while (!table.column(column).editable());
        return column;
    }

    TQuobrixDocument& document_;
    TextContext context_;
    std::mt19937 random_;
    std::vector<const Table*> tables_;
};

TEST_F(DocumentEdits, UndoingAllGivesTheOriginalBytesAndRedoingAllTheEditedOnes) {
    const Streams before = streamsOf(document_);
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        RandomEdits random(document_, context_, seed);
        ASSERT_EQ(random.tables(), 8u);
        for (int i = 0; i < 200; ++i)
            random.one();
        while (edits().canRedo())
            edits().redo();
        ASSERT_TRUE(edits().canUndo());
        const Streams after = streamsOf(document_);
        ASSERT_NE(before, after);
        while (edits().canUndo())
            edits().undo();
        ASSERT_EQ(before, streamsOf(document_)) << seed;
        while (edits().canRedo())
            edits().redo();
        ASSERT_EQ(after, streamsOf(document_)) << seed;
        while (edits().canUndo())
            edits().undo();
        edits().clear();
    }
}

TEST_F(DocumentEdits, EditsChangeTheDocumentAndItsNames) {
    EXPECT_FALSE(document_.dataChanged());
    EXPECT_FALSE(type(document_.vehicles(), "TVehicleNamesVinColumn", 0, "").ok());
    EXPECT_FALSE(document_.dataChanged()) << "a refused edit is none";
    EXPECT_TRUE(type(document_.vehicles(), "TVehicleNamesNameColumn", 0, "Blue van").ok());
    EXPECT_TRUE(document_.dataChanged());
    EXPECT_EQ(document_.trips().column<TTripLogVinColumn>().text(3, context_), "Blue van");
    edits().undo();
    EXPECT_EQ(document_.trips().column<TTripLogVinColumn>().text(3, context_), "Unknown #1");
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

TEST_F(DocumentEdits, RecordsTakeCommentsOnly) {
    const TTripLogTable& trips = document_.trips();
    for (std::size_t i = 0; i < trips.columnCount(); ++i)
        EXPECT_EQ(trips.column(i).editable(), trips.column(i).spec().key == "TTripLogCommentsColumn")
            << trips.column(i).spec().key;
    EXPECT_FALSE(edits().insertRows(trips.id(), 0).ok());
    EXPECT_FALSE(edits().removeRows(trips.id(), {0}).ok());
    EXPECT_TRUE(type(trips, "TTripLogCommentsColumn", 0, "Rain").ok());
}

TEST_F(DocumentEdits, NamesAreRefusedInTheirOwnWords) {
    EXPECT_EQ(type(document_.drivers(), "DriverNamesNameColumn", 0, std::string(21, 'x')).refusal,
              "Not a valid driver name. Length should be 1-20 characters long.");
    EXPECT_TRUE(type(document_.drivers(), "DriverNamesNameColumn", 0, std::string(20, 'x')).ok());
    EXPECT_EQ(type(document_.loggers(), "TQuobrixNamesSerialNumberColumn", 0, "12345678").refusal,
              "Invalid serial number format. The serial number must be in the format \"AA-99-A\".");
    EXPECT_EQ(type(document_.loggers(), "TQuobrixNamesSerialNumberColumn", 0, "k-0043-b").refusal,
              "Invalid serial number format. The serial number must be in the format \"AA-99-A\".");
    EXPECT_EQ(type(document_.drivers(), "DriverNamesIDColumn", 0, "2").refusal,
              "This value must be unique (case sensitive).");
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
    EXPECT_EQ(found, (std::vector<std::string>{
                         "Vehicle ID/TVehicleNamesVinColumn/1!", "Quobrix ID/TQuobrixNamesNameColumn/0",
                         "Quobrix ID/TQuobrixNamesNameColumn/1", "Quobrix ID/TQuobrixNamesNameColumn/2",
                         "Driver ID/DriverNamesNameColumn/0", "Driver ID/DriverNamesNameColumn/1",
                         "Driver ID/DriverNamesNameColumn/2", "Speed Bands/TCurrentSpeedBandFromColumn/0!"}));
}

} // namespace
} // namespace quobrix::test
