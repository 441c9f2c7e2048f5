#include "tables/ui/error_log.h"

#include "base/ui/qt_text.h"
#include "settings/settings.h"
#include "tables/sample_table.h"
#include "tables/ui/requirements_window.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

namespace quobrix::test {
namespace {

class ErrorLog : public TablesTest {
protected:
    Finding finding(Severity severity, RowIndex row, const char* text = "Wrong.\nVery wrong.") {
        return {severity, ShownText::asItIs(text), 7, "Sample", &SampleKey::kSpec, row};
    }
    QTreeView& list() { return *log_.findChild<QTreeView*>(QStringLiteral("errors")); }
    QString cell(int line, int field) { return list().model()->index(line, field).data().toString(); }
    template <class W>
    W& child(const char* name) {
        return *log_.findChild<W*>(QLatin1String(name));
    }

    Settings settings_{std::make_unique<MemorySettings>()};
    TErrorLog log_{context_, settings_, nullptr};
    QAbstractItemModelTester tester_{list().model(), QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(ErrorLog, ListsFindingsOrSaysThatThereAreNone) {
    log_.show();
    EXPECT_TRUE(child<QLabel>("noErrors").isVisible());
    EXPECT_EQ(child<QLabel>("noErrors").text(), QStringLiteral("No Errors!"));
    EXPECT_EQ(child<QLabel>("hint").text(),
              QStringLiteral("Double-click on a message to go to its source. For help, press F1."));
    log_.setFindings({finding(Severity::Required, 1234), finding(Severity::Recommended, Finding::kNoRow)});
    EXPECT_FALSE(child<QLabel>("noErrors").isVisible());
    EXPECT_EQ(cell(0, 0) + cell(0, 1) + cell(0, 2) + cell(0, 3) + cell(0, 4),
              QStringLiteral("ErrorSample1,235KeyWrong. Very wrong."));
    EXPECT_EQ(cell(1, 0) + cell(1, 2), QStringLiteral("Warning"));
    EXPECT_EQ(child<QLabel>("summary").text(), QStringLiteral("1 error, 1 warning"));
}

TEST_F(ErrorLog, GoesToTheSourceByMouseAndKey) {
    log_.setFindings({finding(Severity::Required, 0), finding(Severity::Required, 5)});
    log_.show();
    std::vector<RowIndex> rows;
    QObject::connect(&log_, &TErrorLog::goTo, &log_, [&](const Finding& f) { rows.push_back(f.row); });
    list().setCurrentIndex(list().model()->index(1, 0));
    QTest::keyClick(&list(), Qt::Key_Return);
    const QPoint second = list().visualRect(list().model()->index(1, 4)).center();
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, second);
    QTest::mouseDClick(list().viewport(), Qt::LeftButton, {}, second);
    child<QPushButton>("goToSource").click();
    EXPECT_EQ(rows, (std::vector<RowIndex>{5, 5, 5}));
    QTest::keyClick(&list(), Qt::Key_Escape);
    EXPECT_FALSE(log_.isVisible());
}

TEST_F(ErrorLog, CopiesTheSelectedLines) {
    log_.setFindings({finding(Severity::Required, 0), finding(Severity::Recommended, 1)});
    log_.show();
    list().selectAll();
    QTest::keySequence(&list(), QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("Error\tSample\t1\tKey\tWrong. Very wrong.\n"
                                                                "Warning\tSample\t2\tKey\tWrong. Very wrong.\n"));
}

TEST_F(ErrorLog, RequirementsFollowTheUnits) {
    RequirementsWindow window(units_, zone_, nullptr);
    {
        const SampleTable table;
        window.setColumn(table.column(SampleTable::Speed));
    }
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Requirements - Speed"));
    EXPECT_TRUE(window.text().contains(QStringLiteral("0.0 m/s <= x"))) << window.text().toStdString();
    units_.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
    EXPECT_TRUE(window.text().contains(QStringLiteral("Required Range : 0 kph <= x <= 255 kph")));
}

} // namespace
} // namespace quobrix::test
