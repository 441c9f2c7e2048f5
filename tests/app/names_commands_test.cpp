#include "app/names_commands.h"

#include "base/ui/qt_text.h"
#include "support/frame_fixture.h"
#include "tables/ui/table_spreadsheet.h"
#include "views/log_view.h"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace quobrix {
namespace {

class NamesCommandsTest : public test::FrameTest {
protected:
    NamesCommandsTest() {
        test::addTrip(document_, 1'700'000'000);
        frame_.show();
        frame_.documentChanged();
    }
    template <class Dialog>
    Dialog* dialog() {
        for (ListDialog* open : frame_.listDialogs())
            if (auto* found = dynamic_cast<Dialog*>(open); found && found->isVisible())
                return found;
        return nullptr;
    }
    SpreadsheetView& view(NamesDialog& of) { return of.findChild<TTableSpreadsheet*>()->view(); }
    /// Opens the name of the first vehicle and types TEXT, without ending the entry.
    void beginRenaming(const char* text) {
        frame_.commands().trigger(CommandId::VehicleId);
        view(*dialog<TVehicleNamesDialog>()).setCurrentIndex(view(*dialog<TVehicleNamesDialog>()).model()->index(0, 1));
        for (const char c : std::string_view(text))
            QTest::keyClick(dialog<TVehicleNamesDialog>()->focusWidget(), c);
        ASSERT_TRUE(view(*dialog<TVehicleNamesDialog>()).isEditing());
    }

    NamesCommands names_{frame_};
};

TEST_F(NamesCommandsTest, ANameIsShownWhereverItIsInView) {
    frame_.pages().show(kTripLogPage);
    auto& trips = *static_cast<LogView*>(frame_.pages().page(kTripLogPage));
    const SpreadsheetModel& summary = trips.summary().model();
    const int vehicle = summary.indexOf("TTripLogVinColumn");
    EXPECT_EQ(summary.text(0, vehicle), QStringLiteral("Unknown #1"));
    trips.showView(LogViewKind::Report);
    beginRenaming("Van");
    QTest::keyClick(dialog<TVehicleNamesDialog>()->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(summary.text(0, vehicle), QStringLiteral("Van"));
    QStringList texts;
    for (const QLabel* label : trips.findChildren<QLabel*>())
        texts += label->text();
    EXPECT_TRUE(texts.contains(QStringLiteral("Van")));
    EXPECT_TRUE(frame_.isWindowModified());
}

TEST_F(NamesCommandsTest, AnOpenEntryIsTakenBeforeACommand) {
    beginRenaming("Van");
    frame_.commands().trigger(CommandId::Home);
    EXPECT_EQ(document_.vehicles().name(0), "Van");
    const QPointer<NamesDialog> open = dialog<TVehicleNamesDialog>();
    QTimer::singleShot(0, qApp, [] {
        ASSERT_EQ(QApplication::activeModalWidget()->objectName(), QStringLiteral("SaveChanges"));
        QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_N);
    });
    frame_.commands().trigger(CommandId::New);
    EXPECT_FALSE(open);
    EXPECT_TRUE(frame_.listDialogs().isEmpty());
    frame_.commands().trigger(CommandId::VehicleId);
    EXPECT_EQ(view(*dialog<TVehicleNamesDialog>()).model()->rowCount(), 0);
}

TEST_F(NamesCommandsTest, NewLoggersAreNamedFirstAndThenVehicles) {
    document_.loggers().addMissing(std::vector<std::string>{"K-0042-B"});
    names_.name({{"K-0042-B"}, {test::kVin}, {}});
    ASSERT_TRUE(dialog<TQuobrixNamesDialog>());
    EXPECT_TRUE(view(*dialog<TQuobrixNamesDialog>()).isEditing());
    EXPECT_FALSE(dialog<TVehicleNamesDialog>());
    dialog<TQuobrixNamesDialog>()->close();
    ASSERT_TRUE(dialog<TVehicleNamesDialog>());
    EXPECT_TRUE(view(*dialog<TVehicleNamesDialog>()).isEditing());
    dialog<TVehicleNamesDialog>()->close();
    QApplication::processEvents();
    names_.name({});
    EXPECT_FALSE(dialog<TQuobrixNamesDialog>() || dialog<TVehicleNamesDialog>());
}

} // namespace
} // namespace quobrix
