#include "app/units_command.h"

#include "support/frame_fixture.h"
#include "support/temporary_folder.h"
#include "units/ui/unit_system_dialog.h"

#include <QAction>
#include <QApplication>
#include <QListWidget>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace quobrix {
namespace {

class UnitsCommandTest : public test::FrameTest {
protected:
    UnitsCommandTest() { frame_.show(); }

    static inline const QString kDialog = QStringLiteral("UnitSys");
    UnitSystemDialog* dialog() { return static_cast<UnitSystemDialog*>(frame_.findChild<QDialog*>(kDialog)); }
    void open() { frame_.commands().trigger(CommandId::Units); }
    void chooseUnit(UnitTypeId type, int row) {
        dialog()->selectType(type);
        dialog()->findChild<QListWidget*>(QStringLiteral("UsFldU"))->setCurrentRow(row);
    }
    /// Closes the frame and answers what is asked with KEY; what was asked.
    QString closeAnswering(Qt::Key key) {
        QString asked;
        test::inNextDialog([&](QWidget& box) {
            asked = box.objectName();
            QTest::keyClick(&box, key);
        });
        frame_.close();
        QApplication::processEvents();
        return asked;
    }

    test::TemporaryFolder folder_;
    UnitSystemStore store_{units_, {folder_.path(), {}}, &settings_};
    UnitsCommand command_{frame_, units_, store_};
};

TEST_F(UnitsCommandTest, OneDialogStaysOpenBesideThePages) {
    EXPECT_TRUE(frame_.commands().action(CommandId::Units)->isEnabled());
    open();
    ASSERT_TRUE(dialog());
    EXPECT_FALSE(dialog()->isModal());
    open();
    EXPECT_EQ(frame_.findChildren<QDialog*>(kDialog).size(), 1);
    dialog()->close();
    open(); // while the one that was closed is about to end
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_TRUE(dialog());
    EXPECT_TRUE(dialog()->isVisible());
}

TEST_F(UnitsCommandTest, OverAModalDialogItBelongsToThatOne) {
    open();
    QDialog modal(&frame_);
    QTimer::singleShot(0, &modal, [&] {
        open();
        EXPECT_TRUE(modal.findChild<QDialog*>(kDialog));
        EXPECT_EQ(frame_.findChildren<QDialog*>(kDialog).size(), 1);
        modal.reject();
    });
    modal.exec();
}

TEST_F(UnitsCommandTest, EndingSettlesTheChanges) {
    ASSERT_TRUE(store_.newSystem("Mine", "S.I."));
    open();
    chooseUnit(UnitTypeId::Speed, 1);
    EXPECT_EQ(closeAnswering(Qt::Key_Escape), QString());
    EXPECT_FALSE(frame_.isVisible());
    ASSERT_TRUE(store_.loadSystem("S.I."));
    ASSERT_TRUE(store_.loadSystem("Mine"));
    EXPECT_EQ(units_.unit(UnitTypeId::Speed), UnitId::MilePerHour);

    ASSERT_TRUE(store_.loadSystem("S.I."));
    frame_.show();
    open();
    chooseUnit(UnitTypeId::Speed, 1);
    EXPECT_EQ(closeAnswering(Qt::Key_Escape), QStringLiteral("KeepUnitChanges"));
    EXPECT_TRUE(frame_.isVisible() && dialog()) << "cancelled";
    EXPECT_EQ(closeAnswering(Qt::Key_N), QStringLiteral("KeepUnitChanges"));
    EXPECT_FALSE(frame_.isVisible());
}

TEST_F(UnitsCommandTest, AFailureToSaveIsToldBeforeTheProgramEnds) {
    ASSERT_TRUE(store_.newSystem("Mine", "S.I."));
    units_.setDecimals(UnitTypeId::Speed, 5);
    std::filesystem::remove_all(folder_.path());
    EXPECT_EQ(closeAnswering(Qt::Key_Return), QStringLiteral("FolderNotFound"));
    EXPECT_FALSE(frame_.isVisible()) << "nobody is held in the program";
}

} // namespace
} // namespace quobrix
