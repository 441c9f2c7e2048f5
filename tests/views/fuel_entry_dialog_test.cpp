#include "views/fuel_entry_dialog.h"

#include "base/ui/qt_text.h"
#include "model/value_check.h"
#include "support/scripted_prompter.h"
#include "support/temporary_folder.h"
#include "support/view_fixture.h"
#include "tables/ui/table_spreadsheet.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QTest>

namespace quobrix {
namespace {

using testing::ScriptedPrompter;
using Keys = std::vector<std::string>;

class FuelEntryDialogTest : public test::ViewTest {
protected:
    FuelEntryDialogTest() {
        context_.prompter = &silent_;
        units_.setUnit(UnitTypeId::Distance, UnitId::Mile);
        units_.setUnit(UnitTypeId::Fuel, UnitId::Gallon);
        document_.vehicles().addMissing(Keys{"WVWZZZ1KZAW000001", "WAUZZZ8K9BA000002"});
        document_.vehicles().nameAll(Keys{"WVWZZZ1KZAW000001"}, "Wagon");
        open();
    }
    void open() {
        dialog_ = std::make_unique<FuelEntryDialog>(context_, nullptr);
        dialog_->show();
    }
    TTableSpreadsheet& list() { return *dialog_->findChild<TTableSpreadsheet*>(); }
    void run(SpreadsheetCommand command) { list().commands().action(command).trigger(); }
    void paste(const QString& text) {
        QApplication::clipboard()->setText(text);
        run(SpreadsheetCommand::Paste);
    }
    EditOutcome type(int row, int column, const char* text) {
        return list().model().type(row, column, QLatin1String(text));
    }
    QString shown(int row, int column) { return list().model().text(row, column); }
    QString totals() { return dialog_->findChild<QLabel*>(QStringLiteral("fuelTotals"))->text(); }

    ScriptedPrompter silent_;
    std::unique_ptr<FuelEntryDialog> dialog_;
};

TEST_F(FuelEntryDialogTest, ANameIsTypedIntoTheListOfVehiclesAsItReads) {
    document_.vehicles().nameAll(Keys{"WVWZZZ1KZAW000001"}, "Van 1");
    document_.vehicles().nameAll(Keys{"WAUZZZ8K9BA000002"}, "Van 2");
    const auto opened = [&] {
        run(SpreadsheetCommand::Add);
        EXPECT_TRUE(list().finishEdit());
        const QModelIndex cell = list().model().index(list().model().rowCount() - 1, 0);
        list().view().edit(cell);
        return qobject_cast<QComboBox*>(list().view().indexWidget(cell));
    };
    const auto typed = [&](const char* text, int pause) -> QString {
        QComboBox* box = opened();
        if (!box)
            return QStringLiteral("no list");
        QTest::keyClicks(box, QLatin1String(text), Qt::NoModifier, pause);
        if (box->view()->isVisible()) // which it is once there was time for it
            QTest::keyClick(box->view(), Qt::Key_Return);
        const QString chosen = box->currentText();
        EXPECT_TRUE(list().finishEdit());
        return chosen;
    };
    EXPECT_EQ(typed("van 1", 0), "Van 1");
    EXPECT_EQ(typed("van 2", 0), "Van 2");
    EXPECT_EQ(typed("Van 1", QApplication::keyboardInputInterval() + 50), "Van 1") << "slowly";
    EXPECT_EQ(typed("Vxan 2", 0), "Van 2") << "what no name has";
    EXPECT_EQ(typed("vv", 0), "Van 2") << "the next one";
    QComboBox* box = opened();
    ASSERT_TRUE(box);
    box->showPopup();
    QTest::keyClicks(box->view(), QStringLiteral("van 2"));
    EXPECT_EQ(box->view()->currentIndex().data().toString(), "Van 2");
    box->hidePopup();
}

TEST_F(FuelEntryDialogTest, TheTableComesAndGoesWithItsFirstEntry) {
    EXPECT_FALSE(document_.fuelEntries()) << "to look is no edit";
    run(SpreadsheetCommand::Add);
    ASSERT_TRUE(document_.fuelEntries());
    ASSERT_EQ(list().model().rowCount(), 1);
    EXPECT_EQ(shown(0, 4), "Yes") << "most people fill up";
    EXPECT_TRUE(list().finishEdit());
    run(SpreadsheetCommand::Undo);
    EXPECT_FALSE(document_.fuelEntries());
    EXPECT_EQ(list().model().rowCount(), 0);
    run(SpreadsheetCommand::Redo);
    ASSERT_TRUE(document_.fuelEntries());
    EXPECT_EQ(list().model().rowCount(), 1);
    EXPECT_TRUE(type(0, 0, "wagon").ok());
    EXPECT_EQ(document_.fuelEntries()->column<TFuelEntryVehicleColumn>().at(0), "WVWZZZ1KZAW000001");
    while (document_.edits().canUndo())
        document_.edits().undo();
    EXPECT_EQ(list().model().rowCount(), 0);
    EXPECT_FALSE(document_.fuelEntries());
}

TEST_F(FuelEntryDialogTest, EntriesArePastedCheckedAndKept) {
    paste("Wagon\t03/01/2026 08:00 AM\t10,000\t12\tYes\tNo\t40\n"
          "wvwzzz1kzaw000001\t03/10/2026 08:00 AM\t10,300\t8\tNo\tNo\t28\n"
          "Wagon\t03/20/2026 08:00 AM\t10,600\t12\tYes\tNo\t42\n");
    ASSERT_EQ(list().model().rowCount(), 3);
    EXPECT_EQ(shown(1, 0), "Wagon");
    EXPECT_EQ(shown(2, 7), "30.0 mi/gal") << "600 miles with 20 gallons";
    EXPECT_TRUE(shown(0, 7).isEmpty() && shown(1, 7).isEmpty());
    EXPECT_TRUE(totals().startsWith("Wagon: 30.0 mi/gal")) << totals().toStdString();
    EXPECT_TRUE(totals().contains("11.67 per 100 Miles")) << "70 for 600 miles: " << totals().toStdString();
    EXPECT_TRUE(document_.vehicles().inUse(document_.vehicles().find("WVWZZZ1KZAW000001")));
    EXPECT_FALSE(document_.vehicles().inUse(document_.vehicles().find("WAUZZZ8K9BA000002")));
    run(SpreadsheetCommand::Undo);
    EXPECT_FALSE(document_.fuelEntries()) << "one step";
    run(SpreadsheetCommand::Redo);
    ASSERT_EQ(list().model().rowCount(), 3);

    EXPECT_FALSE(type(0, 0, "Van").ok());
    EXPECT_FALSE(type(0, 3, "0").ok());
    EXPECT_FALSE(type(0, 6, "-1").ok());
    EXPECT_TRUE(type(1, 2, "9,000").ok()) << "on the way to what is right";
    const auto findings = [&] { return checkValues(document_, context_.text()); };
    EXPECT_TRUE(std::ranges::any_of(findings(), [](const Finding& finding) {
        return finding.severity == Severity::Required && finding.text.find("in row 1") != std::string::npos;
    }));
    EXPECT_TRUE(shown(2, 7).isEmpty());
    run(SpreadsheetCommand::Undo);
    EXPECT_TRUE(type(1, 3, "0.1").ok());
    EXPECT_TRUE(type(2, 3, "0.2").ok());
    EXPECT_TRUE(std::ranges::any_of(findings(), [](const Finding& finding) {
        return finding.severity == Severity::Recommended && finding.text.find("Hardly any vehicle") == 0;
    })) << "remarked on, not refused";

    const test::TemporaryFolder folder;
    ASSERT_TRUE(document_.saveAs(folder.path() / "fuel.car"));
    dialog_.reset();
    ASSERT_TRUE(document_.open(folder.path() / "fuel.car", TDocument::Access::Edit));
    open();
    EXPECT_EQ(list().model().rowCount(), 3);
    EXPECT_EQ(shown(0, 6), "40.00");
}

TEST_F(FuelEntryDialogTest, WhatADamagedFileSaysCountsForNothing) {
    auto& entries = document_.store().singleton<TFuelEntryTable>();
    entries.insertRows(0, 3);
    for (RowIndex row = 0; row < 3; ++row) {
        entries.column<TFuelEntryVehicleColumn>().set(row, "WVWZZZ1KZAW000001");
        entries.column<TFuelEntryTimeColumn>().set(row, 1'700'000'000 + static_cast<std::int32_t>(row) * 86'400);
        entries.column<TFuelEntryOdometerColumn>().set(row, 1e6 + static_cast<double>(row) * 1e5);
        entries.column<TFuelEntryAmountColumn>().set(row, 5);
        entries.column<TFuelEntryFullTankColumn>().set(row, 1);
        entries.column<TFuelEntryTotalPriceColumn>().set(row, 40);
    }
    EXPECT_EQ(fuelTotals(entries.fills()).price, 120);
    for (const double wrong : {std::nan(""), HUGE_VAL, -40.0, 1e300}) {
        entries.column<TFuelEntryTotalPriceColumn>().set(2, wrong);
        const FuelTotals totals = fuelTotals(entries.fills());
        EXPECT_EQ(totals.price, 80) << wrong;
        EXPECT_EQ(totals.distance, 2e5) << wrong;
        EXPECT_EQ(totals.pricedDistance, 1e5) << "of the stretch whose price is known";
    }
    entries.column<TFuelEntryOdometerColumn>().set(1, HUGE_VAL);
    EXPECT_EQ(fuelTotals(entries.fills()).distance, 0);
}

TEST_F(FuelEntryDialogTest, VehiclesAreChosenFromTheirList) {
    run(SpreadsheetCommand::Add);
    list().finishEdit();
    list().view().edit(list().model().index(0, 0));
    auto* choice = dialog_->findChild<QComboBox*>(QStringLiteral("cellEditor"));
    ASSERT_TRUE(choice);
    QStringList offered;
    for (int i = 0; i < choice->count(); ++i)
        offered << choice->itemText(i);
    EXPECT_EQ(offered, (QStringList{"Wagon", "Unknown #2"})) << offered.join('|').toStdString();
    choice->setCurrentIndex(1);
    EXPECT_TRUE(list().finishEdit());
    EXPECT_EQ(document_.fuelEntries()->column<TFuelEntryVehicleColumn>().at(0), "WAUZZZ8K9BA000002");
}

} // namespace
} // namespace quobrix
