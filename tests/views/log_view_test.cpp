#include "views/log_view.h"

#include "base/ui/qt_text.h"
#include "report/render.h"
#include "report/ui/report_view.h"
#include "support/view_fixture.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>

namespace quobrix {
namespace {

class TripLogView : public test::ViewTest {
protected:
    void SetUp() override {
        for (std::int32_t n = 0; n < 3; ++n) {
            const RowIndex row = test::addTrip(document_, 1'000'000'000 + n * 86'400);
            document_.trips().column<TTripLogRecordColumn>().set(row, {1'000'000'000 + n * 86'400, 0});
        }
        view_ = std::make_unique<LogView>(context_, logSpec(LogId::Trips));
        view_->resize(1000, 700);
        view_->show();
        view_->refresh();
    }
    ReportView& report() const { return *view_->findChild<ReportView*>("TTripLogRecordView"); }
    QStringList reportTexts() const {
        QStringList texts;
        for (const QLabel* label : report().findChildren<QLabel*>())
            texts += label->text();
        return texts;
    }

    std::unique_ptr<LogView> view_;
};

TEST_F(TripLogView, IsWalkedThroughByTheKeyboard) {
    EXPECT_EQ(view_->title(), "View / Trip Log / Summary");
    QTest::keyClick(&view_->summary().view(), Qt::Key_Up);
    QTest::keyClick(&view_->summary().view(), Qt::Key_Return);
    EXPECT_EQ(view_->title(), "View / Trip Log / Record 2 / Report");
    EXPECT_TRUE(reportTexts().contains("Trip 2"));

    view_->findChild<QAction*>("previousTrip")->trigger();
    EXPECT_EQ(view_->title(), "View / Trip Log / Record 1 / Report");
    EXPECT_TRUE(reportTexts().contains("Trip 1"));
    EXPECT_FALSE(view_->findChild<QAction*>("previousTrip")->isEnabled());

    view_->showView(LogViewKind::Table);
    EXPECT_EQ(view_->title(), "View / Trip Log / Record 1 / Table");
}

TEST_F(TripLogView, ReportFollowsUnitsAndIsCopiedAsText) {
    view_->showView(LogViewKind::Report);
    EXPECT_TRUE(reportTexts().contains("12,000.00 m"));
    units_.setUnit(UnitTypeId::Distance, UnitId::Kilometre);
    view_->refresh();
    EXPECT_TRUE(reportTexts().filter("12,000.00 m").isEmpty());
    EXPECT_FALSE(reportTexts().filter(" km").isEmpty());

    QTest::keyClick(&report(), Qt::Key_C, Qt::ControlModifier);
    const TextContext text = context_.text();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(),
              renderText(recordReport(logSpec(LogId::Trips), document_.trips(), 2, text)));
}

TEST_F(TripLogView, AnotherUnitMovesNothing) {
    for (std::int32_t n = 0; n < 200; ++n)
        document_.trips().column<TTripLogDistanceColumn>().set(test::addTrip(document_, 1'000'500'000 + n * 86'400), n);
    view_->refresh();
    QTableView& list = view_->summary().view();
    const int distance = view_->summary().model().indexOf("TTripLogDistanceColumn");
    list.sortByColumn(distance, Qt::DescendingOrder);
    view_->summary().setCurrentRow(150);
    list.verticalScrollBar()->setValue(20);
    list.horizontalScrollBar()->setValue(40);
    const QString before = list.model()->index(0, distance).data().toString();
    const QModelIndexList selected = list.selectionModel()->selectedIndexes();

    units_.setUnit(UnitTypeId::Distance, UnitId::Foot);
    view_->unitsChanged();
    EXPECT_EQ(view_->summary().currentRow(), 150u);
    EXPECT_EQ(list.selectionModel()->selectedIndexes(), selected);
    EXPECT_EQ(list.verticalScrollBar()->value(), 20);
    EXPECT_EQ(list.horizontalScrollBar()->value(), 40);
    EXPECT_EQ(list.horizontalHeader()->sortIndicatorSection(), distance);
    EXPECT_EQ(before, "12,000.00 m");
    EXPECT_EQ(list.model()->index(0, distance).data().toString(), "39,370.08 ft");

    view_->resize(600, 300);
    view_->showView(LogViewKind::Report);
    QApplication::processEvents();
    QScrollBar& bar = *report().verticalScrollBar();
    bar.setValue(100);
    units_.setUnit(UnitTypeId::Distance, UnitId::Mile);
    view_->unitsChanged();
    QApplication::processEvents();
    EXPECT_EQ(bar.value(), 100);
    EXPECT_FALSE(reportTexts().filter(" Miles").isEmpty());
}

TEST_F(TripLogView, OffersWhatItShowsForPrinting) {
    const auto lines = [&](std::optional<RecordRange> range = {}) { return renderText(*view_->printable(range)); };
    QTableView& list = view_->summary().view();
    list.sortByColumn(view_->summary().model().indexOf("TTripLogStartTimeColumn"), Qt::DescendingOrder);
    list.setColumnHidden(view_->summary().model().indexOf("TTripLogEndTimeColumn"), true);
    const std::string all = lines();
    EXPECT_TRUE(all.starts_with("Trip Log\n\n  Trip  Vehicle ")) << all;
    EXPECT_NE(all.find("  Start Time           Duration"), std::string::npos) << "the end is hidden";
    EXPECT_TRUE(all.find("\n     3  ") < all.find("\n     1  ")) << "in the order that is shown";
    const std::string two = lines(RecordRange{2, 5});
    EXPECT_NE(two.find("\n     3  "), std::string::npos) << two;
    EXPECT_NE(two.find("\n     2  "), std::string::npos) << two;
    EXPECT_EQ(two.find("\n     1  "), std::string::npos) << two;
    EXPECT_FALSE(view_->printable(RecordRange{4, 9}));

    view_->showView(LogViewKind::Report);
    EXPECT_EQ(lines(), renderText(recordReport(logSpec(LogId::Trips), document_.trips(), 2, context_.text())));
    view_->showView(LogViewKind::Table);
    const std::string tables = lines();
    EXPECT_TRUE(tables.starts_with("Trip 3\n\nSamples\n  ")) << tables;
    EXPECT_NE(tables.find("\nSpeed Bands\n"), std::string::npos) << tables;
    EXPECT_NE(tables.find("\n  Idle "), std::string::npos) << tables;
    document_.newDocument();
    view_->refresh();
    EXPECT_FALSE(view_->printable({}));
}

TEST_F(TripLogView, TablesShowSamplesSeriesAndBands) {
    view_->showView(LogViewKind::Table);
    const auto* samples = view_->findChild<TSpreadsheet*>("TTripLogSampleTable");
    const auto header = [&](const TSpreadsheet* table, int section) {
        return table->model().headerData(section, Qt::Horizontal).toString();
    };
    ASSERT_EQ(samples->model().columnCount(), 5);
    EXPECT_EQ(samples->model().rowCount(), 61);
    EXPECT_EQ(header(samples, 3), "Engine Speed");
    EXPECT_EQ(samples->model().index(1, 3).data().toString(), "") << "sampled every 2 s";
    EXPECT_EQ(samples->model().index(0, 3).data().toString(), "13.33 Hz");
    EXPECT_EQ(samples->model().index(2, 3).data().toString(), "0.00 Hz") << "the vehicle gave no value";
    EXPECT_EQ(samples->model().index(5, 4).data().toString(), "O / C");
    EXPECT_EQ(samples->model().index(10, 4).data().toString(), "") << "nor a status";

    const auto* bands = view_->findChild<TSpreadsheet*>("TTripLogSpeedBandsTable");
    EXPECT_EQ(bands->model().headerData(0, Qt::Vertical).toString(), "Idle");
    EXPECT_EQ(bands->model().index(1, 2).data().toString(), "00:04:00");
}

TEST_F(TripLogView, UnreadableSamplesAreTold) {
    view_->showView(LogViewKind::Table);
    auto* samples = view_->findChild<TSpreadsheet*>("TTripLogSampleTable");
    const QString none = samples->view().emptyText();
    const ObjectId table = document_.trips().column<TTripLogSampleTableColumn>().at(2);
    document_.store().noteDamage(table, TTripLogSampleTable::kType.id(), ShownText::asItIs("it was damaged"));
    view_->refresh();
    EXPECT_EQ(samples->model().rowCount(), 0);
    EXPECT_EQ(samples->view().emptyText(), "The samples of this trip cannot be read.");
    EXPECT_NE(none, samples->view().emptyText());
}

class EveryLog : public test::ViewTest {
protected:
    static std::string text(const QWidget& widget) { return widget.accessibleName().toStdString(); }
};

TEST_F(EveryLog, IsAPageOfTheSameMake) {
    document_.store().singleton<TAccidentLogTable>();
    test::addTrip(document_, 1'000'000'000);
    test::addTrip(document_, 1'000'100'000);
    for (const LogId id : {LogId::Troubles, LogId::Activity, LogId::Accidents})
        document_.log(logSpec(id))->insertRows(0, 2);
    document_.troubles().column<TTroubleLogTroubleCodeColumn>().set(1, "P0301");
    struct Case {
        LogId id;
        const char *name, *tabs, *stem, *nextText, *current, *none, *reportTitle;
    };
    const Case cases[] = {{LogId::Trips, "TTripLog", "Summary,Report,Plot,Table", "Trip", "Next trip", "Trip 2 of 2",
                           "No trips", "View / Trip Log / Record 2 / Report"},
                          {LogId::Troubles, "TTroubleLog", "Summary,Record", "Trouble", "Next trouble code",
                           "Problem 2 of 2", "No trouble codes", "View / Vehicle Trouble Log / Record 2"},
                          {LogId::Activity, "TSecurityLog", "Summary,Record", "Activity", "Next event", "Event 2 of 2",
                           "No events", "View / Activity Log / Record 2"},
                          {LogId::Accidents, "TAccidentLog", "Summary,Report,Plot,Table", "Accident",
                           "Next severe stop", "Stop 2 of 2", "No severe stops",
                           "View / Accident Log / Record 2 / Report"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const LogSpec& spec = logSpec(c.id);
        LogView page(context_, spec);
        page.refresh();
        EXPECT_EQ(page.objectName(), QLatin1String(c.name) + "View");
        EXPECT_EQ(text(page), spec.title.english());
        EXPECT_EQ(page.title(), "View / " + toQt(spec.title.english()) + " / Summary");
        EXPECT_EQ(page.summary().objectName(), QLatin1String(c.name) + "SummaryView");
        const auto& tabs = *page.findChild<QTabWidget*>(toQt(spec.recordName) + "LogViews");
        QStringList names;
        for (int i = 0; i < tabs.count(); ++i) {
            names << tabs.tabText(i).remove('&');
            EXPECT_TRUE(tabs.isTabEnabled(i)) << i;
        }
        EXPECT_EQ(names.join(','), c.tabs);
        EXPECT_EQ(page.findChild<QLabel*>(QLatin1String("current") + c.stem)->text(), c.current);
        auto* next = page.findChild<QAction*>(QLatin1String("next") + c.stem);
        EXPECT_EQ(next->text(), c.nextText);
        EXPECT_FALSE(next->isEnabled());
        EXPECT_TRUE(page.findChild<QAction*>(QLatin1String("previous") + c.stem)->isEnabled());

        emit page.summary().rowActivated(1);
        EXPECT_EQ(page.title(), c.reportTitle);
        const auto* report = page.findChild<ReportView*>(QLatin1String(c.name) + "RecordView");
        EXPECT_EQ(renderText(report->report()), renderText(*page.printable({})));
        EXPECT_EQ(report->report().title, recordTitle(spec, *document_.log(spec), 1, context_.text()));
        page.findChild<QAction*>(QLatin1String("previous") + c.stem)->trigger();
        EXPECT_EQ(report->report().title, recordTitle(spec, *document_.log(spec), 0, context_.text()));
        EXPECT_TRUE(next->isEnabled());
        page.showCell(spec.comments->name, 1);
        EXPECT_EQ(page.title(), "View / " + toQt(spec.title.english()) + " / Summary");
        EXPECT_EQ(page.summary().currentRow(), 1u);
    }
    document_.newDocument(); // which has no accident log at all
    for (const Case& c : cases) {
        LogView page(context_, logSpec(c.id));
        page.refresh();
        EXPECT_EQ(page.summary().model().rowCount(), 0);
        EXPECT_TRUE(page.summary().view().accessibleDescription().contains("Download Quobrix Data")) << "what to do";
        EXPECT_EQ(page.findChild<QLabel*>(QLatin1String("current") + c.stem)->text(), c.none);
        page.showView(LogViewKind::Report);
        EXPECT_FALSE(page.printable({}));
        EXPECT_TRUE(page.title().endsWith(" / Summary")) << "there is no record to report";
    }
}

} // namespace
} // namespace quobrix
