#include "tables/table_edits.h"

#include "settings/settings.h"
#include "tables/option_table.h"
#include "tables/sample_table.h"
#include "tables/tabbed_text.h"

namespace quobrix::test {
namespace {

class Listener final : public TableEditsListener {
public:
    void tableChanged(const TableChange& change) override { changes.push_back(change); }
    std::vector<TableChange> changes;
};

class Edits : public TablesTest {
protected:
    Edits() { edits_.addListener(listener_); }
    ~Edits() override { edits_.removeListener(listener_); }

    std::string type(std::size_t column, RowIndex row, std::string_view text) {
        return edits_.type(kNoObject, column, row, text, context_).refusal;
    }
    EditOutcome paste(std::vector<std::size_t> columns, RowIndex row, std::string_view text) {
        std::vector<RowIndex> rows;
        for (; row < table_.rowCount(); ++row)
            rows.push_back(row);
        return edits_.paste(kNoObject, columns, rows, *TabbedText::parse(text), context_);
    }
    std::string text(std::size_t column, RowIndex row) { return table_.column(column).text(row, context_); }

    SampleTable table_{3, {.editable = true, .required = {1, 5}}};
    TableEdits edits_{table_};
    Listener listener_;
};

TEST_F(Edits, RefusedTypingChangesNothing) {
    type(SampleTable::Key, 0, "one");
    const Bytes before = table_.bytes();
    const std::uint32_t revision = table_.column(SampleTable::Key).revision();
    EXPECT_EQ(type(SampleTable::Count, 0, "many"), "Hey, that's not an integer!");
    EXPECT_EQ(type(SampleTable::Key, 0, ""), "This value is required but has not yet been defined.");
    EXPECT_EQ(type(SampleTable::Key, 1, "ONE"), "This value must be unique (case insensitive).");
    EXPECT_EQ(type(SampleTable::Recorded, 0, "1"), "This is not editable; see Help for more information.");
    EXPECT_EQ(table_.bytes(), before);
    EXPECT_EQ(table_.column(SampleTable::Key).revision(), revision);
    EXPECT_EQ(listener_.changes.size(), 1u);
}

TEST_F(Edits, WarningsPassAndAreReported) {
    const EditOutcome outcome = edits_.type(kNoObject, SampleTable::Speed, 0, "50", context_);
    EXPECT_TRUE(outcome.ok());
    ASSERT_EQ(outcome.warnings.size(), 1u);
    EXPECT_EQ(outcome.warnings[0].column->key, "SampleSpeed");
    EXPECT_EQ(text(SampleTable::Speed, 0), "50.0 m/s");
}

TEST_F(Edits, WhatStaysTheSameIsNoStep) {
    type(SampleTable::Key, 0, "one");
    type(SampleTable::Key, 0, "one");
    type(SampleTable::Flag, 0, "false");
    table_.column<SampleSpeed>().set(1, 1 / 3.0);
    type(SampleTable::Speed, 1, table_.column(SampleTable::Speed).editText(1, context_));
    EXPECT_EQ(table_.column<SampleSpeed>().at(1), 1 / 3.0);
    edits_.undo();
    EXPECT_FALSE(edits_.canUndo());
}

TEST_F(Edits, KeysMayChangePlacesInOnePaste) {
    ASSERT_TRUE(paste({SampleTable::Key}, 0, "a\nb\nc").ok());
    EXPECT_TRUE(paste({SampleTable::Key}, 0, "b\na").ok());
    EXPECT_EQ(text(SampleTable::Key, 0) + text(SampleTable::Key, 1) + text(SampleTable::Key, 2), "bac");
    EXPECT_FALSE(paste({SampleTable::Key}, 0, "c").ok());
}

TEST_F(Edits, NamesTheFirstRepeatedRow) {
    type(SampleTable::Key, 1, "taken");
    const auto set = [&](std::vector<std::pair<RowIndex, const char*>> cells) {
        std::vector<CellEdit> edits;
        for (const auto& [row, key] : cells)
            edits.push_back({SampleTable::Key, row, std::string(key)});
        return edits_.set(kNoObject, std::move(edits), context_, "set");
    };
    EXPECT_EQ(set({{2, "new"}, {0, "NEW"}}).row, 0u);
    EXPECT_EQ(set({{2, "TAKEN"}, {0, "new"}}).row, 2u) << "the other row stays as it is";
    EXPECT_TRUE(set({{2, "second"}, {2, "third"}, {0, "second"}}).ok()) << "the last value of a cell counts";
    EXPECT_EQ(text(SampleTable::Key, 2), "third");
    EXPECT_EQ(text(SampleTable::Key, 0), "second");
}

TEST_F(Edits, AGroupIsOneStepOrNone) {
    const Bytes before = table_.bytes();
    const auto addAndName = [&](std::string_view key) {
        return edits_.group("adding a key", [&] {
            edits_.insertRows(kNoObject, table_.rowCount());
            return edits_.type(kNoObject, SampleTable::Key, table_.rowCount() - 1, key, context_);
        });
    };
    ASSERT_TRUE(addAndName("k").ok());
    const Bytes after = table_.bytes();
    EXPECT_FALSE(addAndName("K").ok());
    EXPECT_EQ(table_.bytes(), after);
    EXPECT_EQ(edits_.undoDescription(), "adding a key");
    EXPECT_THROW(edits_.group("failing",
                              [&]() -> EditOutcome {
                                  edits_.insertRows(kNoObject, 0);
                                  throw std::runtime_error("no");
                              }),
                 std::runtime_error);
    EXPECT_EQ(table_.bytes(), after);
    edits_.undo();
    EXPECT_EQ(table_.bytes(), before);
}

TEST_F(Edits, RowsThatMovedByOtherMeansEndTheHistory) {
    type(SampleTable::Key, 2, "last");
    table_.removeRows(1, 2);
    edits_.undo();
    EXPECT_FALSE(edits_.canUndo() || edits_.canRedo());
    EXPECT_EQ(text(SampleTable::Key, 0), "");
}

TEST_F(Edits, HistoryTakesMemoryForWhatChanged) {
    SampleTable large(50'000);
    TableEdits edits(large);
    edits.type(kNoObject, SampleTable::Key, 49'999, "x", context_);
    EXPECT_LT(edits.historySize(), 1000u);
}

TEST_F(Edits, HistoryHasLimits) {
    const auto undoable = [&] {
        std::size_t steps = 0;
        for (; edits_.canUndo(); ++steps)
            edits_.undo();
        return steps;
    };
    for (std::size_t i = 0; i <= TableEdits::kMostSteps; ++i)
        ASSERT_EQ(type(SampleTable::Key, 0, std::to_string(i)), "");
    EXPECT_EQ(undoable(), TableEdits::kMostSteps);
    EXPECT_EQ(text(SampleTable::Key, 0), "0") << "the first step is forgotten";
    edits_.redo();
    EXPECT_EQ(text(SampleTable::Key, 0), "1");
    edits_.clear();
    EXPECT_EQ(edits_.historySize(), 0u);

    const std::size_t megabyte = 1 << 20;
    for (char c = 'a'; c < 'a' + 3; ++c)
        for (RowIndex row = 0; row < 3; ++row) // 18 times 9 MB
            ASSERT_EQ(type(SampleTable::Key, row, std::to_string(row) + std::string(9 * megabyte, c)), "");
    EXPECT_LE(edits_.historySize(), TableEdits::kMostBytes);
    EXPECT_EQ(undoable(), 3u);
    ASSERT_EQ(type(SampleTable::Key, 0, std::string(TableEdits::kMostBytes, 'x')), "");
    EXPECT_EQ(undoable(), 1u) << "however much the newest step takes";
    edits_.clear();
}

constexpr auto kOptions = kTypesOf<SampleFlag, SampleSpeed, SampleName>;

TEST_F(Edits, OptionsGoIntoTheSettingsAndBack) {
    Settings settings(std::make_unique<MemorySettings>());
    settings.setText("SampleName", "default", "Anna");
    {
        OptionTable options(settings, kOptions, SourceText("Options"));
        TableEdits edits(options);
        EXPECT_EQ(options.column(2).text(0, context_), "Anna");
        edits.type(kNoObject, 0, 0, "yes", context_);
        edits.type(kNoObject, 1, 0, "7", context_);
        EXPECT_EQ(settings.getInteger("SampleFlag", "Value", kMissingInteger), 1);
        EXPECT_EQ(settings.getReal("SampleSpeed", "Value", 0), 7);
        edits.undo();
        EXPECT_EQ(settings.getText("SampleSpeed", "Value"), "") << "missing again, not the default";
        edits.redo();
        options.accept();
        edits.clear();
        edits.type(kNoObject, 0, 0, "no", context_);
        edits.type(kNoObject, 2, 0, "Bob", context_);
        options.cancel();
        edits.clear();
        EXPECT_EQ(options.column(2).text(0, context_), "Anna");
        edits.type(kNoObject, 2, 0, "Eve", context_);
    }
    EXPECT_EQ(settings.getInteger("SampleFlag", "Value", kMissingInteger), 1);
    EXPECT_EQ(settings.getReal("SampleSpeed", "Value", 0), 7);
    EXPECT_EQ(settings.getText("SampleName", "default"), "Anna") << "what was not accepted is taken back at the end";
    EXPECT_EQ(settings.journalMark(), 0u);
}

} // namespace
} // namespace quobrix::test
