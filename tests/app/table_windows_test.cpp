#include "app/names_commands.h"
#include "app/table_windows.h"
#include "support/frame_fixture.h"
#include "tables/ui/error_log.h"
#include "tables/ui/requirements_window.h"

#include <QAction>
#include <QMessageBox>
#include <QTest>

namespace quobrix::test {
namespace {

class TableWindowsTest : public FrameTest {
protected:
    TErrorLog* log() { return frame_.findChild<TErrorLog*>(); }
    bool comesTo(std::size_t findings) {
        return QTest::qWaitFor([&] { return log()->findings().size() == findings; });
    }
    void type(const Table& table, std::string_view key, RowIndex row, std::string_view text) {
        ASSERT_TRUE(document_.edits().type(table.id(), table.indexOf(key), row, text, context_.text()).ok());
    }
};

TEST_F(TableWindowsTest, TheErrorLogFollowsWhatIsEdited) {
    frame_.commands().trigger(CommandId::CheckForErrors);
    ASSERT_TRUE(log() && log()->isVisible());
    EXPECT_TRUE(log()->findings().empty());
    const ObjectId vehicles = document_.vehicles().id();
    document_.edits().insertRows(vehicles, 0);
    EXPECT_TRUE(comesTo(2)); // no VIN, no name
    type(document_.vehicles(), "TVehicleNamesVinColumn", 0, kVin);
    EXPECT_TRUE(comesTo(1));
    document_.edits().undo();
    EXPECT_TRUE(comesTo(2));
    document_.newDocument();
    EXPECT_TRUE(comesTo(0));
}

TEST_F(TableWindowsTest, GoesToTheCellOfAPage) {
    for (int i = 0; i < 3; ++i)
        addTrip(document_, 1'000'000'000 + 1000 * i);
    frame_.documentChanged();
    frame_.commands().trigger(CommandId::CheckForErrors);
    emit log()->goTo({Severity::Required, ShownText::asItIs(""), document_.trips().id(), "Trip Log",
                      &TTripLogCommentsColumn::kSpec, 1});
    EXPECT_EQ(frame_.pages().current(), kTripLogPage);
    auto* list = frame_.pages().page(kTripLogPage)->findChild<TSpreadsheet*>(QStringLiteral("TTripLogSummaryView"));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->currentRow(), 1u);
}

TEST_F(TableWindowsTest, GoesToTheCellOfADialog) {
    const NamesCommands names(frame_);
    for (int i = 0; i < 3; ++i)
        document_.edits().insertRows(document_.drivers().id(), 0);
    frame_.commands().trigger(CommandId::CheckForErrors);
    const auto error = std::ranges::find(log()->findings(), RowIndex{2}, &Finding::row);
    ASSERT_NE(error, log()->findings().end());
    emit log()->goTo(*error);
    ASSERT_EQ(frame_.listDialogs().size(), 1);
    auto* list = frame_.listDialogs().front()->findChild<TSpreadsheet*>();
    ASSERT_TRUE(list);
    EXPECT_EQ(list->currentRow(), 2u);
    EXPECT_EQ(list->model().spec(list->view().currentIndex().column()).key, "DriverNamesIDColumn");
}

TEST_F(TableWindowsTest, GoesFromANameInALogToWhereItIsGiven) {
    const NamesCommands names(frame_);
    document_.vehicles().addMissing(std::vector<std::string>{"WVWZZZ1KZAW000001"});
    const RowIndex trip = addTrip(document_, 1'000'000'000); // which adds its vehicle
    const RowIndex vehicle = document_.vehicles().find(kVin);
    ASSERT_GT(vehicle, 0u);
    frame_.documentChanged();
    frame_.pages().show(kTripLogPage);
    auto& list = *frame_.pages().page(kTripLogPage)->findChild<TSpreadsheet*>(QStringLiteral("TTripLogSummaryView"));
    const QAction& go = list.commands().action(SpreadsheetCommand::GoToSource);
    list.setCurrentCell(trip, list.model().indexOf("TTripLogDistanceColumn"));
    EXPECT_FALSE(go.isEnabled());
    document_.trips().column<TTripLogDriverIDColumn>().set(trip, 7);
    EXPECT_FALSE(document_.trips().column<TTripLogDriverIDColumn>().sourceOf(trip)) << "a driver nobody has entered";
    list.setCurrentCell(trip, list.model().indexOf("TTripLogVinColumn"));
    ASSERT_TRUE(go.isEnabled());
    list.commands().action(SpreadsheetCommand::GoToSource).trigger();
    ASSERT_EQ(frame_.listDialogs().size(), 1);
    auto* vehicles = frame_.listDialogs().front()->findChild<TSpreadsheet*>();
    EXPECT_EQ(vehicles->currentRow(), vehicle);
    EXPECT_EQ(vehicles->model().spec(vehicles->view().currentIndex().column()).key, "TVehicleNamesNameColumn");
}

TEST_F(TableWindowsTest, ShowsWhatASpreadsheetAsksFor) {
    document_.edits().insertRows(document_.vehicles().id(), 0);
    document_.edits().insertRows(document_.drivers().id(), 0);
    frame_.tableWindows().showErrorsOf(document_.drivers());
    EXPECT_EQ(log()->findings().size(), 4u);
    frame_.tableWindows().showRequirements(document_.trips().column<TTripLogCommentsColumn>());
    auto* window = frame_.findChild<RequirementsWindow*>();
    ASSERT_TRUE(window && window->isVisible());
    EXPECT_TRUE(window->text().startsWith(QStringLiteral("Information or comments regarding this trip.\n\nA text")));
}

} // namespace
} // namespace quobrix::test
