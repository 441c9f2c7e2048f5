#include "views/log_plot_view.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "plots/panel_choices.h"
#include "plots/plot_figures.h"
#include "plots/plot_options.h"
#include "plots/time_window.h"
#include "plots/ui/plot_options_dialog.h"
#include "report/render.h"
#include "settings/settings.h"
#include "support/plot_hand.h"
#include "support/view_fixture.h"
#include "views/log_view.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QBackingStore>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPaintEvent>
#include <QPushButton>
#include <QStatusTipEvent>
#include <QTableWidget>
#include <QTest>
#include <QToolTip>

namespace quobrix {
namespace {

/// What the status bar is told.
class StatusTips final : public QObject {
public:
    explicit StatusTips(QObject& of) { of.installEventFilter(this); }
    QString last;

private:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::StatusTip)
            last = static_cast<QStatusTipEvent*>(event)->tip();
        return false;
    }
};

/// How many pixels of a widget are painted.
class PaintedPixels final : public QObject {
public:
    explicit PaintedPixels(QWidget& of) { of.installEventFilter(this); }
    int count = 0;

private:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            for (const QRect& part : static_cast<QPaintEvent*>(event)->region())
                count += part.width() * part.height();
        return false;
    }
};

using Texts = std::vector<std::string>;

class LogPlotViewTest : public test::ViewTest {
protected:
    void SetUp() override {
        for (std::int32_t n = 0; n < 2; ++n) {
            const RowIndex row = test::addTrip(document_, test::kStart + n * 86'400);
            document_.trips().column<TTripLogRecordColumn>().set(row, {test::kStart + n * 86'400, 0});
            // Ten minutes of speeds, ever faster.
            TTripLogSampleTable& samples = *document_.trips().column<TTripLogSampleTableColumn>().object(row);
            samples.insertRows(61, 540);
            std::vector<std::uint8_t> speeds;
            for (int second = 0; second <= 600; ++second)
                speeds.push_back(static_cast<std::uint8_t>(second / 6));
            samples.speed().setAll(speeds);
        }
        open();
    }
    void open(LogId log = LogId::Trips) {
        page_ = std::make_unique<LogView>(context_, logSpec(log));
        page_->resize(1000, 900);
        page_->show();
        page_->activateWindow();
        page_->refresh();
        page_->showView(LogViewKind::Plot);
        QApplication::processEvents();
    }
    PlotWidget& plot() const { return *page_->findChild<PlotWidget*>(QStringLiteral("Plot")); }
    test::PlotHand hand() const { return test::PlotHand(plot()); }
    QAction& action(const char* name) const { return *page_->findChild<QAction*>(QLatin1String(name)); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const { QTest::keyClick(&plot(), key, modifiers); }
    /// The menu's entries; "|" for a line between them, "x" before what is checked.
    QString menu() const {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, plot().mapToGlobal(QPoint()));
        QApplication::sendEvent(&plot(), &event);
        QStringList entries;
        auto* menu = page_->findChild<QMenu*>(QStringLiteral("PlotMenu"));
        for (const QAction* entry : menu->actions())
            entries << (entry->isSeparator() ? QStringLiteral("|")
                                             : (entry->isChecked() ? QStringLiteral("x ") : QString()) + entry->text());
        menu->close();
        delete menu;
        return entries.join(QLatin1Char(';'));
    }
    /// The keys of the panels from top to bottom.
    std::string panels() const {
        std::string keys;
        for (const PanelLayout& panel : plot().plotLayout().panels)
            keys += (keys.empty() ? "" : " ") + plot().data().panels[panel.panel].key;
        return keys;
    }
    QString cell(int row, int column) const {
        return page_->findChild<QTableWidget*>(QStringLiteral("PlotFiguresTable"))->item(row, column)->text();
    }
    double pixel() const { return plot().seen().length() / plot().plotLayout().width(); }

    std::unique_ptr<LogView> page_;
};

TEST_F(LogPlotViewTest, IsAViewOfTheRecord) {
    EXPECT_EQ(page_->title(), "View / Trip Log / Record 2 / Plot");
    EXPECT_EQ(page_->place().view, 204);
    EXPECT_EQ(panels(), "Speed Parameter2 FuelSystem1 FuelSystem2");
    EXPECT_TRUE(plot().accessibleName().startsWith("Trip 2, ")) << plot().accessibleName().toStdString();
    EXPECT_TRUE(plot().hasFocus());
    hand().drag(hand().at(10), hand().at(40));
    action("previousTrip").trigger();
    EXPECT_EQ(page_->title(), "View / Trip Log / Record 1 / Plot");
    EXPECT_FALSE(plot().zoomed()) << "another record is seen as a whole";
    const Report paper = *page_->printable({});
    EXPECT_TRUE(paper.wide);
    EXPECT_EQ(paper.title, plotTitle(plot().data(), context_.text()));

    document_.store().singleton<TAccidentLogTable>().insertRows(0, 1);
    open(LogId::Accidents);
    EXPECT_EQ(page_->title(), "View / Accident Log / Record 1 / Plot");
    EXPECT_EQ(page_->place().view, 234);
    EXPECT_EQ(panels(), "") << "nothing was sampled";
    key(Qt::Key_Right);
    key(Qt::Key_Plus);
    hand().mouse(QEvent::MouseMove, {200, 200});
    EXPECT_FALSE(plot().zoomed());
}

TEST_F(LogPlotViewTest, MouseZoomsAndEscapeGivesUpInTurn) {
    hand().drag(hand().at(100), hand().at(400));
    EXPECT_NEAR(plot().seen().from, 100, 1);
    EXPECT_NEAR(plot().seen().to, 400, 1);
    const QPointF point = hand().at(200);
    const double length = plot().seen().length();
    hand().wheel(point, {0, 120});
    EXPECT_NEAR(plot().seen().length(), length / 1.25, 1e-9);
    EXPECT_NEAR(*plot().plotLayout().placeAt(point.x()), 200, 2 * pixel());
    const PlotRange seen = plot().seen();
    hand().drag(hand().at(200), hand().at(250), Qt::MiddleButton);
    EXPECT_NEAR(plot().seen().from, seen.from - 50, 2 * pixel());
    hand().wheel(point, {-120, 0});
    EXPECT_NEAR(plot().seen().from, seen.from - 50 + 60 * pixel(), 3 * pixel()) << "tilted";
    hand().wheel(point, {}, {}, {30, 0});
    EXPECT_NEAR(plot().seen().from, seen.from - 50 + 30 * pixel(), 3 * pixel()) << "a touchpad";
    hand().drag(hand().at(200), hand().at(300), Qt::LeftButton, Qt::ShiftModifier);
    EXPECT_EQ(plot().pointers().range, (PlotRange{200, 300}));

    hand().mouse(QEvent::MouseButtonPress, hand().at(220), Qt::LeftButton);
    hand().mouse(QEvent::MouseMove, hand().at(280));
    key(Qt::Key_Escape);
    EXPECT_TRUE(plot().pointers().range) << "the drag is given up first";
    key(Qt::Key_Escape);
    EXPECT_FALSE(plot().pointers().range);
    EXPECT_TRUE(plot().zoomed());
    key(Qt::Key_Escape);
    EXPECT_FALSE(plot().zoomed());
    EXPECT_EQ(page_->place().view, 204);
    key(Qt::Key_Escape);
    EXPECT_TRUE(page_->place().list) << "and then to the row";
}

TEST_F(LogPlotViewTest, KeysMoveMarkAndZoom) {
    StatusTips tips(*page_);
    struct Step {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        double cursor;
        std::optional<PlotRange> range;
    };
    const std::optional<PlotRange> none;
    const Step steps[] = {{Qt::Key_Home, {}, 0, none},
                          {Qt::Key_Right, {}, 1, none},
                          {Qt::Key_Right, Qt::ShiftModifier, 2, PlotRange{1, 2}},
                          {Qt::Key_PageDown, Qt::ShiftModifier, 62, PlotRange{1, 62}},
                          {Qt::Key_Left, {}, 61, PlotRange{1, 62}},
                          {Qt::Key_Left, Qt::ShiftModifier, 60, PlotRange{60, 61}},
                          {Qt::Key_PageUp, {}, 0, PlotRange{60, 61}},
                          {Qt::Key_End, {}, 600, PlotRange{60, 61}},
                          {Qt::Key_Right, {}, 600, PlotRange{60, 61}}};
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        key(steps[i].key, steps[i].modifiers);
        EXPECT_EQ(plot().pointers().cursor, steps[i].cursor) << i;
        EXPECT_EQ(plot().pointers().range, steps[i].range) << i;
    }
    EXPECT_FALSE(action("PlotUnzoom").isEnabled());
    key(Qt::Key_Plus);
    EXPECT_NEAR(plot().seen().length(), 300, 1e-9);
    EXPECT_TRUE(action("PlotUnzoom").isEnabled());
    key(Qt::Key_Home);
    EXPECT_LE(plot().seen().from, 0) << "the cursor is followed";
    for (int i = 0; i < 20; ++i)
        key(Qt::Key_Plus);
    EXPECT_EQ(tips.last, "Maximum magnification reached.");
    key(Qt::Key_Escape); // gives up the range
    key(Qt::Key_Escape);
    EXPECT_EQ(tips.last, "") << "it is no longer so";
    for (int i = 0; i < 20; ++i)
        key(Qt::Key_Plus);
    EXPECT_NEAR(plot().seen().length(), leastRange(plot().data(), plot().plotLayout().width()), 1e-6);
    page_->resize(1600, 900);
    EXPECT_NEAR(plot().seen().length(), leastRange(plot().data(), plot().plotLayout().width()), 1e-6);
    key(Qt::Key_Minus);
    key(Qt::Key_0);
    EXPECT_FALSE(plot().zoomed());
}

TEST_F(LogPlotViewTest, APartThatIsPaintedAnewLooksLikeTheWhole) {
    action("PlotLines").trigger();
    key(Qt::Key_Plus);
    QApplication::processEvents(); // painted as a whole
    const auto shown = [this] {
        const auto* window = dynamic_cast<QImage*>(page_->backingStore()->paintDevice());
        return window ? window->copy(QRect(plot().mapTo(page_.get(), QPoint()), plot().size())) : QImage();
    };
    const QImage whole = shown();
    ASSERT_FALSE(whole.isNull());
    plot().repaint(QRect(0, 0, plot().width() / 2, plot().height()));
    plot().repaint(QRect(plot().width() / 2, 0, plot().width() / 2 + 1, plot().height()));
    EXPECT_EQ(shown(), whole);
}

TEST_F(LogPlotViewTest, TellsWhatIsUnderThePointer) {
    hand().mouse(QEvent::MouseMove, hand().at(12.2));
    EXPECT_NEAR(*plot().pointers().cursor, 12.2, 1e-6);
    EXPECT_TRUE(QToolTip::text().contains("00:00:12 (")) << QToolTip::text().toStdString();
    EXPECT_EQ(cell(0, 0), "Speed");
    const QString speed = cell(0, 1);
    EXPECT_FALSE(speed.isEmpty());
    QApplication::processEvents();
    PaintedPixels painted(plot());
    hand().mouse(QEvent::MouseMove, hand().at(300));
    QApplication::processEvents();
    EXPECT_GT(painted.count, 0);
    EXPECT_LT(painted.count, plot().width() * plot().height() / 10) << "the plot itself is not painted anew";
    hand().mouse(QEvent::MouseMove, hand().at(12.2));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&plot(), &leave);
    EXPECT_FALSE(plot().pointers().cursor);
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));

    action("PlotCoordinates").trigger();
    hand().mouse(QEvent::MouseMove, hand().at(14));
    EXPECT_FALSE(QToolTip::isVisible());
    EXPECT_TRUE(plot().pointers().cursor) << "the crosshair is always there";
    hand().mouse(QEvent::MouseMove, hand().at(15), Qt::NoButton, Qt::ControlModifier);
    EXPECT_TRUE(QToolTip::isVisible());
    QApplication::sendEvent(&plot(), &leave);
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));

    key(Qt::Key_Home);
    for (int i = 0; i < 12; ++i)
        key(Qt::Key_Right);
    EXPECT_EQ(cell(0, 1), speed) << "figures say what the tip says";
    const QString shown = page_->findChild<QLabel*>(QStringLiteral("PlotRange"))->text();
    EXPECT_TRUE(shown.startsWith("Shown: 00:00:00 to 00:10:00")) << shown.toStdString();
    plot().markRange(PlotRange{10, 20});
    const RangeFigures figures = figuresOf(plot().data(), {10, 20}, context_.text());
    EXPECT_EQ(cell(0, 2), toQt(figures.curves[0].leastText));
    EXPECT_EQ(cell(0, 4), toQt(figures.curves[0].greatestText));
    EXPECT_TRUE(page_->findChild<QLabel*>(QStringLiteral("PlotRange"))
                    ->text()
                    .startsWith("Selected: 00:00:10 to 00:00:20 (00:00:10, "));
}

TEST_F(LogPlotViewTest, MenuTogglesTheOptionsOfEveryPlot) {
    const QString last = ";|;|;x &Speed Bands;x &Braking Events;x &Acceleration Events;Line Plot;x Plot Coordinates;"
                         "Normalize Axis;U&nit Systems...;&Help";
    EXPECT_EQ(menu(), "Speed;&Quantities;x Fi&gures;Save &As...;&Copy As" + last);
    key(Qt::Key_Plus);
    EXPECT_EQ(menu(), "Speed;&Quantities;x Fi&gures;Save &As...;&Unzoom;&Copy As" + last);
    action("PlotUnzoom").trigger();
    EXPECT_FALSE(plot().zoomed());
    for (const char* name : {"PlotSpeedBands", "PlotBrakingEvents", "PlotAccelerationEvents", "PlotLines",
                             "PlotCoordinates", "PlotNormalize", "PlotFigures"})
        action(name).trigger();
    const PlotOptions turned{true, true, true, 25, false, false, false};
    EXPECT_EQ(plot().view().options, turned);
    EXPECT_EQ(settings_.getText("TIOPlotTooltipsColumn", "Value"), "1");
    EXPECT_FALSE(page_->findChild<QWidget*>(QStringLiteral("PlotFigures"))->isVisible());
    open();
    EXPECT_EQ(plot().view().options, turned) << "remembered";
    EXPECT_TRUE(menu().endsWith("x Line Plot;Plot Coordinates;x Normalize Axis;U&nit Systems...;&Help"));
    document_.store().singleton<TAccidentLogTable>().insertRows(0, 1);
    open(LogId::Accidents);
    EXPECT_EQ(menu(),
              "Fi&gures;Save &As...;&Copy As;|;|;x Line Plot;Plot Coordinates;x Normalize Axis;U&nit Systems...;&Help");

    action("PlotCopyMetafile").trigger();
    EXPECT_TRUE(QApplication::clipboard()->mimeData()->data("image/svg+xml").startsWith("<"));
    action("PlotCopyBitmap").trigger();
    EXPECT_EQ(QApplication::clipboard()->image().width(), 960);
}

TEST_F(LogPlotViewTest, PanelsAreHiddenMovedAndSized) {
    const auto heights = [&](std::size_t panel) { return plot().plotLayout().panels[panel].area.height; };
    menu(); // opened on the speed
    EXPECT_FALSE(action("PlotPanelUp").isEnabled());
    action("PlotPanelDown").trigger();
    EXPECT_EQ(panels(), "Parameter2 Speed FuelSystem1 FuelSystem2");
    EXPECT_EQ(cell(1, 0), "Speed") << "the figures stand in the same order";
    const auto title = [&](std::size_t panel) {
        const Box& grip = plot().plotLayout().panels[panel].grip;
        return QPointF(grip.left + grip.width / 2, grip.top + grip.height / 2);
    };
    hand().mouse(QEvent::MouseMove, title(1));
    EXPECT_TRUE(QToolTip::text().startsWith("Drag the title")) << QToolTip::text().toStdString();
    hand().drag(title(1), title(0));
    EXPECT_EQ(panels(), "Speed Parameter2 FuelSystem1 FuelSystem2");
    hand().drag(title(0), title(3) + QPointF(0, plot().plotLayout().panels[3].area.height + 60));
    EXPECT_EQ(panels(), "Parameter2 FuelSystem1 FuelSystem2 Speed");
    hand().drag(title(3), title(1));
    EXPECT_EQ(panels(), "Parameter2 Speed FuelSystem1 FuelSystem2");
    hand().mouse(QEvent::MouseButtonPress, title(0), Qt::LeftButton);
    hand().mouse(QEvent::MouseMove, title(2));
    key(Qt::Key_Escape);
    hand().mouse(QEvent::MouseButtonRelease, title(2), Qt::LeftButton);
    EXPECT_EQ(panels(), "Parameter2 Speed FuelSystem1 FuelSystem2") << "given up";
    const double before = heights(0);
    const QPointF border(300, plot().plotLayout().panels[0].scale.bottom);
    hand().drag(border, border + QPointF(0, 30));
    EXPECT_NEAR(heights(0), before + 30, 2);
    EXPECT_EQ(panels(), "Parameter2 Speed FuelSystem1 FuelSystem2");
    EXPECT_FALSE(plot().zoomed());
    menu();
    action("PlotPanelHide").trigger();
    EXPECT_EQ(panels(), "Speed FuelSystem1 FuelSystem2");
    open();
    EXPECT_EQ(panels(), "Speed FuelSystem1 FuelSystem2") << "remembered";
    EXPECT_EQ(page_->findChild<QTableWidget*>(QStringLiteral("PlotFiguresTable"))->rowCount(), 3);
    plot().setFocus();
    key(Qt::Key_Down);
    EXPECT_TRUE(plot().spokenText().startsWith("Fuel System Status 1 (2 of 3). ")) << plot().spokenText().toStdString();
    key(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(panels(), "FuelSystem1 Speed FuelSystem2");
    EXPECT_FALSE(action("PlotPanelUp").isEnabled());
    const double low = heights(0);
    key(Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_GT(heights(0), low);
    key(Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NEAR(heights(0), low, 1);
    menu();
    action("PlotPanelDown").trigger();
    EXPECT_EQ(panels(), "Speed FuelSystem1 FuelSystem2") << "the menu of the keyboard is that of the chosen one";
    for (int i = 0; i < 3; ++i) {
        menu();
        action("PlotPanelHide").trigger();
    }
    EXPECT_EQ(panels(), "");
    EXPECT_EQ(
        plot().describe(),
        "All quantities are hidden. In the menu of the right mouse button, Quantities / Show All shows them again.");
    key(Qt::Key_Plus);
    key(Qt::Key_Right);
    hand().drag({100, 100}, {300, 200});
    EXPECT_FALSE(plot().zoomed());
    action("PlotPanelsReset").trigger();
    hand().mouse(QEvent::MouseButtonPress, {200, 200}, Qt::LeftButton);
    hand().mouse(QEvent::MouseMove, {400, 220});
    plot().setPanels({{"Speed", true}, {"Parameter2", true}, {"FuelSystem1", true}, {"FuelSystem2", true}});
    plot().grab();
    hand().mouse(QEvent::MouseButtonRelease, {400, 220}, Qt::LeftButton);
    EXPECT_FALSE(plot().zoomed()) << "all are hidden while part of one is chosen";
    plot().setPanels({});
    EXPECT_EQ(panels(), "Speed Parameter2 FuelSystem1 FuelSystem2");
    settings_.setText("Plots", "Panels", "Speed -:7 -Parameter2:9e9 FuelSystem1:999999 x:");
    open();
    EXPECT_EQ(panels(), "FuelSystem1 Speed FuelSystem2") << "what can be read of it";
}

TEST_F(LogPlotViewTest, StaysAsItIsInOtherUnitsAndAfterEdits) {
    hand().drag(hand().at(100), hand().at(400));
    plot().markRange(PlotRange{200, 300});
    const PlotRange seen = plot().seen();
    units_.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
    page_->unitsChanged();
    EXPECT_EQ(plot().seen(), seen);
    EXPECT_EQ(plot().pointers().range, (PlotRange{200, 300}));
    EXPECT_TRUE(cell(0, 2).endsWith(" MPH")) << cell(0, 2).toStdString();
    page_->showView(LogViewKind::Table);
    page_->findChild<TSpreadsheet*>(QStringLiteral("TTripLogSampleTable"))->setCurrentRow(2);
    page_->showView(LogViewKind::Plot);
    EXPECT_EQ(plot().pointers().cursor, 2.0) << "the sample of the table";
    plot().zoomTo({550, 600});
    settings_.setText("Plots", "Panels", "-Speed:100 -Parameter2:100 -FuelSystem1:100 -FuelSystem2:100");
    page_->edited();
    document_.trips().column<TTripLogSampleTableColumn>().object(1)->speed().setAll({1, 2, 3});
    page_->edited();
    EXPECT_GE(plot().seen().from, plot().data().whole.from);
    EXPECT_LE(plot().seen().to, plot().data().whole.to) << "a shorter record, while nothing of it was shown";
}

TEST_F(LogPlotViewTest, LinesOfTheReportLeadThere) {
    const auto follow = [&](const QString& line) {
        page_->showView(LogViewKind::Report);
        for (auto* link : page_->findChildren<QPushButton*>(QStringLiteral("plotLink")))
            if (link->text() == line) {
                link->click();
                break;
            }
        QApplication::processEvents();
        EXPECT_EQ(page_->place().view, 204) << line.toStdString();
    };
    follow("Extreme Brake");
    EXPECT_EQ(plot().pointers().cursor, 61.0);
    EXPECT_FALSE(plot().pointers().band);
    hand().drag(hand().at(10), hand().at(40));
    follow("Hard Acceleration");
    EXPECT_EQ(plot().seen().from, 0) << "as far in the middle as can be";
    follow(toQt(plot().data().bands[2].label));
    EXPECT_EQ(plot().pointers().band, 2u);
    EXPECT_TRUE(plot().zoomed());
    key(Qt::Key_Escape);
    EXPECT_FALSE(plot().pointers().band);
    EXPECT_TRUE(plot().zoomed());
}

TEST_F(LogPlotViewTest, SelectedTripsAreCompared) {
    page_->showView(LogViewKind::Summary);
    EXPECT_FALSE(action("RecordCompare").isEnabled()) << "one alone";
    page_->summary().view().selectAll();
    EXPECT_TRUE(action("RecordCompare").isEnabled());
    action("RecordCompare").trigger();
    auto& window = *page_->findChild<QDialog*>(QStringLiteral("Comparison"));
    EXPECT_EQ(window.windowTitle(), "Comparison of Trip 1, Trip 2");
    auto& compared = *window.findChild<PlotWidget*>();
    Texts legend;
    for (const LegendEntry& entry : compared.plotLayout().legend)
        legend.push_back(entry.label.text);
    EXPECT_EQ(legend, (Texts{"Trip 1", "Trip 2", "Speed Bands of Trip 1", "Hard Brake of Trip 1",
                             "Extreme Brake of Trip 1", "Hard Acceleration of Trip 1"}));
    test::PlotHand over(compared);
    over.mouse(QEvent::MouseMove, over.at(12));
    EXPECT_EQ(QToolTip::text().count("<tr>"), 5) << "a row for each quantity: " << QToolTip::text().toStdString();
    compared.zoomTo({10, 40});
    units_.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
    EXPECT_TRUE(compared.zoomed());
    page_->showView(LogViewKind::Plot);
    window.findChild<QAction*>("PlotSpeedBands")->trigger();
    EXPECT_FALSE(plot().view().options.bands) << "what is set in one plot holds for all";
    action("PlotSpeedBands").trigger();
    EXPECT_TRUE(compared.view().options.bands);
    auto& along = *window.findChild<QComboBox*>(QStringLiteral("ComparedAlong"));
    along.setCurrentIndex(1);
    EXPECT_EQ(compared.data().axis, PlotAxis::Distance);
    EXPECT_FALSE(compared.zoomed());
    EXPECT_TRUE(document_.edits().removeRows(document_.trips().id(), {0}).ok());
    QApplication::processEvents();
    EXPECT_FALSE(window.isVisible()) << "one trip is left";
    open(LogId::Accidents);
    EXPECT_FALSE(action("RecordCompare").isVisible());
}

TEST_F(LogPlotViewTest, SpeaksToAssistiveTechnology) {
    QAccessibleInterface* chart = QAccessible::queryAccessibleInterface(&plot());
    EXPECT_EQ(chart->role(), QAccessible::Chart);
    EXPECT_TRUE(chart->text(QAccessible::Name).startsWith("Trip 2, "));
    const QString all = chart->text(QAccessible::Description);
    EXPECT_TRUE(all.contains("Speed: least ") && all.contains("rising on the whole."));
    key(Qt::Key_Home);
    key(Qt::Key_Right);
    EXPECT_TRUE(chart->text(QAccessible::Name).startsWith("00:00:01, Speed "))
        << chart->text(QAccessible::Name).toStdString();
    EXPECT_EQ(chart->text(QAccessible::Value), plot().spokenText());
    QAccessibleValueInterface* value = chart->valueInterface();
    ASSERT_TRUE(value);
    EXPECT_EQ(value->currentValue().toDouble(), 1);
    EXPECT_EQ(value->maximumValue().toDouble(), 600);
    value->setCurrentValue(30.2);
    EXPECT_TRUE(chart->text(QAccessible::Name).startsWith("00:00:30, Hard Brake, Speed "));
    key(Qt::Key_Right, Qt::ShiftModifier);
    key(Qt::Key_Right, Qt::ShiftModifier);
    const QString range = plot().spokenRange();
    EXPECT_TRUE(range.startsWith("Selected: 00:00:30 to 00:00:32 (00:00:02, ")) << range.toStdString();
    EXPECT_TRUE(chart->text(QAccessible::Value).endsWith(range));
    EXPECT_TRUE(chart->text(QAccessible::Description).startsWith(range + ". Speed: "))
        << chart->text(QAccessible::Description).toStdString();
}

TEST_F(LogPlotViewTest, OptionsAreTakenBackByCancel) {
    const PlotOptions before = plotOptions(settings_);
    const auto change = [&](TPlotOptionsDialog& dialog, const char* maximum) {
        dialog.findChild<QCheckBox*>(QStringLiteral("TIODrawPlotsAsLinesColumn"))->click();
        auto* field = dialog.findChild<QLineEdit*>(QStringLiteral("TIOVerticalAxisMaximumColumn"));
        field->selectAll();
        QTest::keyClicks(field, QLatin1String(maximum));
    };
    units_.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
    {
        TPlotOptionsDialog dialog(
            context_.text(), settings_, [&] { page_->edited(); }, nullptr);
        EXPECT_EQ(dialog.findChildren<QCheckBox*>().size(), 6);
        EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("TIOVerticalAxisMaximumColumn"))->text(), "90");
        change(dialog, "50");
        EXPECT_TRUE(plot().view().options.lines) << "shown in open plots";
        EXPECT_NEAR(plot().view().options.maximum, 50 / 3.6, 1e-6);
        dialog.reject();
        EXPECT_EQ(plot().view().options, before);
    }
    TPlotOptionsDialog dialog(
        context_.text(), settings_, [] {}, nullptr);
    dialog.show();
    struct Case {
        const char* typed;
        bool taken, said;
    };
    for (const Case& c : {Case{"256", false, true}, Case{"x", false, true}, Case{"101", true, true}}) {
        auto* field = dialog.findChild<QLineEdit*>(QStringLiteral("TIOVerticalAxisMaximumColumn"));
        field->selectAll();
        QTest::keyClicks(field, QLatin1String(c.typed));
        EXPECT_NE(dialog.findChild<QLabel*>(QStringLiteral("PlotOptionsStatus"))->text().isEmpty(), c.said) << c.typed;
        dialog.accept();
        EXPECT_NE(dialog.isVisible(), c.taken) << c.typed;
    }
    EXPECT_NEAR(plotOptions(settings_).maximum, 101 / 3.6, 1e-6);
}

} // namespace
} // namespace quobrix
