#include "app/navigation_pane.h"
#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "report/ui/report_view.h"
#include "support/frame_fixture.h"
#include "views/log_view.h"

#include <QAction>
#include <QCommandLinkButton>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QTest>
#include <QToolBar>

#include <gtest/gtest.h>

namespace quobrix {
namespace {

/// How a person finds the way through the window, with three trips and three trouble codes of one second.
class WayTest : public test::FrameTest {
protected:
    void SetUp() override {
        for (std::int32_t n = 0; n < 3; ++n) {
            const RowIndex row = test::addTrip(document_, 1'000'000'000 + n * 86'400);
            document_.trips().column<TTripLogRecordColumn>().set(row, {1'000'000'000 + n * 86'400, 0});
        }
        document_.troubles().insertRows(0, 3);
        document_.troubles().column<TTroubleLogTroubleCodeColumn>().setAll({"P0301", "P0302", "P0303"});
        frame_.resize(1000, 700);
        frame_.show();
        frame_.documentChanged();
        frame_.pages().show(kHomePage);
        frame_.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&frame_));
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QWidget* focus = QApplication::focusWidget();
        QTest::keyClick(focus ? focus : &frame_, key, modifiers);
        QApplication::processEvents();
    }
    std::string path() const { return frame_.findChild<QLabel*>("pageTitle")->accessibleName().toStdString(); }
    std::string pressed(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        press(key, modifiers);
        return path();
    }
    QAction& action(CommandId id) { return *frame_.commands().action(id); }
    NavigationPane& pane() { return *frame_.findChild<NavigationPane*>(); }
    QStringList pages() {
        QStringList texts;
        for (int row = 0; row < pane().count(); ++row)
            texts << pane().item(row)->data(Qt::AccessibleTextRole).toString();
        return texts;
    }
    void newDocument() {
        test::inNextDialog([](QWidget& box) { QTest::keyClick(&box, Qt::Key_N); }); // whether to save this one
        action(CommandId::New).trigger();
    }
    void removeTrip(RowIndex row) { ASSERT_TRUE(document_.edits().removeRows(document_.trips().id(), {row}).ok()); }
};

TEST_F(WayTest, ThePaneLeadsToThePagesInTheOrderOfTheMenu) {
    EXPECT_EQ(pages().join(';'), "Home;Trip Log, 3;Activity Log, 0;Accident Log, 0;Vehicle Trouble Log, 3");
    const char* const paths[] = {"", "View / Trip Log / Summary", "View / Activity Log / Summary",
                                 "View / Accident Log / Summary", "View / Vehicle Trouble Log / Summary"};
    for (int n : {4, 2, 0, 1, 3}) {
        EXPECT_EQ(pressed(Qt::Key(Qt::Key_1 + n), Qt::ControlModifier), paths[n]);
        EXPECT_EQ(pane().currentRow(), n);
        EXPECT_FALSE(pane().hasFocus());
    }
    pane().setFocus();
    EXPECT_EQ(pressed(Qt::Key_Down), paths[4]);
    EXPECT_TRUE(pane().hasFocus()) << "one can go on";
    press(Qt::Key_Return);
    EXPECT_TRUE(frame_.pages().page(210)->isAncestorOf(QApplication::focusWidget()));
    QTest::mouseClick(pane().viewport(), Qt::LeftButton, {}, pane().visualItemRect(pane().item(1)).center());
    EXPECT_EQ(path(), paths[1]);
    EXPECT_FALSE(pane().hasFocus());
    removeTrip(1);
    EXPECT_EQ(pages()[1], "Trip Log, 2");
    document_.edits().undo();
    EXPECT_EQ(pages()[1], "Trip Log, 3");
}

TEST_F(WayTest, AnEntryThatIsRefusedKeepsItsPage) {
    press(Qt::Key_2, Qt::ControlModifier);
    pane().setFocus();
    // What refuses to be left, such as an entry with a wrong value, keeps the keyboard.
    Commands& commands = frame_.commands();
    commands.handle(CommandId::ActivityLog, [] {});
    press(Qt::Key_Down);
    EXPECT_EQ(pane().currentRow(), 1);
    EXPECT_EQ(frame_.pages().current(), kTripLogPage);
}

TEST_F(WayTest, PaneAndToolbarAreHiddenAndRemembered) {
    auto& splitter = *frame_.findChild<QSplitter*>("TSplitter");
    auto& bar = *frame_.findChild<QToolBar*>();
    const int before = pane().width();
    splitter.setSizes({before + 40, splitter.width() - before - 40});
    emit splitter.splitterMoved(before + 40, 1);
    const double share = double(splitter.sizes()[0]) / (splitter.sizes()[0] + splitter.sizes()[1]);
    EXPECT_GT(pane().width(), before);
    pane().setFocus();
    press(Qt::Key_F9);
    EXPECT_FALSE(pane().isVisible());
    EXPECT_TRUE(frame_.pages().isAncestorOf(QApplication::focusWidget())) << "the keyboard is not lost";
    press(Qt::Key_F9, Qt::ShiftModifier);
    EXPECT_FALSE(bar.isVisible());
    press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(pressed(Qt::Key_Left, Qt::AltModifier), "") << "keys do without the toolbar";
    frame_.close();
    EXPECT_NEAR(settings_.getReal("TSplitter", "aspectRatio", 0), share, 1e-3);
    {
        TQuobrixFrame next(frame_.context());
        next.show();
        EXPECT_FALSE(next.findChild<NavigationPane*>()->isVisible());
        EXPECT_FALSE(next.findChild<QToolBar*>()->isVisible());
        next.commands().trigger(CommandId::NavigationPane);
        next.commands().trigger(CommandId::ToolBar);
        EXPECT_TRUE(next.findChild<NavigationPane*>()->isVisible());
        EXPECT_NEAR(next.findChild<NavigationPane*>()->width(), share * next.width(), 4);
    }
    EXPECT_EQ(settings_.getInteger("Main Frame", "ToolBar", -1), 1);
}

TEST_F(WayTest, BackAndForwardThroughPagesViewsAndRecords) {
    EXPECT_FALSE(action(CommandId::Back).isEnabled());
    press(Qt::Key_2, Qt::ControlModifier);
    press(Qt::Key_Up); // to another row of the list, which is no step of its own
    EXPECT_EQ(pressed(Qt::Key_Return), "View / Trip Log / Record 2 / Report");
    EXPECT_EQ(pressed(Qt::Key_2, Qt::ControlModifier), "View / Trip Log / Summary") << "where the page begins";
    EXPECT_EQ(pressed(Qt::Key_Return), "View / Trip Log / Record 2 / Report");
    EXPECT_EQ(pressed(Qt::Key_Up, Qt::AltModifier), "View / Trip Log / Record 1 / Report");
    EXPECT_EQ(pressed(Qt::Key_Down, Qt::AltModifier), "View / Trip Log / Record 2 / Report");
    EXPECT_EQ(pressed(Qt::Key_Down, Qt::AltModifier), "View / Trip Log / Record 3 / Report");
    static_cast<LogView*>(frame_.pages().page(kTripLogPage))->showView(LogViewKind::Table);
    press(Qt::Key_5, Qt::ControlModifier);
    press(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(pressed(Qt::Key_Return), "View / Vehicle Trouble Log / Record 1");
    EXPECT_EQ(pressed(Qt::Key_Left, Qt::AltModifier), "View / Vehicle Trouble Log / Summary");
    EXPECT_EQ(pressed(Qt::Key_Left, Qt::AltModifier), "View / Trip Log / Record 3 / Table");
    EXPECT_EQ(pressed(Qt::Key_Left, Qt::AltModifier), "View / Trip Log / Record 3 / Report");

    removeTrip(1);
    EXPECT_EQ(path(), "View / Trip Log / Record 2 / Report") << "the same trip";
    EXPECT_EQ(pressed(Qt::Key_Left, Qt::AltModifier), "View / Trip Log / Record 1 / Report")
        << "what is gone is skipped";
    document_.edits().undo();
    EXPECT_EQ(pressed(Qt::Key_Right, Qt::AltModifier), "View / Trip Log / Record 2 / Report") << "and comes back";
    EXPECT_EQ(pressed(Qt::Key_Escape), "View / Trip Log / Summary");
    EXPECT_FALSE(action(CommandId::Forward).isEnabled());
    auto& trips = static_cast<LogView*>(frame_.pages().page(kTripLogPage))->summary();
    EXPECT_EQ(trips.currentRow(), 1u);
    press(Qt::Key_Down);
    EXPECT_EQ(pressed(Qt::Key_Left, Qt::AltModifier), "View / Trip Log / Record 2 / Report");
    press(Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(trips.currentRow(), 2u) << "the row that was left";
    for (int i = 0; i < 10; ++i)
        press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(path(), "");
    EXPECT_EQ(frame_.pages().current(), kHomePage);
    newDocument();
    EXPECT_FALSE(action(CommandId::Forward).isEnabled()) << "of another document";
}

TEST_F(WayTest, RecordsOfOneSecondAreToldApart) {
    press(Qt::Key_5, Qt::ControlModifier);
    press(Qt::Key_Return);
    press(Qt::Key_Up, Qt::AltModifier);
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(path(), "View / Vehicle Trouble Log / Record 1");
    EXPECT_EQ(pressed(Qt::Key_Left, Qt::AltModifier), "View / Vehicle Trouble Log / Record 2");
    frame_.documentChanged();
    EXPECT_EQ(path(), "View / Vehicle Trouble Log / Record 2");
}

TEST_F(WayTest, NeighboursFollowOrderAndFilter) {
    press(Qt::Key_2, Qt::ControlModifier);
    auto& trips = static_cast<LogView*>(frame_.pages().page(kTripLogPage))->summary();
    trips.setFilter([](RowIndex row) { return row != 1; });
    trips.view().sortByColumn(trips.model().indexOf("TTripLogStartTimeColumn"), Qt::DescendingOrder);
    trips.setCurrentRow(2);
    press(Qt::Key_Return);
    EXPECT_EQ(pressed(Qt::Key_Down, Qt::AltModifier), "View / Trip Log / Record 1 / Report");
    EXPECT_EQ(pressed(Qt::Key_Down, Qt::AltModifier), "View / Trip Log / Record 1 / Report") << "there is no other";
}

TEST_F(WayTest, EachPartOfThePathLeadsWhereItNames) {
    auto& label = *frame_.findChild<QLabel*>("pageTitle");
    const auto follow = [&](int part) {
        emit label.linkActivated(QString::number(part));
        QApplication::processEvents();
        return path();
    };
    press(Qt::Key_2, Qt::ControlModifier);
    press(Qt::Key_Return);
    static_cast<LogView*>(frame_.pages().page(kTripLogPage))->showView(LogViewKind::Table);
    EXPECT_EQ(label.text().count("<a "), 3) << label.text().toStdString();
    EXPECT_EQ(follow(2), "View / Trip Log / Record 3 / Report");
    EXPECT_EQ(label.text().count("<a "), 2) << "one is there already";
    EXPECT_EQ(follow(1), "View / Trip Log / Summary");
    label.setFocus(Qt::TabFocusReason); // at its first link
    press(Qt::Key_Return);
    auto* menu = frame_.menuBar()->findChild<QMenu*>("ViewMenu");
    EXPECT_TRUE(menu->isVisible()) << "by the keyboard";
    menu->close();
}

TEST_F(WayTest, TheToolbarShowsListsAndTheLatestTrip) {
    document_.trips().column<TTripLogStartTimeColumn>().set(0, 1'500'000'000);
    struct Case {
        CommandId id;
        const char *text, *status, *path;
    };
    const Case cases[] = {
        {CommandId::LastTripReport, "Browse", "View last trip log report", "View / Trip Log / Record 1 / Report"},
        {CommandId::TripSummary, "Trip Log", "View trip log summary", "View / Trip Log / Summary"},
        {CommandId::ActivitySummary, "Activity Log", "View activity log summary", "View / Activity Log / Summary"},
        {CommandId::AccidentSummary, "Accident Log", "View accident log summary", "View / Accident Log / Summary"},
        {CommandId::TroubleSummary, "Vehicle Trouble Log", "View trouble log summary",
         "View / Vehicle Trouble Log / Summary"}};
    for (const Case& c : cases) {
        auto* button = frame_.findChild<QAbstractButton*>(action(c.id).objectName() + "Button");
        ASSERT_TRUE(button) << c.text;
        EXPECT_EQ(button->text(), c.text);
        EXPECT_EQ(button->toolTip(), c.text);
        EXPECT_EQ(action(c.id).statusTip(), c.status);
        EXPECT_NE(button->focusPolicy() & Qt::TabFocus, 0) << c.text;
        button->click();
        EXPECT_EQ(path(), c.path);
    }
    action(CommandId::LastTripReport).trigger();
    press(Qt::Key_1, Qt::ControlModifier);
    frame_.findChild<QCommandLinkButton*>("homeTripSummary")->click();
    QApplication::processEvents();
    EXPECT_EQ(path(), "View / Trip Log / Summary") << "from the home page, too";
    newDocument();
    EXPECT_FALSE(action(CommandId::LastTripReport).isEnabled());
    EXPECT_TRUE(action(CommandId::TripSummary).isEnabled());
}

TEST_F(WayTest, EveryPartOfTheHomePageIsReachedByTab) {
    frame_.recentFiles().add("/somewhere/a.car");
    frame_.documentChanged();
    QStringList reached;
    for (int i = 0; i < 30; ++i) {
        press(Qt::Key_Tab);
        reached << QApplication::focusWidget()->objectName();
    }
    for (const char* part : {"homeTripSummary", "homeOpen", "homeNew", "homeDocument", "homeTrips", "homeDistance",
                             "homeLastTrip", "homeVehicles", "homeRecentFile1", "navigationPane"})
        EXPECT_TRUE(reached.contains(QLatin1String(part))) << part;
}

TEST_F(WayTest, EveryOpenPageFollowsEditsAndUnits) {
    const auto report = [&](const char* name) {
        QStringList texts;
        for (const QLabel* label : frame_.findChild<ReportView*>(name)->findChildren<QLabel*>())
            texts << label->text();
        return texts;
    };
    for (const Qt::Key page : {Qt::Key_5, Qt::Key_2}) {
        press(page, Qt::ControlModifier);
        press(Qt::Key_Return);
    }
    EXPECT_TRUE(report("TTripLogRecordView").contains("12,000.00 m"));
    units_.setUnit(UnitTypeId::Distance, UnitId::Kilometre);
    EXPECT_FALSE(report("TTripLogRecordView").filter(" km").isEmpty());
    press(Qt::Key_1, Qt::ControlModifier);
    EXPECT_TRUE(frame_.findChild<QLabel*>("homeDistance")->text().endsWith(" km"));
    units_.setUnit(UnitTypeId::Distance, UnitId::Mile);
    EXPECT_TRUE(frame_.findChild<QLabel*>("homeDistance")->text().endsWith(" Miles"));

    TableEdits& edits = document_.edits();
    const auto write = [&](Table& table, std::string_view key, RowIndex row, const char* text) {
        ASSERT_TRUE(edits.type(table.id(), table.indexOf(key), row, text, context_.text()).ok());
    };
    write(document_.troubles(), "TTroubleLogCommentsColumn", 2, "by the depot");
    write(document_.vehicles(), "TVehicleNamesNameColumn", 0, "Blue van");
    press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_FALSE(report("TTripLogRecordView").filter(" Miles").isEmpty());
    EXPECT_TRUE(report("TTripLogRecordView").contains("Blue van"));
    press(Qt::Key_5, Qt::ControlModifier);
    EXPECT_TRUE(report("TTroubleLogRecordView").contains("by the depot")) << "edited while it was out of view";
    edits.undo();
    edits.undo();
    EXPECT_FALSE(report("TTroubleLogRecordView").contains("by the depot")) << "and taken back while it was in view";
}

TEST_F(WayTest, AFilterIsKeptUntilAHiddenRecordIsWantedOrTheDocumentEnds) {
    const auto words = [this] { return frame_.pages().page(kTripLogPage)->findChild<QLineEdit*>("filterWords"); };
    const auto shown = [this] {
        return static_cast<LogView*>(frame_.pages().page(kTripLogPage))->summary().model().rowCount();
    };
    const auto filter = [&](const char* text) {
        press(Qt::Key_2, Qt::ControlModifier);
        press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        QTest::keyClicks(QApplication::focusWidget(), QLatin1String(text));
        press(Qt::Key_Return);
    };
    document_.trips().column<TTripLogCommentsColumn>().setAll({"coast", "", "coast"});
    filter("coast");
    EXPECT_EQ(shown(), 2);
    EXPECT_EQ(pages()[1], "Trip Log, 3") << "what the log holds";
    press(Qt::Key_Right);
    EXPECT_NE(frame_.statusBar()->currentMessage(), "") << "about the cell";
    press(Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(frame_.statusBar()->currentMessage(), "") << "which is out of view";
    press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(shown(), 2);
    document_.trips().column<TTripLogStartTimeColumn>().set(1, 1'500'000'000); // the last one
    frame_.statusBar()->clearMessage();
    action(CommandId::LastTripReport).trigger();
    EXPECT_EQ(path(), "View / Trip Log / Record 2 / Report");
    EXPECT_EQ(shown(), 3);
    EXPECT_EQ(frame_.statusBar()->currentMessage(), "The filter has been taken off, since it hid this row.");

    filter("coast");
    EXPECT_EQ(words()->text(), "coast");
    newDocument();
    test::addTrip(document_, 1'000'000'000);
    frame_.documentChanged();
    EXPECT_EQ(shown(), 1);
    EXPECT_EQ(words()->text(), "");
}

TEST_F(WayTest, TheMouseHasButtonsForBackAndForward) {
    press(Qt::Key_2, Qt::ControlModifier);
    press(Qt::Key_3, Qt::ControlModifier);
    LogView& events = static_cast<LogView&>(*frame_.pages().page(220));
    QTest::mouseClick(events.summary().view().viewport(), Qt::BackButton);
    EXPECT_EQ(path(), "View / Trip Log / Summary");
    LogView& trips = static_cast<LogView&>(*frame_.pages().page(kTripLogPage));
    const auto current = trips.summary().currentRow();
    QTest::mouseClick(trips.summary().view().viewport(), Qt::ForwardButton, {}, QPoint(5, 5));
    EXPECT_EQ(path(), "View / Activity Log / Summary");
    EXPECT_EQ(trips.summary().currentRow(), current) << "it selects nothing";
}

} // namespace
} // namespace quobrix
