/// Plots and pages under random events. QUOBRIX_EVENTS says how many there are; they are the same ones each time.

#include "paper/ui/page_view.h"
#include "plots/panel_choices.h"
#include "plots/random_plot.h"
#include "plots/time_window.h"
#include "plots/ui/plot_pane.h"
#include "settings/settings.h"
#include "support/plot_hand.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <QMenu>
#include <QPointer>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <set>

namespace quobrix {
namespace {

class RandomEvents : public ::testing::Test {
protected:
    int any(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
    bool oneIn(int count) { return any(count) == 0; }
    QPointF pointOn(const QWidget& widget) {
        return {any(widget.width() + 100) - 50.0, any(widget.height() + 100) - 50.0};
    }
    Qt::KeyboardModifiers modifiers() {
        constexpr Qt::KeyboardModifiers kModifiers[] = {{}, Qt::ShiftModifier, Qt::ControlModifier};
        return kModifiers[any(3)];
    }
    template <std::size_t N>
    void press(QWidget& widget, const Qt::Key (&keys)[N]) {
        QKeyEvent press(QEvent::KeyPress, keys[any(N)], modifiers());
        QApplication::sendEvent(&widget, &press);
    }

    static int count() {
        const char* const given = std::getenv("QUOBRIX_EVENTS");
        return given ? std::atoi(given) : 500;
    }

    std::mt19937 random_{13};
};

class PlotRandomEvents : public RandomEvents {
protected:
    void act() {
        PlotWidget& plot = pane_->plot();
        test::PlotHand hand(plot);
        constexpr Qt::Key kKeys[] = {Qt::Key_Left, Qt::Key_Right,  Qt::Key_PageUp, Qt::Key_PageDown,
                                     Qt::Key_Home, Qt::Key_End,    Qt::Key_Plus,   Qt::Key_Minus,
                                     Qt::Key_0,    Qt::Key_Escape, Qt::Key_Up,     Qt::Key_Down};
        constexpr Qt::MouseButton kButtons[] = {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton};
        const QPointF point = pointOn(plot);
        switch (any(14)) {
        case 0:
            return hand.mouse(QEvent::MouseButtonPress, point, kButtons[any(3)], modifiers());
        case 1:
            return hand.mouse(QEvent::MouseButtonRelease, point, kButtons[any(3)], modifiers());
        case 2:
            return hand.wheel(point, {any(3) * 120 - 120, any(5) * 120 - 240}, modifiers());
        case 3:
            return hand.wheel(point, {}, modifiers(), {any(2000) - 1000, any(200) - 100});
        case 4:
        case 5:
        case 6:
            return press(plot, kKeys);
        case 7:
            if (oneIn(4))
                pane_->resize(200 + any(1400), 100 + any(1000));
            return;
        case 8:
            if (oneIn(4))
                pane_->show(test::randomPlotOrComparison(random_), oneIn(2));
            return;
        case 9:
            if (oneIn(32)) {
                std::vector<PanelChoice> none;
                for (const PlotPanel& panel : plot.data().panels)
                    none.push_back({panel.key, true});
                plot.setPanels(none);
            } else if (oneIn(4) && !plot.data().panels.empty())
                plot.setPanels(withHidden(plot.data(), oneIn(2) ? plot.view().panels : std::vector<PanelChoice>(),
                                          random_() % plot.data().panels.size(), oneIn(2)));
            return;
        case 10:
            if (oneIn(4))
                chooseFromMenu(point);
            return;
        case 11:
            if (oneIn(8))
                QApplication::processEvents();
            return;
        default:
            return hand.mouse(QEvent::MouseMove, point, Qt::NoButton, modifiers());
        }
    }

    /// Some entry, which may be of a menu within.
    void chooseFromMenu(QPointF point) {
        PlotWidget& plot = pane_->plot();
        QContextMenuEvent event(QContextMenuEvent::Mouse, point.toPoint(), plot.mapToGlobal(point.toPoint()));
        QApplication::sendEvent(&plot, &event);
        const QPointer menu = pane_->findChild<QMenu*>(QStringLiteral("PlotMenu"));
        ASSERT_TRUE(menu);
        QList<QAction*> entries;
        for (QAction* entry : menu->actions())
            entries += entry->menu() ? entry->menu()->actions() : QList{entry};
        entries[any(static_cast<int>(entries.size()))]->trigger();
        delete menu;
    }

    /// A plot shows a part of the axis that is there, and so are the cursor and the range.
    void check() {
        const PlotWidget& plot = pane_->plot();
        const PlotData& shown = plot.data();
        const PlotRange seen = plot.seen();
        ASSERT_GE(seen.from, shown.whole.from - 1e-6);
        ASSERT_LE(seen.to, shown.whole.to + 1e-6);
        ASSERT_GE(seen.length(), std::min(leastRange(shown, plot.plotLayout().width()), shown.whole.length()) * 0.99);
        const auto there = [&](double place) { return place >= shown.whole.from && place <= shown.whole.to; };
        const PlotPointers& pointers = plot.pointers();
        ASSERT_TRUE(!pointers.cursor || there(*pointers.cursor)) << *pointers.cursor;
        ASSERT_TRUE(!pointers.range || (there(pointers.range->from) && there(pointers.range->to) &&
                                        pointers.range->from <= pointers.range->to));
        ASSERT_TRUE(!pointers.band || *pointers.band < shown.bands.size());
    }

    Settings settings_{std::make_unique<MemorySettings>()};
    TUnitSystem units_;
    TimeZone zone_;
    std::unique_ptr<PlotPane> pane_;
};

TEST_F(PlotRandomEvents, LeaveAPlotWhole) {
    pane_ = std::make_unique<PlotPane>(PlotPaneContext{{units_, zone_}, settings_}, true);
    pane_->resize(1000, 800);
    pane_->show(test::randomPlotOrComparison(random_), false);
    static_cast<QWidget&>(*pane_).show();
    for (int i = 0; i < count() && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        act();
        if (oneIn(20))
            pane_->grab();
        check();
    }
}

/// Pages are seen, and no more of them are made than that takes.
TEST_F(RandomEvents, LeaveAPreviewWhole) {
    std::set<std::size_t> made;
    PageView view;
    const auto showPages = [&] {
        const std::size_t pages = oneIn(4) ? 1 : 1 + random_() % 2000;
        const Size paper{100.0 + any(900), 100.0 + any(900)};
        view.setPages({"Log", paper, pages, [&made, paper, pages](std::size_t page) {
                           EXPECT_LT(page, pages);
                           made.insert(page);
                           return Drawing{"Log", {}, paper, 9, {Text{{20, 50}, std::to_string(page)}}};
                       }});
    };
    showPages();
    view.resize(900, 700);
    view.show();
    constexpr Qt::Key kKeys[] = {Qt::Key_Up,  Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home,
                                 Qt::Key_End, Qt::Key_Plus, Qt::Key_Minus,  Qt::Key_Left,     Qt::Key_Right};
    for (int i = 0; i < count() && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        made.clear();
        switch (any(12)) {
        case 0:
            view.goTo(random_() % 3000);
            break;
        case 1:
            view.step(any(7) - 3);
            break;
        case 2:
            view.setFit(static_cast<PageView::Fit>(any(3)));
            break;
        case 3:
            view.setScale(std::exp2(any(8) - 4));
            break;
        case 4:
            view.setColumns(1 + any(2));
            break;
        case 5:
            if (oneIn(4))
                showPages();
            break;
        case 6:
            view.resize(50 + any(1400), 50 + any(1000));
            break;
        case 7:
            view.verticalScrollBar()->setValue(any(view.verticalScrollBar()->maximum() + 1));
            break;
        case 8: {
            const QPointF point = pointOn(view);
            QWheelEvent wheel(point, view.mapToGlobal(point), {}, {0, any(5) * 120 - 240}, Qt::NoButton, modifiers(),
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(view.viewport(), &wheel);
            break;
        }
        default:
            press(view, kKeys);
        }
        if (oneIn(4))
            view.grab();
        ASSERT_LT(view.current(), view.count());
        ASSERT_TRUE(view.scale() >= 0.1 && view.scale() <= 4) << view.scale();
        ASSERT_LE(made.size(), 80u) << "what fits into the window where pages are smallest";
    }
}

} // namespace
} // namespace quobrix
