#include "app/main_frame.h"

#include "app/about_box.h"
#include "app/disk_work.h"
#include "base/ui/qt_text.h"
#include "support/document_streams.h"
#include "support/frame_fixture.h"
#include "support/temporary_folder.h"
#include "views/log_view.h"

#include <QAction>
#include <QApplication>
#include <QCommandLinkButton>
#include <QDialog>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <set>
#include <stdexcept>
#include <thread>

namespace quobrix {
namespace {

class MainFrameTest : public test::FrameTest {
protected:
    QAction* action(CommandId id) { return frame_.commands().action(id); }
    QMenu* menu(const char* name) { return frame_.menuBar()->findChild<QMenu*>(QLatin1String(name)); }

    /// What the next message box says; it is closed with its default button.
    static QString nextMessage(const std::function<void()>& trigger) {
        QString text;
        QTimer timer; // ends with the trigger, whether a box came up or not
        timer.setSingleShot(true);
        QObject::connect(&timer, &QTimer::timeout, [&text] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                text = box->objectName() + QLatin1String(": ") + box->text();
                box->accept();
            }
        });
        timer.start(0);
        trigger();
        return text;
    }
};

TEST_F(MainFrameTest, ShortcutsAndMnemonicsAreUnique) {
    std::set<QString> shortcuts, mnemonics;
    for (const QAction* command : frame_.findChildren<QAction*>())
        EXPECT_TRUE(command->shortcut().isEmpty() || shortcuts.insert(command->shortcut().toString()).second)
            << command->text().toStdString();
    for (const QAction* top : frame_.menuBar()->actions())
        EXPECT_TRUE(mnemonics.insert(QKeySequence::mnemonic(top->text()).toString()).second);
}

TEST_F(MainFrameTest, CommandsWithoutHandlersSaySo) {
    for (const MenuRow& row : menuRows()) {
        if (row.name.empty() || row.kind == MenuRow::Kind::RecentFiles)
            continue;
        const bool handled = frame_.commands().handled(row.id);
        if (row.kind != MenuRow::Kind::Button) { // which may have nothing to show yet
            EXPECT_EQ(action(row.id)->isEnabled(), handled) << row.name;
        }
        EXPECT_FALSE(action(row.id)->associatedObjects().isEmpty()) << row.name << " is in no menu";
        EXPECT_NE(action(row.id)->statusTip().endsWith(QLatin1String("(not available yet)")), handled) << row.name;
        EXPECT_NE(action(row.id)->toolTip().endsWith(QLatin1String("(not available yet)")), handled) << row.name;
    }
    EXPECT_EQ(action(CommandId::Open)->statusTip(), QStringLiteral("Opens an existing file."));
    EXPECT_EQ(action(CommandId::ExpressSetup)->statusTip(),
              QStringLiteral("Express Walkthrough Setup (not available yet)"));
}

TEST_F(MainFrameTest, ATroubleLeadsToItsTrip) {
    test::addTrip(document_, test::kStart);
    test::addTrip(document_, test::kStart + 86'400);
    TTroubleLogTable& troubles = document_.troubles();
    troubles.insertRows(0, 1);
    troubles.column<TTroubleLogTimeRecordedColumn>().set(0, test::kStart + 60);
    troubles.column<TTroubleLogQuobrixSerialNumberColumn>().set(0, "K-0042-B");
    const auto page = [&](LogId log) { return dynamic_cast<LogView*>(frame_.pages().page(logSpec(log).page)); };
    frame_.pages().show(logSpec(LogId::Troubles).page);
    page(LogId::Troubles)->showView(LogViewKind::Report);
    page(LogId::Troubles)->findChild<QPushButton*>(QStringLiteral("link"))->click();
    QApplication::processEvents();
    EXPECT_EQ(frame_.pages().current(), logSpec(LogId::Trips).page);
    EXPECT_EQ(page(LogId::Trips)->title(), QStringLiteral("View / Trip Log / Record 1 / Report"));
}

TEST_F(MainFrameTest, AvailabilityAndFailureOfACommand) {
    bool available = false;
    frame_.commands().handle(
        CommandId::Download, [] { throw std::runtime_error("The sky fell."); }, [&] { return available; });
    EXPECT_FALSE(action(CommandId::Download)->isEnabled());
    EXPECT_EQ(nextMessage([&] { frame_.commands().trigger(CommandId::Download); }), QString());
    available = true;
    frame_.documentChanged();
    EXPECT_EQ(nextMessage([&] { frame_.commands().trigger(CommandId::Download); }),
              QStringLiteral("UnexpectedFailure: Download Quobrix Data could not be completed.\n\nThe sky fell."));
}

TEST_F(MainFrameTest, DiagnosticsMenuByCtrlRightClick) {
    const QAction* diagnostics = menu("DiagnosticsMenu")->menuAction();
    EXPECT_FALSE(diagnostics->isVisible());
    const auto clickInAboutBox = [this](Qt::KeyboardModifiers modifiers) {
        QTimer::singleShot(0, qApp, [modifiers] {
            QWidget* box = QApplication::activeModalWidget();
            ASSERT_TRUE(box);
            QTest::mouseClick(box, Qt::RightButton, modifiers, {5, 5});
            box->close();
        });
        action(CommandId::About)->trigger();
    };
    clickInAboutBox(Qt::NoModifier);
    EXPECT_FALSE(diagnostics->isVisible());
    clickInAboutBox(Qt::ControlModifier);
    EXPECT_TRUE(diagnostics->isVisible());
    EXPECT_EQ(settings_.getInteger("Diagnostics", "Menu", -1), 1);

    TQuobrixFrame next(frame_.context());
    EXPECT_TRUE(next.menuBar()->findChild<QMenu*>(QStringLiteral("DiagnosticsMenu"))->menuAction()->isVisible());

    action(CommandId::HideDiagnosticsMenu)->trigger();
    EXPECT_FALSE(diagnostics->isVisible());
    EXPECT_EQ(settings_.getInteger("Diagnostics", "Menu", -1), 0);
}

TEST_F(MainFrameTest, ReadOnlyUntilTheOtherCopyCloses) {
    const test::TemporaryFolder folder;
    const auto path = folder / "Held.car";
    TQuobrixDocument running;
    ASSERT_TRUE(running.saveAs(path));
    frame_.show();
    frame_.openFile(path);
    const auto* status = frame_.findChild<QLabel*>(QStringLiteral("readOnlyStatus"));
    EXPECT_EQ(frame_.windowTitle(), QStringLiteral("Held.car[*] (Read-Only) - Quobrix"));
    EXPECT_EQ(status->text(), QStringLiteral("Read-only: Another program is using this file."));
    EXPECT_TRUE(status->isVisible());
    QStatusTipEvent hint(QString(200, 'm'));
    QApplication::sendEvent(&frame_, &hint);
    const QFontMetrics metrics = frame_.statusBar()->fontMetrics();
    EXPECT_TRUE(frame_.statusBar()->currentMessage().startsWith("mmm"));
    EXPECT_LT(metrics.horizontalAdvance(frame_.statusBar()->currentMessage()), status->x()) << "beside the note";
    running.newDocument();
    QDialog other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    frame_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&frame_));
    EXPECT_EQ(frame_.windowTitle(), QStringLiteral("Held.car[*] - Quobrix"));
    EXPECT_FALSE(status->isVisible());
}

TEST_F(MainFrameTest, DamageIsToldOnceALog) {
    const test::TemporaryFolder folder;
    const auto path = folder / "Damaged.car";
    std::vector<ObjectId> samples;
    {
        TQuobrixDocument made;
        for (int i = 0; i < 3; ++i) {
            test::addTrip(made, 1'000'000'000 + 3600 * i);
            samples.push_back(made.trips().column<TTripLogSampleTableColumn>().at(static_cast<RowIndex>(i)));
        }
        ASSERT_TRUE(made.saveAs(path));
    }
    test::tamper(path, [&](CompoundFile& file) {
        for (const RowIndex row : {0, 1})
            file.write(std::to_string(samples[row]), {1, 2, 3});
    });
    frame_.show();
    frame_.openFile(path);
    EXPECT_EQ(nextMessage([&] { action(CommandId::TripLog)->trigger(); }), "");
    const auto meet = [&](RowIndex row) {
        return nextMessage([&] {
            EXPECT_EQ(document_.trips().column<TTripLogSampleTableColumn>().object(row), nullptr);
            QApplication::processEvents(); // nobody has asked for a command
        });
    };
    const QString told = meet(1);
    EXPECT_TRUE(told.startsWith(QStringLiteral("DamagedDocument"))) << told.toStdString();
    EXPECT_TRUE(told.contains(QStringLiteral("Trip Log"))) << told.toStdString();
    EXPECT_EQ(meet(0), "") << "another one of the same log";
}

TEST_F(MainFrameTest, RecentFilesInTheMenu) {
    EXPECT_TRUE(action(CommandId::RecentFile)->isVisible());
    EXPECT_FALSE(action(CommandId::RecentFile)->isEnabled());
    frame_.recentFiles().add("/somewhere/Black & White.car");
    frame_.recentFiles().add("/somewhere/b.car");
    frame_.documentChanged();
    EXPECT_FALSE(action(CommandId::RecentFile)->isVisible());
    const auto* second = frame_.findChild<QAction*>(QStringLiteral("RecentFile2"));
    EXPECT_TRUE(second->isVisible());
    EXPECT_EQ(second->text(), QStringLiteral("&2 Black && White.car"));
    EXPECT_EQ(second->data().toInt(), 57617);
    EXPECT_EQ(nextMessage([&] { frame_.findChild<QAction*>(QStringLiteral("RecentFile1"))->trigger(); }),
              QStringLiteral("FileNotFound: b.car cannot be opened because it does not exist."));

    const QString name = QString(200, QLatin1Char('x')) + QStringLiteral("_2026.car");
    frame_.recentFiles().add(toPath(QStringLiteral("/somewhere/") + name));
    frame_.documentChanged();
    const auto* first = frame_.findChild<QAction*>(QStringLiteral("RecentFile1"));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^&1 x+…x+_2026.car$")).match(first->text()).hasMatch())
        << first->text().toStdString();
    EXPECT_EQ(first->toolTip(), QStringLiteral("/somewhere/") + name);
}

TEST_F(MainFrameTest, RecentFilesShowFoldersAndMissing) {
    const test::TemporaryFolder folder;
    std::ofstream(folder / "Trips.car") << "there";
    frame_.recentFiles().add("/nowhere/Other.car");
    frame_.recentFiles().add("/nowhere/Trips.car");
    frame_.recentFiles().add(folder / "Trips.car");
    frame_.pages().show(kHomePage);
    frame_.documentChanged();
    const auto text = [this](int number) {
        return frame_.findChild<QAction*>(QStringLiteral("RecentFile%1").arg(number))->text();
    };
    ASSERT_TRUE(QTest::qWaitFor([&] { return text(3).endsWith(QLatin1String(")")); }));
    EXPECT_EQ(text(1), QStringLiteral("&1 Trips.car – ") + toQtPath(folder.path()));
    EXPECT_EQ(text(2), QStringLiteral("&2 Trips.car – /nowhere (missing)"));
    EXPECT_EQ(text(3), QStringLiteral("&3 Other.car (missing)"));
    const auto* button = frame_.findChild<QCommandLinkButton*>(QStringLiteral("homeRecentFile2"));
    ASSERT_TRUE(button);
    EXPECT_EQ(button->description(), QStringLiteral("/nowhere (missing)"));
}

TEST_F(MainFrameTest, DroppedFiles) {
    const test::TemporaryFolder folder;
    TQuobrixDocument other;
    ASSERT_TRUE(other.saveAs(folder / "Dropped.car"));
    other.newDocument();
    struct Case {
        Qt::DropActions offered;
        Qt::KeyboardModifiers keys;
        const char* file;
        bool taken;
    };
    const Case cases[] = {{Qt::MoveAction, Qt::NoModifier, "Dropped.car", false}, // its source would delete it
                          {Qt::CopyAction | Qt::MoveAction, Qt::ShiftModifier, "Dropped.txt", false},
                          {Qt::CopyAction | Qt::MoveAction, Qt::ShiftModifier, "Dropped.car", true}};
    for (const Case& each : cases) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(toQtPath(folder / each.file))});
        QDragEnterEvent enter({5, 5}, each.offered, &data, Qt::LeftButton, each.keys);
        QApplication::sendEvent(&frame_, &enter);
        QDropEvent drop({5, 5}, each.offered, &data, Qt::LeftButton, each.keys);
        QApplication::sendEvent(&frame_, &drop);
        for (const QDropEvent* event : {static_cast<QDropEvent*>(&enter), &drop}) {
            EXPECT_EQ(event->isAccepted(), each.taken) << each.file;
            EXPECT_TRUE(!each.taken || event->dropAction() == Qt::CopyAction) << each.file;
        }
        QApplication::processEvents();
        EXPECT_EQ(document_.hasFile(), each.taken);
    }
}

TEST_F(MainFrameTest, PagesAreMadeWhenShown) {
    struct Counting final : Page {
        explicit Counting(int& alive) : alive_(alive) { ++alive_; }
        ~Counting() override { --alive_; }
        std::vector<PathPart> path() const override { return {{QStringLiteral("Counting")}}; }
        int& alive_;
    };
    int alive = 0, made = 0;
    frame_.addPage(kTripLogPage, [&] { return ++made, new Counting(alive); });
    EXPECT_TRUE(action(CommandId::TripLog)->isEnabled());
    EXPECT_EQ(made, 0);
    action(CommandId::TripLog)->trigger();
    action(CommandId::Home)->trigger();
    action(CommandId::TripLog)->trigger();
    EXPECT_EQ(made, 1);
    EXPECT_EQ(frame_.findChild<QLabel*>(QStringLiteral("pageTitle"))->text(), QStringLiteral("Counting"));
    action(CommandId::New)->trigger();
    EXPECT_EQ(made, 2);
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(frame_.pages().current(), kTripLogPage);
    EXPECT_FALSE(frame_.pages().show(12345));
}

TEST_F(MainFrameTest, CommandsTakeTheOpenEntry) {
    test::addTrip(document_, 1'700'000'000);
    frame_.pages().show(kTripLogPage);
    auto* trips = frame_.findChild<TSpreadsheet*>(QStringLiteral("TTripLogSummaryView"));
    trips->setCurrentCell(0, trips->model().indexOf("TTripLogCommentsColumn"));
    QTest::keyClicks(&trips->view(), QStringLiteral("x"));
    ASSERT_TRUE(trips->view().isEditing());
    EXPECT_FALSE(frame_.isWindowModified());
    action(CommandId::Home)->trigger();
    EXPECT_EQ(document_.trips().column<TTripLogCommentsColumn>().at(0), "x");
    EXPECT_TRUE(frame_.isWindowModified());
}

TEST_F(MainFrameTest, TheHomePageTellsOfTheDocument) {
    test::addTrip(document_, 1'700'000'000);
    test::addTrip(document_, 1'700'010'000);
    frame_.pages().show(kHomePage);
    EXPECT_EQ(frame_.findChild<QLabel*>(QStringLiteral("homeTrips"))->accessibleName(), QStringLiteral("Trips: 2"));
    EXPECT_TRUE(frame_.findChild<QLabel*>(QStringLiteral("homeDistance"))->text().startsWith(QLatin1String("24,000")));
    EXPECT_TRUE(frame_.findChild<QLabel*>(QStringLiteral("homeVehicles"))->alignment().testFlag(Qt::AlignAbsolute))
        << "a name that is read from right to left stays below its caption";
}

/// Holds the thread that works until the window has done what is waited for; 20 s at most.
void holdUntil(const std::function<bool()>& done) {
    for (int i = 0; i < 2000 && !done(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

TEST(DiskWork, VeryLongWorkCanBeCancelled) {
    QStringList seen;
    std::atomic<bool> refused = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog || dialog->objectName() != QLatin1String("DiskProgress"))
            return;
        const auto* bar = dialog->findChild<QProgressBar*>();
        auto* cancel = dialog->findChild<QPushButton*>();
        seen << bar->accessibleName() + QStringLiteral(" %1 ").arg(bar->value()) +
                    QLatin1String(cancel->isEnabled() ? "can be cancelled" : "goes on");
        if (seen.size() == 1) {
            QTest::keyClick(dialog, Qt::Key_Escape); // nothing to cancel yet: it stays
            refused = true;
        } else if (cancel->isEnabled()) {
            cancel->click();
        }
    });
    timer.start(50);
    const Result<void> result = runWhilePainting(
        [&](DiskProgress& progress) -> Result<void> {
            holdUntil([&] { return refused.load(); });
            progress.what = &kCopying;
            progress.done = 1;
            progress.total = 4;
            holdUntil([&] { return progress.cancelled.load(); });
            progress.total = 0;
            return Error{ErrorKind::Cancelled, {}};
        },
        nullptr);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().kind, ErrorKind::Cancelled);
    ASSERT_GE(seen.size(), 2);
    EXPECT_TRUE(seen.first().startsWith(QLatin1String("Saving")) && seen.first().endsWith(QLatin1String("goes on")))
        << seen.first().toStdString();
    EXPECT_EQ(seen.last(), QStringLiteral("Copying the file 250 can be cancelled"));
    EXPECT_FALSE(QApplication::activeModalWidget());
}

} // namespace
} // namespace quobrix
