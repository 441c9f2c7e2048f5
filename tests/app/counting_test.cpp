#include "model/parameter_thresholds.h"
#include "model/record_edits.h"
#include "summary/ui/trip_counter.h"
#include "support/frame_fixture.h"
#include "support/temporary_folder.h"
#include "units/date_time.h"
#include "views/driving_panel.h"
#include "views/log_view.h"
#include "views/summary_log_dialog.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <filesystem>
#include <optional>

namespace quobrix {
namespace {

using namespace test;

TEST(DrivingDetail, IsAPlaceWhateverItsKeysHold) {
    DrivingDetail detail{{.vehicle = "X\nmonth\tq", .driver = "K\xFC%41\x01"}, drivingFigure("hardBrakes")};
    detail.only.month = CalendarMonth{2026, 3};
    const DrivingDetail again = DrivingDetail::of(detail.subject());
    EXPECT_EQ(again.only.vehicle, detail.only.vehicle);
    EXPECT_EQ(again.only.driver, detail.only.driver);
    EXPECT_EQ(again.only.month, detail.only.month);
    EXPECT_EQ(again.figure, detail.figure);
    EXPECT_FALSE(DrivingDetail::of("").any());
}

/// The main frame, whose documents' trips are counted in a database of the test's own.
class CountingTest : public FrameTest {
protected:
    CountingTest() {
        frame_.countBy(counter_);
        TQuobrixDocument made;
        for (int i = 0; i < 3; ++i) {
            const RowIndex row = addTrip(made, kStart + 3600 * i);
            made.trips().column<TTripLogRecordColumn>().set(row, {kStart + 3600 * i, 0});
        }
        for (const char* name : {"Trips.car", "Example.car"})
            EXPECT_TRUE(made.saveAs(folder_ / name));
    }

    ~CountingTest() override { std::filesystem::current_path(startFolder_); } // opening a file changes it

    std::size_t counted() const { return keeper_.records() ? keeper_.records()->size() : 0; }
    std::size_t countedOf(const char* driver) const {
        return keeper_.records() ? static_cast<std::size_t>(
                                       std::ranges::count(*keeper_.records(), std::string_view(driver),
                                                          [](const SummaryRecord& each) { return each.driver.view(); }))
                                 : 0;
    }

    const std::filesystem::path startFolder_ = std::filesystem::current_path();
    TemporaryFolder folder_;
    SummaryKeeper keeper_{folder_ / "Quobrix.cdb", FileSystem::system(), {std::chrono::milliseconds(20)}};
    TripCounter counter_{document_, settings_, keeper_};
};

TEST_F(CountingTest, WhatIsOpenedEditedAndUndoneIsCountedOnce) {
    ASSERT_TRUE(frame_.files().open(folder_ / "Example.car"));
    QTest::qWait(0);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "Quobrix.cdb")) << "the example is nobody's driving";
    ASSERT_TRUE(frame_.files().open(folder_ / "Trips.car"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == 3; }));
    ASSERT_TRUE(giveDriver(document_, {1}, 7).ok());
    EXPECT_TRUE(QTest::qWaitFor([&] { return countedOf("7") == 1; }));
    document_.edits().undo();
    EXPECT_TRUE(QTest::qWaitFor([&] { return countedOf("7") == 0; }));
    // A record that a person deletes comes back only when it is asked for.
    QSignalSpy changed(&keeper_, &SummaryKeeper::changed);
    keeper_.remove({keeper_.records()->front()}, [](const Result<void>& done, const ShownText&) { EXPECT_TRUE(done); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == 2; }));
    ASSERT_TRUE(frame_.files().open(folder_ / "Example.car"));
    changed.clear();
    ASSERT_TRUE(frame_.files().open(folder_ / "Trips.car"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return changed.size() > 0; }));
    EXPECT_EQ(counted(), 2u);
    counter_.countAgain();
    EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == 3; }));
}

TEST_F(CountingTest, TheHomePageSaysHowWasDrivenAndLeadsToTheTrips) {
    frame_.pages().show(kHomePage);
    frame_.show();
    const auto text = [&](const char* name) { return frame_.findChild<QLabel*>(QLatin1String(name))->text(); };
    const auto tile = [&](const char* name) { return frame_.findChild<QAbstractButton*>(QLatin1String(name)); };
    const auto choose = [&](const char* name, int index) {
        auto* box = frame_.findChild<QComboBox*>(QLatin1String(name));
        box->setCurrentIndex(index);
        emit box->activated(index);
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return keeper_.records() != nullptr; }));
    EXPECT_TRUE(text("homeState").startsWith("No trip has been counted yet."));
    ASSERT_TRUE(frame_.files().open(folder_ / "Trips.car"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == 3; }));
    auto* period = frame_.findChild<QComboBox*>("homePeriod");
    EXPECT_TRUE(QTest::qWaitFor([&] { return period->currentText() == "All Counted Trips"; }))
        << "they are of long ago";
    EXPECT_EQ(settings_.getText("Home Page", "Period", "-"), "-") << "nobody has chosen it";
    choose("homePeriod", period->findText("Last 3 Months"));
    EXPECT_TRUE(text("homeState").endsWith("Choose another period."));
    EXPECT_TRUE(frame_.findChild<QWidget*>("homeChart1")->isHidden());
    tile("homeShowAll")->click();
    EXPECT_EQ(tile("homeFigure_distance")->accessibleName(), "Distance: 36,000.00 m");
    EXPECT_EQ(tile("homeFigure_idleShare")->accessibleName(), "Share of Idle Time: 10%");
    EXPECT_EQ(text("homeInFile"), "3 of 3 trips are in this file.");
    units_.setUnit(UnitTypeId::Distance, UnitId::Kilometre);
    EXPECT_EQ(tile("homeFigure_distance")->accessibleName(), "Distance: 36.0 km");
    ASSERT_TRUE(giveDriver(document_, {0, 2}, 7).ok());
    document_.drivers().nameAll(document_.drivers().addMissing(std::vector<std::string>{"7"}), "Anna");
    EXPECT_TRUE(QTest::qWaitFor([&] { return countedOf("7") == 2; }));
    choose("homeDriver", frame_.findChild<QComboBox*>("homeDriver")->findText("Anna"));
    EXPECT_EQ(tile("homeFigure_distance")->accessibleName(), "Distance: 24.0 km");
    EXPECT_EQ(tile("homeFigure_idleShare")->accessibleDescription(), "fewer than three trips");
    EXPECT_EQ(text("homeInFile"), "2 of 2 trips are in this file.");
    const std::optional<Report> printed = frame_.pages().page(kHomePage)->printable({});
    EXPECT_EQ(std::get<Grid>(printed->blocks.front()).rows.front(), (std::vector<std::string>{"Distance", "24.0 km"}));
    EXPECT_EQ(settings_.getText("Home Page", "Driver"), "7");
    // Figures, names and bars lead to details, and these to the trips.
    const auto press = [&](const char* name) {
        tile(name)->click();
        QApplication::processEvents();
        return frame_.findChild<QLabel*>("pageTitle")->accessibleName();
    };
    EXPECT_EQ(press("homeFigure_hardBrakes"), "Home / Anna, Hard Brakes per 100 km");
    EXPECT_TRUE(tile("homeFigure_distance")->isHidden());
    EXPECT_EQ(tile("rankedVehicles1")->accessibleName(), "Unknown #1: 16.7 (fewer than three trips)");
    frame_.show();
    QApplication::processEvents();
    tile("rankedVehicles1")->setFocus();
    frame_.pages().page(kHomePage)->refresh(); // as after every edit
    QApplication::processEvents();
    EXPECT_EQ(frame_.focusWidget()->objectName(), "rankedVehicles1") << "the keyboard stays where it is";
    EXPECT_EQ(press("rankedVehicles1"), "Home / Unknown #1, Anna");
    EXPECT_EQ(tile("homeFigure_distance")->accessibleName(), "Distance: 24.0 km");
    frame_.pages().step(-1);
    frame_.pages().step(-1);
    EXPECT_EQ(frame_.findChild<QLabel*>("pageTitle")->accessibleName(), "");
    frame_.pages().step(1);
    frame_.pages().step(1);
    EXPECT_EQ(frame_.findChild<QLabel*>("homeState")->isHidden(), true);
    tile("homeShowTrips")->click();
    EXPECT_EQ(frame_.pages().current(), kTripLogPage);
    auto& list = static_cast<LogView*>(frame_.pages().page(kTripLogPage))->summary();
    EXPECT_EQ(list.model().rowCount(), 2);
    frame_.pages().step(-1);
    EXPECT_EQ(frame_.pages().current(), kHomePage);
    const std::optional<ExportContent> written = frame_.pages().page(kHomePage)->exported();
    ASSERT_TRUE(written);
    EXPECT_EQ(written->records[0].columns[3].column->text(0, context_.text()), "24.0");
}

TEST_F(CountingTest, EveryBarIsReachedByKeysAndNamesItsMonthAndValue) {
    const std::int32_t now = currentTime();
    TQuobrixDocument recent;
    for (int month = 0; month < 3; ++month) {
        const RowIndex row = addTrip(recent, now - 86400 * 31 * month);
        recent.trips().column<TTripLogRecordColumn>().set(row, {now - 86400 * 31 * month, 0});
    }
    ASSERT_TRUE(recent.saveAs(folder_ / "Recent.car"));
    frame_.pages().show(kHomePage);
    frame_.show();
    frame_.activateWindow();
    ASSERT_TRUE(frame_.files().open(folder_ / "Recent.car"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == 3; }));
    auto* period = frame_.findChild<QComboBox*>("homePeriod");
    EXPECT_EQ(period->currentText(), "Last 3 Months") << "some are of these";
    period->setCurrentIndex(period->count() - 1);
    emit period->activated(period->currentIndex());
    std::vector<QAbstractButton*> bars;
    for (QAbstractButton* bar : frame_.findChild<QWidget*>("homeChart1")->findChildren<QAbstractButton*>())
        if (!bar->isHidden())
            bars.push_back(bar);
    ASSERT_GE(bars.size(), 2u);
    EXPECT_TRUE(bars.back()->accessibleName().startsWith("Distance (m), "));
    EXPECT_TRUE(bars.back()->accessibleName().endsWith("12,000.00 m")) << bars.back()->accessibleName().toStdString();
    EXPECT_EQ(bars.back()->focusPolicy(), Qt::StrongFocus) << "Tab comes to the newest one";
    EXPECT_EQ(bars.front()->focusPolicy(), Qt::ClickFocus);
    QTest::keyClick(bars.back(), Qt::Key_Left);
    EXPECT_EQ(frame_.focusWidget(), bars[bars.size() - 2]);
    QTest::keyClick(frame_.focusWidget(), Qt::Key_Space);
    QTest::qWait(1);
    const std::string path = frame_.findChild<QLabel*>("pageTitle")->accessibleName().toStdString();
    EXPECT_EQ(path.find("Home / "), 0u) << path;
    EXPECT_TRUE(period->isHidden()) << "it is that month";
    EXPECT_EQ(frame_.findChild<QAbstractButton*>("homeFigure_trips")->accessibleName(), "Trips: 1");
    EXPECT_TRUE(frame_.findChild<QWidget*>("homeChart1")->isHidden());
    frame_.findChild<QAbstractButton*>("homeShowTrips")->click();
    EXPECT_EQ(static_cast<LogView*>(frame_.pages().page(kTripLogPage))->summary().model().rowCount(), 1);
}

TEST_F(CountingTest, TheSummaryLogFollowsWhatIsCountedAndDeleted) {
    frame_.show();
    const auto open = [&] {
        frame_.commands().trigger(CommandId::SummaryLog);
        return frame_.findChild<SummaryLogDialog*>();
    };
    // When the box is there, which a thread may have to end for.
    const auto answer = [](const char* message, QMessageBox::StandardButton button) {
        auto* look = new QTimer(qApp);
        QObject::connect(look, &QTimer::timeout, look, [=] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                delete look;
                EXPECT_EQ(box->objectName(), message);
                box->button(button)->click();
            }
        });
        look->start(1);
    };
    keeper_.read();
    EXPECT_TRUE(QTest::qWaitFor([&] { return keeper_.records() != nullptr; }));
    answer("NoSummaries", QMessageBox::Ok);
    EXPECT_EQ(open(), nullptr);
    ASSERT_TRUE(frame_.files().open(folder_ / "Trips.car"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == 3; }));
    SummaryLogDialog* dialog = open();
    ASSERT_NE(dialog, nullptr);
    TSpreadsheet& list = dialog->list();
    EXPECT_EQ(list.model().plainHeading(0), "Driver");
    EXPECT_EQ(list.model().text(1, list.model().indexOf("SummaryDistanceColumn")), "12,000.00 m");
    // What is counted beside it changes nothing of what a person has chosen.
    list.setCurrentRow(2);
    ASSERT_TRUE(giveDriver(document_, {0}, 7).ok());
    document_.drivers().nameAll(document_.drivers().addMissing(std::vector<std::string>{"7"}), "Anna");
    EXPECT_TRUE(QTest::qWaitFor([&] { return list.model().text(0, 0) == "Anna"; }));
    EXPECT_EQ(list.currentRow(), 2u);
    answer("DeleteSummaries", QMessageBox::No);
    dialog->findChild<QAbstractButton*>("deleteSummaries")->click();
    answer("DeleteSummaries", QMessageBox::Yes);
    QTest::keyClick(&list.view(), Qt::Key_Delete);
    EXPECT_TRUE(QTest::qWaitFor([&] { return list.model().rowCount() == 2; }));
    EXPECT_EQ(list.model().text(0, 0), "Anna") << "another one went";
    SummaryDatabase other;
    ASSERT_TRUE(other.open(folder_ / "Quobrix.cdb", SummaryDatabase::Access::Write));
    answer("DeleteAllSummaries", QMessageBox::Yes);
    dialog->findChild<QAbstractButton*>("deleteAllSummaries")->click();
    answer("SummariesNotDeleted", QMessageBox::Ok);
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return dialog->findChild<QAbstractButton*>("deleteAllSummaries")->isEnabled(); }));
    EXPECT_EQ(counted(), 2u);
    other.close();
    const QPointer closes(dialog);
    answer("DeleteAllSummaries", QMessageBox::Yes);
    dialog->findChild<QAbstractButton*>("deleteAllSummaries")->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return closes.isNull(); }));
    EXPECT_EQ(counted(), 0u);
    ASSERT_TRUE(frame_.files().open(folder_ / "Trips.car"));
    QTest::qWait(100);
    EXPECT_EQ(counted(), 0u) << "what was deleted does not come back by itself";
}

TEST_F(CountingTest, TripsAreReadOnceAndLetGoOfAgain) {
    const auto samplesInMemory = [&] {
        return std::ranges::count_if(document_.store().loadedObjects(), [](const PersistentObject* object) {
            return object->type().id() == TTripLogSampleTable::kType.id() ||
                   object->type().id() == TTripLogSampleSpeedColumn::kType.id();
        });
    };
    const auto topSpeeds = [&] {
        std::vector<std::uint32_t> times;
        for (const SummaryRecord& each : *keeper_.records())
            times.push_back(each.parameters[SummaryRecord::kSpeedSlot].timeOver);
        return times;
    };
    ASSERT_TRUE(frame_.files().open(folder_ / "Trips.car"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == 3; }));
    EXPECT_EQ(samplesInMemory(), 0);
    const auto& samples = document_.trips().column<TTripLogSampleTableColumn>();
    TTripLogSampleTable* held = samples.object(1); // by somebody who shows it
    ASSERT_EQ(held->speed().values().size(), 61u);
    ASSERT_TRUE(giveDriver(document_, {0, 1, 2}, 7).ok());
    EXPECT_TRUE(QTest::qWaitFor([&] { return countedOf("7") == 3; }));
    EXPECT_EQ(samplesInMemory(), 2);
    EXPECT_EQ(samples.object(1), held);
    // What is edited of a trip is counted, and so is what it is compared with.
    ASSERT_TRUE(correctSamples(document_, 2, std::vector<std::uint8_t>(61, 99)).ok());
    setParameterThreshold(settings_, 1, 20);
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return topSpeeds() == std::vector<std::uint32_t>({0, 0, 61});
    })) << topSpeeds()[2];
    document_.edits().undo();
    EXPECT_TRUE(QTest::qWaitFor([&] { return topSpeeds() == std::vector<std::uint32_t>({0, 0, 0}); }));
}

TEST_F(CountingTest, WhatAnotherProgramForbidsIsDoneLater) {
    SummaryDatabase other;
    ASSERT_TRUE(other.open(folder_ / "Quobrix.cdb", SummaryDatabase::Access::Write));
    ASSERT_TRUE(frame_.files().open(folder_ / "Trips.car"));
    QSignalSpy changed(&keeper_, &SummaryKeeper::changed);
    EXPECT_TRUE(QTest::qWaitFor([&] { return changed.size() > 1; })); // it was tried, and tried again
    EXPECT_EQ(counted(), 0u);
    EXPECT_EQ(keeper_.problem(), "") << "nobody can do anything about that";
    std::optional<ErrorKind> refused;
    keeper_.remove({SummaryRecord()}, [&](const Result<void>& done, const ShownText&) { refused = done.error().kind; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return refused.has_value(); })) << "a person waits for this";
    EXPECT_EQ(refused, ErrorKind::InUse);
    other.close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == 3; }));
}

} // namespace
} // namespace quobrix
