#include "report/ui/report_view.h"

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

namespace quobrix {
namespace {

struct Spoken {
    QAccessible::Role role;
    QString name, description;
};

/// What assistive technology reads in WIDGET, in its order.
void collect(QAccessibleInterface* interface, std::vector<Spoken>& all) {
    all.push_back({interface->role(), interface->text(QAccessible::Name), interface->text(QAccessible::Description)});
    for (int i = 0; i < interface->childCount(); ++i)
        collect(interface->child(i), all);
}

class ReportViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        view_.resize(600, 300);
        view_.show();
    }
    static Report report(const std::string& title) {
        return {title,
                {Heading{"Bands"}, Grid{{{"Band", false}, {"From"}, {"Share"}}, {{"Idle", "0 MPH", "100%"}}, {1}},
                 Facts{{{"VIN", "1G"}}}, Heading{"Comments"},
                 Paragraph{"<i>To the lake</i>\n" + std::string(200, '\n') + "and back"}}};
    }
    ReportView view_;
};

TEST_F(ReportViewTest, IsReadByAssistiveTechnology) {
    view_.setReport(report("Trip 1"));
    std::vector<Spoken> all;
    collect(QAccessible::queryAccessibleInterface(view_.widget()), all);
    const auto says = [&](QAccessible::Role role, const QString& name, const QString& description = {}) {
        return std::ranges::any_of(all, [&](const Spoken& spoken) {
            return spoken.role == role && spoken.name == name && spoken.description == description;
        });
    };
    EXPECT_TRUE(says(QAccessible::Heading, "Trip 1"));
    EXPECT_TRUE(says(QAccessible::Heading, "Bands"));
    EXPECT_TRUE(says(QAccessible::Chart, "Idle", "100%"));
    EXPECT_TRUE(says(QAccessible::StaticText, "Idle", "Band"));
    EXPECT_TRUE(says(QAccessible::StaticText, "0 MPH", "Idle, From"));
    EXPECT_TRUE(says(QAccessible::StaticText, "VIN: 1G"));
    QStringList inOrder;
    for (const Spoken& spoken : all)
        inOrder += spoken.name;
    EXPECT_TRUE(inOrder.join('|').contains("|Band|From|Share|Idle|0 MPH|Idle|100%|")) << "row by row";
    for (const QLabel* label : view_.findChildren<QLabel*>())
        EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->text().toStdString();
}

TEST_F(ReportViewTest, ALinkIsFollowedByMouseAndKeyboard) {
    std::vector<RecordLink> followed;
    QObject::connect(&view_, &ReportView::linkActivated, [&](RecordLink link) { followed.push_back(link); });
    view_.setReport(
        {"Problem 1", {Heading{"History"}, Facts{{{"Times Seen", "2"}, {"During", "Trip & 3", RecordLink{200, 2}}}}}});
    auto* link = view_.findChild<QPushButton*>();
    ASSERT_TRUE(link);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(link)->text(QAccessible::Name), "During: Trip & 3");
    QTest::mouseClick(link, Qt::LeftButton);
    link->setFocus(Qt::TabFocusReason);
    QTest::keyClick(link, Qt::Key_Return);
    view_.setReport(report("Trip 3")); // which ends the button meanwhile
    QApplication::processEvents();
    EXPECT_EQ(followed, (std::vector{RecordLink{200, 2}, RecordLink{200, 2}}));
}

TEST_F(ReportViewTest, CardsStandSideBySideWhereBothHaveRoom) {
    const auto sideBySide = [&](int width, std::size_t columns) {
        const Grid grid{std::vector<Grid::Column>(columns, {"Heading"}),
                        {std::vector<std::string>(columns, "12345 km/h")}};
        view_.resize(width, 600);
        view_.setReport({"Trip", {Heading{"One"}, grid, Heading{"Two"}, grid}});
        QApplication::processEvents();
        EXPECT_EQ(view_.horizontalScrollBar()->maximum(), 0) << width;
        const auto top = [&](const char* section) {
            for (const QFrame* frame : view_.findChildren<QFrame*>())
                if (frame->accessibleName() == QLatin1String(section))
                    return frame->y();
            return -1;
        };
        return top("One") == top("Two");
    };
    EXPECT_TRUE(sideBySide(1000, 2));
    EXPECT_FALSE(sideBySide(1000, 6)) << "they would not fit";
    EXPECT_TRUE(sideBySide(1700, 6));
    EXPECT_FALSE(sideBySide(600, 2));
    EXPECT_FALSE(sideBySide(680, 6)) << "there is less room between the cells before anything scrolls";
}

TEST_F(ReportViewTest, AValueStandsBesideItsNameWhicheverWayItIsRead) {
    const std::string arabic = "\xD8\xB3\xD9\x8A\xD8\xA7\xD8\xB1\xD8\xA9";
    view_.setReport({"Trip 1", {Heading{"General"}, Facts{{{"Vehicle", arabic}}}}});
    QImage image;
    for (QLabel* label : view_.findChildren<QLabel*>())
        if (label->text() == QString::fromStdString(arabic))
            image = label->grab().toImage();
    ASSERT_GT(image.width(), 100);
    const auto isBlank = [&](int x) {
        for (int y = 0; y < image.height(); ++y)
            if (image.pixel(x, y) != image.pixel(0, 0))
                return false;
        return true;
    };
    int left = 0; // of what is written
    while (left < image.width() && isBlank(left))
        ++left;
    EXPECT_LT(left, 20);
}

} // namespace
} // namespace quobrix
