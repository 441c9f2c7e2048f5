/// Finding records above the list of a log, and what those that are found come to below it.
#include "base/ui/qt_text.h"
#include "support/view_fixture.h"
#include "views/log_view.h"
#include "views/record_commands.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

namespace quobrix {
namespace {

using test::kStart;

/// Four trips a day apart, of two vehicles: Van has the first and the last.
class LogFilter : public test::ViewTest {
protected:
    void SetUp() override {
        for (int day = 0; day < 4; ++day)
            test::addTrip(document_, kStart + day * 86'400);
        trips().column<TTripLogVinColumn>().set(1, kOther);
        trips().column<TTripLogVinColumn>().set(2, kOther);
        document_.vehicles().addMissing(std::vector<std::string>{kOther});
        document_.vehicles().nameAll(std::vector<std::string>{test::kVin}, "Van");
        trips().column<TTripLogCommentsColumn>().setAll({"To the coast", "Home", "To the hills", "Coast"});
        trips().column<TTripLogDriverIDColumn>().set(0, 7);
        document_.drivers().addMissing(std::vector<std::string>{"7"});
        document_.drivers().nameAll(std::vector<std::string>{"7"}, "Anna & Bea");
        view_ = std::make_unique<LogView>(context_, logSpec(LogId::Trips));
        view_->resize(700, 500);
        view_->show();
        view_->refresh();
        view_->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(view_.get()));
    }

    TTripLogTable& trips() { return document_.trips(); }
    LogList& list() { return view_->summary(); }
    template <class Widget>
    Widget& part(const char* name) {
        return *view_->findChild<Widget*>(QLatin1String(name));
    }
    std::string label(const char* name) {
        QTest::qWait(0); // for what follows edits
        const QLabel& label = part<QLabel>(name);
        return label.isVisible() ? label.text().toStdString() : "hidden";
    }
    /// "1 4": the numbers of the records that are shown.
    std::string shown() {
        QTest::qWait(0);
        std::string numbers;
        for (const RowIndex row : list().model().rows())
            numbers += (numbers.empty() ? "" : " ") + std::to_string(row + 1);
        return numbers;
    }
    void type(const char* words) {
        QLineEdit& field = part<QLineEdit>("filterWords");
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, QLatin1String(words));
    }
    void enter(const char* field, const char* text) {
        part<QLineEdit>(field).clear();
        QTest::keyClicks(&part<QLineEdit>(field), QLatin1String(text));
        QTest::keyClick(&part<QLineEdit>(field), Qt::Key_Return);
    }
    void choose(const char* name, const QString& text) {
        QComboBox& box = part<QComboBox>(name);
        ASSERT_GE(box.findText(text), 0) << text.toStdString();
        box.setCurrentIndex(box.findText(text));
        emit box.activated(box.currentIndex());
    }
    bool barHasKeyboard() { return part<QWidget>("FilterBar").isAncestorOf(QApplication::focusWidget()); }
    static QStringList entries(const QComboBox& box) {
        QStringList texts;
        for (int i = 0; i < box.count(); ++i)
            texts << box.itemText(i);
        return texts;
    }

    static constexpr const char* kOther = "1HGCM82633A004352";
    std::unique_ptr<LogView> view_;
};

TEST_F(LogFilter, WordsAreFoundAsTheyAreTyped) {
    EXPECT_EQ(label("filterCount"), "hidden");
    EXPECT_EQ(label("totalsShown"), "4 trips, 00:40:00, 48,000.00 m, 16 events");
    list().setCurrentRow(1);
    QTest::keyClick(&list().view(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(barHasKeyboard());
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral(" COAST "));
    EXPECT_EQ(shown(), "1 4");
    EXPECT_EQ(label("filterCount"), "2 of 4 trips");
    EXPECT_EQ(label("totalsShown"), "2 trips, 00:20:00, 24,000.00 m, 8 events");
    EXPECT_EQ(label("totalsSelected"), "Selected: 1 trip, 00:10:00, 12,000.00 m, 4 events");
    EXPECT_EQ(list().model().text(1, 0), "4") << "a record keeps its number";

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(list().view().hasFocus());
    EXPECT_EQ(list().currentRow(), 3u);
    view_->findChild<QAction*>("previousTrip")->trigger();
    EXPECT_EQ(list().currentRow(), 0u) << "the record before it that is shown";
    list().view().selectAll();
    EXPECT_EQ(label("totalsSelected"), "Selected: 2 trips, 00:20:00, 24,000.00 m, 8 events");

    view_->showView(LogViewKind::Report);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(barHasKeyboard()) << "from the report, too";
    type("no such word");
    EXPECT_EQ(shown(), "");
    EXPECT_EQ(label("filterCount"), "0 of 4 trips");
    EXPECT_EQ(list().view().accessibleDescription(), "The filter shows none of the rows.\n\nShow All takes it off.");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(shown(), "1 2 3 4");
    EXPECT_EQ(label("filterCount"), "hidden");
    EXPECT_TRUE(barHasKeyboard());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_TRUE(list().view().hasFocus());

    type("hills");
    EXPECT_EQ(shown(), "3");
    part<QToolButton>("filterShowAll").click();
    EXPECT_EQ(shown(), "1 2 3 4");
    EXPECT_EQ(list().currentRow(), 2u);
    EXPECT_EQ(part<QLineEdit>("filterWords").text(), "");
}

TEST_F(LogFilter, TimeAndNamesNarrowIt) {
    QToolButton& more = part<QToolButton>("filterMore");
    more.click();
    EXPECT_EQ(entries(part<QComboBox>("filterVehicle")).join(';'), "Any vehicle;Unknown #2;Van");
    EXPECT_EQ(entries(part<QComboBox>("filterDriver")).join(';'), "Any driver;(None);Anna & Bea");
    EXPECT_EQ(entries(part<QComboBox>("filterLogger")).join(';'), "Any Quobrix;Unknown");
    const struct {
        const char *field, *text, *shown, *button;
    } steps[] = {
        {"filterVehicle", "Van", "1 4", "Van"},
        {"filterDriver", "(None)", "4", "Van, (None)"},
        {"filterDriver", "Anna & Bea", "1", "Van, Anna && Bea"},
        {"filterDriver", "Any driver", "1 4", "Van"},
        {"filterVehicle", "Any vehicle", "1 2 3 4", "&More"},
        {"filterFrom", "15/11/2023", "2 3 4", "15/11/2023 –"},
        {"filterTo", "2023-11-16", "2 3", "15/11/2023 – 2023-11-16"},
        {"filterTo", "1/1/2023", "2 3", "15/11/2023 – 1/1/2023"},
        {"filterTo", "", "2 3 4", "15/11/2023 –"},
        {"filterFrom", "soon", "2 3 4", "soon –"},
        {"filterFrom", "", "1 2 3 4", "&More"},
        {"filterPeriod", "Last 12 Months", "", "Last 12 Months"},
        {"filterPeriod", "Any time", "1 2 3 4", "&More"},
    };
    units_.setUnit(UnitTypeId::Date, UnitId::DayMonthYear);
    for (const auto& step : steps) {
        SCOPED_TRACE(::testing::Message() << step.field << " " << step.text);
        if (view_->findChild<QLineEdit*>(QLatin1String(step.field)))
            enter(step.field, step.text);
        else
            choose(step.field, toQt(step.text));
        EXPECT_EQ(shown(), step.shown);
        more.click();
        EXPECT_EQ(more.text(), step.button) << "what is wanted is seen when its fields are not";
        more.click();
        const QString why = part<QLabel>("filterReason").text();
        if (step.text == std::string_view("1/1/2023"))
            EXPECT_EQ(why, "The first day lies behind the last one.");
        else if (step.text == std::string_view("soon"))
            EXPECT_TRUE(why.startsWith("soon is no day. Write it like this: ")) << why.toStdString();
        else
            EXPECT_EQ(why, "");
    }
    choose("filterPeriod", "Last Month"); // whose days are seen
    EXPECT_EQ(part<QLineEdit>("filterFrom").text().left(3), "01/");
    LogView other(context_, logSpec(LogId::Activity));
    EXPECT_FALSE(other.findChild<QComboBox*>("filterDriver")) << "a log without drivers";
}

TEST_F(LogFilter, WhatComesAndChangesIsSeenAndCounted) {
    type("coast");
    EXPECT_EQ(shown(), "1 4");
    ASSERT_TRUE(document_.edits()
                    .type(trips().id(), trips().indexOf("TTripLogCommentsColumn"), 3, "Lake", context_.text())
                    .ok());
    ASSERT_TRUE(document_.edits().type(document_.vehicles().id(), 1, 0, "Bus", context_.text()).ok());
    EXPECT_EQ(shown(), "1 4") << "a record that is edited stays";
    part<QToolButton>("filterMore").click();
    EXPECT_EQ(part<QComboBox>("filterVehicle").itemText(1), "Bus");
    units_.setUnit(UnitTypeId::Distance, UnitId::Kilometre);
    view_->unitsChanged();
    EXPECT_EQ(label("totalsShown"), "2 trips, 00:20:00, 24.0 km, 8 events");
    ASSERT_TRUE(document_.edits().removeRows(trips().id(), {0, 1}).ok());
    view_->edited();
    EXPECT_EQ(shown(), "2");
    EXPECT_EQ(label("filterCount"), "1 of 2 trips");
    QTest::keyClick(&part<QLineEdit>("filterWords"), Qt::Key_Return);
    EXPECT_EQ(shown(), "") << "applied anew";
    document_.edits().undo();
    EXPECT_EQ(shown(), "1 2") << "what comes back is seen";
    EXPECT_EQ(label("totalsShown"), "2 trips, 00:20:00, 24.0 km, 8 events");

    trips().insertRows(4, 2); // as a download does, which then has the pages show the document anew
    trips().column<TTripLogCommentsColumn>().setAll({"a", "coast", "b", "c", "d", "at the coast"});
    view_->refresh();
    EXPECT_EQ(shown(), "2 6");
    EXPECT_EQ(label("filterCount"), "2 of 6 trips");
    ASSERT_TRUE(document_.edits().removeRows(trips().id(), {0, 1, 2, 3, 4, 5}).ok());
    EXPECT_EQ(shown(), "");
    EXPECT_FALSE(part<QWidget>("FilterBar").isVisible()) << "nothing to be found";
    EXPECT_TRUE(list().view().emptyText().contains("Undo"));
}

TEST_F(LogFilter, GoingToAHiddenRecordLiftsIt) {
    type("coast");
    part<QToolButton>("filterMore").click();
    choose("filterVehicle", "Van");
    view_->goTo({201, logSpec(LogId::Trips).keyOf(trips(), 1), true});
    EXPECT_EQ(shown(), "1 4") << "the list was wanted, whichever of its records was current";
    view_->showRecord(1);
    EXPECT_EQ(view_->title(), "View / Trip Log / Record 2 / Report");
    EXPECT_EQ(shown(), "1 2 3 4");
    view_->showView(LogViewKind::Summary);
    EXPECT_EQ(label("filterCount"), "hidden");
    EXPECT_EQ(part<QLineEdit>("filterWords").text(), "");
    EXPECT_EQ(part<QComboBox>("filterVehicle").currentIndex(), 0);
}

} // namespace
} // namespace quobrix
