#include "views/record_commands.h"

#include "base/ui/qt_text.h"
#include "report/render.h"
#include "report/ui/report_view.h"
#include "support/log_cells.h"
#include "support/scripted_prompter.h"
#include "support/set_variable.h"
#include "support/temporary_folder.h"
#include "support/view_fixture.h"
#include "tables/ui/table_spreadsheet.h"
#include "views/log_view.h"
#include "views/trip_type_dialog.h"
#include "views/trip_type_window.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

namespace quobrix {
namespace {

using testing::ScriptedPrompter;

/// A person in front of the page of a log.
class RecordCommandsTest : public test::ViewTest {
protected:
    void SetUp() override {
        for (std::int32_t n = 0; n < 4; ++n) {
            const RowIndex row = test::addTrip(document_, test::kStart + n * 86'400);
            document_.trips().column<TTripLogRecordColumn>().set(row, {test::kStart + n * 86'400, 0});
        }
        for (const auto& [number, name] : {std::pair{7, "Zoë"}, {8, "Adam"}}) {
            document_.drivers().addMissing(std::vector{std::to_string(number)});
            document_.drivers().nameAll(std::vector{std::to_string(number)}, name);
        }
        context_.prompter = &prompter_;
    }

    LogView& open(LogId log) {
        view_ = std::make_unique<LogView>(context_, logSpec(log));
        view_->resize(1000, 700);
        view_->show();
        view_->refresh();
        return *view_;
    }
    TSpreadsheet& list() { return view_->summary(); }
    void select(int first, int last) {
        list().view().goTo(list().model().index(first, 0));
        list().view().selectionModel()->select({list().model().index(first, 0), list().model().index(last, 0)},
                                               QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    /// What the right mouse button offers under that name.
    QAction* inMenu(const char* name) {
        emit list().view().menuRequested({});
        auto* menu = view_->findChild<QMenu*>(QStringLiteral("SpreadsheetMenu"));
        QAction* action = nullptr;
        for (QObject* object : menu->findChildren<QObject*>() + view_->findChildren<QObject*>())
            if (object->objectName() == QLatin1String(name))
                action = action ? action : qobject_cast<QAction*>(object);
        return action;
    }
    std::vector<std::int32_t> drivers() const { return document_.trips().column<TTripLogDriverIDColumn>().values(); }
    QDialog& dialog() { return *view_->findChild<QDialog*>(); }

    ScriptedPrompter prompter_;
    std::unique_ptr<LogView> view_;
};

TEST_F(RecordCommandsTest, TheMenuCanBeReadHoweverOftenItIsOpened) {
    open(LogId::Trips);
    const auto heard = [&] {
        emit list().view().menuRequested({});
        auto* menu = view_->findChild<QMenu*>(QStringLiteral("SpreadsheetMenu"));
        QStringList entries;
        QList<QMenu*> menus = menu->findChildren<QMenu*>();
        for (QMenu* each : menus << menu) {
            QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(each);
            for (int i = 0; i < read->childCount(); ++i)
                if (const QAccessibleInterface* entry = read->child(i); entry && entry->isValid())
                    entries << entry->text(QAccessible::Name);
        }
        menu->close();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return entries;
    };
    const QStringList first = heard();
    EXPECT_TRUE(first.contains("Copy") && first.contains("Bitmap") && first.contains("Edit Comments..."));
    EXPECT_EQ(heard(), first);
}

TEST_F(RecordCommandsTest, CommentsOfManyLinesAreEditedFromTheListAndTheReport) {
    open(LogId::Trips);
    list().setCurrentRow(1);
    inMenu("RecordEditComments")->trigger();
    EXPECT_EQ(dialog().windowTitle(), "Comments on Trip 2");
    dialog().findChild<QPlainTextEdit*>()->setPlainText("To the sea.\nBack by night.");
    dialog().accept();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto& comments = document_.trips().column<TTripLogCommentsColumn>();
    EXPECT_EQ(comments.at(1), "To the sea.\nBack by night.");
    list().setCurrentCell(1, list().model().indexOf("TTripLogCommentsColumn"));
    list().view().edit(list().view().currentIndex()); // in place, on one line
    ASSERT_TRUE(list().view().isEditing());
    EXPECT_TRUE(list().finishEdit());
    EXPECT_EQ(comments.at(1), "To the sea.\nBack by night.") << "nothing was typed";

    for (const RowIndex row : {1, 2}) { // with comments, and without
        list().setCurrentRow(row);
        view_->showView(LogViewKind::Report);
        auto* button = view_->findChild<ReportView*>()->findChild<QPushButton*>("RecordEditCommentsButton");
        ASSERT_TRUE(button) << row;
        button->click();
        QApplication::processEvents();
        dialog().findChild<QPlainTextEdit*>()->setPlainText("Seen in the report.");
        dialog().accept();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(comments.at(row), "Seen in the report.");
        document_.edits().undo();
    }
    EXPECT_EQ(comments.at(1), "To the sea.\nBack by night.");
    document_.edits().undo();
    EXPECT_EQ(comments.at(1), "");

    list().setCurrentRow(3); // a dialog that stays open while its record moves, and goes
    inMenu("RecordEditComments")->trigger();
    dialog().findChild<QPlainTextEdit*>()->setPlainText("The last one");
    ASSERT_TRUE(document_.edits().removeRows(document_.trips().id(), {0}).ok());
    dialog().accept();
    EXPECT_EQ(comments.at(2), "The last one");
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    inMenu("RecordEditComments")->trigger();
    ASSERT_TRUE(document_.edits().removeRows(document_.trips().id(), {2}).ok());
    dialog().accept();
    EXPECT_TRUE(dialog().isVisible()) << "what was typed is not thrown away";
}

TEST_F(RecordCommandsTest, ADriverIsGivenToManyTripsInOneStep) {
    document_.trips().setRecorded(3, test::kVin, 8);
    const auto before = test::logCells(document_);
    open(LogId::Trips);
    list().view().sortByColumn(list().model().indexOf("TTripLogStartTimeColumn"), Qt::DescendingOrder);
    select(0, 2); // trips 4, 3 and 2
    inMenu("Driver7");
    QStringList names;
    for (QAction* action : view_->findChild<QMenu*>("DriverMenu")->actions())
        names << action->text();
    EXPECT_EQ(names.join('|'), toQt("(None)||Adam|Zoë"));
    const QModelIndexList selected = list().view().selectionModel()->selectedRows();
    inMenu("Driver7")->trigger();
    const std::int32_t none = Element<std::int32_t>::kNone;
    EXPECT_EQ(drivers(), (std::vector{none, 7, 7, 7}));
    EXPECT_EQ(document_.trips().recorded(3).driver, 8) << "what the logger said stays";
    EXPECT_EQ(document_.trips().recorded(2).driver, none);
    EXPECT_EQ(list().view().selectionModel()->selectedRows(), selected);
    EXPECT_EQ(list().model().storedRow(0), 3u) << "in the same order";
    EXPECT_EQ(document_.edits().undoDescription(), "driver of 3 trips");
    inMenu("DriverNone")->trigger();
    EXPECT_EQ(drivers(), (std::vector{none, none, none, none}));
    document_.edits().undo();
    EXPECT_EQ(drivers(), (std::vector{none, 7, 7, 7}));
    document_.edits().undo();
    EXPECT_FALSE(document_.edits().canUndo());
    EXPECT_EQ(test::logCells(document_), before);
    document_.edits().setLock([] { return ShownText::asItIs("It is an example."); });
    open(LogId::Trips);
    inMenu("RecordEditComments");
    EXPECT_FALSE(view_->findChild<QMenu*>("DriverMenu")->isEnabled());
    EXPECT_FALSE(view_->findChild<QAction*>("RecordEditComments")->isEnabled());
}

TEST_F(RecordCommandsTest, TypesOfTheFileAndTheirOwnAreGivenToManyTripsInOneStep) {
    const test::TemporaryFolder folder;
    ASSERT_TRUE(test::setVariable("XDG_DATA_HOME", folder.path()));
    ScriptedPrompter refused{{ScriptedPrompter::Line{MessageId::ValuesRefused}}};
    context_.prompter = &refused;
    TripTypeDialog dialog(context_, readTripTypes("Work\t0.7\tmi\nNo rate\tmuch\n"), nullptr);
    dialog.show();
    EXPECT_TRUE(dialog.findChild<QLabel*>("unreadLines")->text().contains("Line 2: No rate much"));
    dialog.findChild<QPushButton*>("addName")->click();
    SpreadsheetModel& rows = dialog.list().model();
    EXPECT_TRUE(rows.type(1, 0, "work").ok());
    dialog.accept();
    EXPECT_TRUE(dialog.isVisible()) << "the same type and day twice";
    dialog.findChild<QPushButton*>("undoNames")->click();
    EXPECT_TRUE(rows.type(1, 0, "R&D").ok());
    dialog.accept();
    ASSERT_FALSE(dialog.isVisible());
    EXPECT_EQ(tripTypesText(*loadTripTypes()), "Work\t0.7\tmi\nR&D\nNo rate\tmuch\n");

    context_.prompter = &prompter_;
    const auto types = [&] { return document_.trips().column<TTripLogTripTypeColumn>().values(); };
    document_.trips().column<TTripLogTripTypeColumn>().set(3, "Gone");
    const auto before = test::logCells(document_);
    open(LogId::Trips);
    select(1, 3);
    inMenu("TripType2");
    QStringList names;
    for (QAction* action : view_->findChild<QMenu*>("TripTypeMenu")->actions())
        names << action->text();
    EXPECT_EQ(names.join('|'), "(None)||Work|R&&D|Gone");
    inMenu("TripType2")->trigger();
    EXPECT_EQ(types(), (std::vector<std::string>{"", "R&D", "R&D", "R&D"}));
    EXPECT_EQ(document_.edits().undoDescription(), "type of 3 trips");
    inMenu("TripTypeNone")->trigger();
    EXPECT_EQ(types(), std::vector<std::string>(4));
    document_.edits().undo();
    document_.edits().undo();
    EXPECT_EQ(test::logCells(document_), before);
}

TEST_F(RecordCommandsTest, RulesForNewTripsAreEditedBesideTheTypes) {
    const test::TemporaryFolder folder;
    ASSERT_TRUE(test::setVariable("XDG_DATA_HOME", folder.path()));
    document_.vehicles().nameAll(std::vector<std::string>{test::kVin}, "Van");
    ScriptedPrompter refused{{ScriptedPrompter::Line{MessageId::ValuesRefused}}};
    context_.prompter = &refused;
    TripTypeDialog dialog(context_, readTripTypes("Work\nFun\n"), nullptr);
    dialog.show();
    auto* pages = dialog.findChild<QTabWidget*>("typePages");
    const auto press = [&](const char* name) { dialog.findChild<QPushButton*>(QLatin1String(name))->click(); };
    pages->setCurrentIndex(1);
    press("addRule");
    ASSERT_TRUE(dialog.ruleList().finishEdit());
    SpreadsheetModel& rules = dialog.ruleList().model();
    EXPECT_EQ(rules.index(0, 0).data().toString(), "Every day");
    EXPECT_TRUE(rules.type(0, 3, "van").ok());
    EXPECT_TRUE(rules.type(0, 4, "fun").ok());
    pages->setCurrentIndex(0);
    EXPECT_TRUE(dialog.list().model().type(1, 0, "Leisure").ok()); // which the rule does not follow
    dialog.accept();
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(pages->currentIndex(), 1) << "where what is wrong stands";
    EXPECT_TRUE(rules.type(0, 4, "lei").ok());
    press("undoRules");
    EXPECT_EQ(rules.index(0, 4).data().toString(), "Fun");
    press("redoRules");
    press("addRule");
    ASSERT_TRUE(dialog.ruleList().finishEdit());
    EXPECT_TRUE(rules.type(1, 4, "work").ok());
    press("moveRuleUp");
    EXPECT_EQ(rules.index(0, 4).data().toString(), "Work");
    EXPECT_EQ(rules.index(0, 3).data().toString(), "") << "any vehicle";
    EXPECT_FALSE(dialog.findChild<QPushButton*>("moveRuleUp")->isEnabled());
    press("undoRules");
    press("undoRules");
    press("undoRules");
    dialog.findChild<QPushButton*>("showTypeReport")->click();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(dialog.reportWanted());
    EXPECT_EQ(namesOf(dialog.types().types), (std::vector<std::string>{"Work", "Leisure"}));
    EXPECT_EQ(loadTripRules(settings_), (std::vector<TripRule>{{"Leisure", 0, {}, {}, test::kVin}}));
}

TEST_F(RecordCommandsTest, TheTripTypeReportFollowsItsFieldsAndEdits) {
    auto& types = document_.trips().column<TTripLogTripTypeColumn>();
    types.set(0, "Work");
    types.set(1, "Fun");
    TripTypeWindow window(context_, readTripTypes("Work\t0.5\tkm\nFun\n"), nullptr);
    window.show();
    auto& trips = *window.findChild<TSpreadsheet*>();
    auto& shown = *window.findChild<ReportView*>();
    const auto reads = [&](const char* text) { return renderText(shown.report()).find(text) != std::string::npos; };
    const auto choose = [&](const char* box, const QVariant& data) {
        auto& field = *window.findChild<QComboBox*>(QLatin1String(box));
        field.setCurrentIndex(data.isValid() ? field.findData(data) : 0);
    };
    EXPECT_EQ(trips.model().rowCount(), 4);
    EXPECT_TRUE(reads("Amount        6.00")) << renderText(shown.report());
    choose("typeType", QString("Work"));
    ASSERT_EQ(trips.model().rowCount(), 1);
    const int type = trips.model().indexOf("TTripLogTripTypeColumn"),
              amount = trips.model().indexOf("TripAmountColumn");
    EXPECT_EQ(trips.model().index(0, amount).data().toString(), "6.00");
    choose("typeType", QString());
    EXPECT_EQ(trips.model().rowCount(), 2) << "those without";
    choose("typeType", {});
    trips.setCurrentCell(2, type);
    ASSERT_TRUE(trips.model().type(2, type, "work").ok());
    QApplication::processEvents();
    EXPECT_TRUE(reads("Amount        12.00")) << renderText(shown.report());
    EXPECT_EQ(trips.currentRow(), 2u) << "and whoever edits stays there";
    ASSERT_TRUE(document_.edits().removeRows(document_.trips().id(), {0}).ok());
    QApplication::processEvents();
    EXPECT_TRUE(reads("Amount        6.00")) << renderText(shown.report());
    EXPECT_EQ(trips.model().rowCount(), 3);
    window.setTypes(readTripTypes("Work\t1\tkm\n"));
    EXPECT_TRUE(reads("Amount        12.00")) << renderText(shown.report());
    choose("typePeriod", QString("this-month"));
    EXPECT_EQ(trips.model().rowCount(), 0);
    EXPECT_FALSE(window.printable());
    EXPECT_TRUE(reads("There is no trip of that time"));
}

TEST_F(RecordCommandsTest, WhatWasRecordedIsEditedWhileTheDiagnosticsMenuShows) {
    open(LogId::Trips);
    EXPECT_FALSE(inMenu("RecordEditTripLog")->isVisible());
    settings_.setInteger("Diagnostics", "Menu", 1);
    const auto before = test::logCells(document_);
    TTripLogTable& trips = document_.trips();
    const auto& distance = trips.column<TTripLogDistanceColumn>();
    EXPECT_FALSE(
        document_.edits().type(trips.id(), trips.indexOf("TTripLogDistanceColumn"), 1, "1", context_.text()).ok());
    list().setCurrentRow(1);
    const auto start = [&](const char* name, const char* title) {
        QAction* action = inMenu(name);
        EXPECT_TRUE(action->isVisible() && action->isEnabled()) << name;
        action->trigger();
        EXPECT_EQ(dialog().windowTitle(), title);
    };
    const auto end = [&](void (QDialog::*how)()) {
        (dialog().*how)();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return view_->findChild<QDialog*>() == nullptr;
    };
    const auto field = [&](const char* key) { return dialog().findChild<QLineEdit*>(QLatin1String(key)); };

    start("RecordEditTripLog", "Diagnostics / Edit Trip Log");
    EXPECT_FALSE(dialog().findChild<QWidget*>("TTripLogQuobrixSerialNumberColumn"));
    field("TTripLogDistanceColumn")->setText("far");
    EXPECT_FALSE(end(&QDialog::accept)) << "what is no figure is refused";
    field("TTripLogDistanceColumn")->setText("-3");
    EXPECT_FALSE(end(&QDialog::accept));
    field("TTripLogDistanceColumn")->setText("1000");
    const QString endTime = field("TTripLogEndTimeColumn")->text();
    field("TTripLogEndTimeColumn")->clear();
    EXPECT_FALSE(end(&QDialog::accept));
    field("TTripLogEndTimeColumn")->setText(endTime);
    field("TTripLogVinColumn")->setText("VAN");
    EXPECT_FALSE(end(&QDialog::accept));
    EXPECT_EQ(test::logCells(document_), before) << "nothing was taken yet";
    field("TTripLogVinColumn")->setText("1HGCM82633A004352");
    EXPECT_TRUE(end(&QDialog::accept));
    EXPECT_EQ(distance.at(1), 1000);
    EXPECT_EQ(recordedAt(distance, &trips.column<TTripLogRecordedCellsColumn>(), 1), 12000);
    EXPECT_EQ(trips.recorded(1).vin, test::kVin);
    EXPECT_EQ(document_.vehicles().nameOf("1HGCM82633A004352"), "Unknown #2") << "as that of a download";
    EXPECT_EQ(document_.edits().undoDescription(), "editing Trip 2");
    document_.edits().undo();
    EXPECT_EQ(test::logCells(document_), before) << "in one step";

    const auto& samples = trips.column<TTripLogSampleTableColumn>();
    for (const bool taken : {false, true}) {
        start("RecordEditSpeedProfile", "Diagnostics / Edit Trip Log / Edit Speed Profile");
        SpreadsheetModel& model = dialog().findChild<TSpreadsheet*>()->model();
        EXPECT_EQ(model.text(3, 0), "00:00:03");
        EXPECT_FALSE(model.type(3, 1, "100").ok()) << "no sample is that fast (m/s)";
        EXPECT_TRUE(model.type(3, 1, "10").ok());
        EXPECT_TRUE(end(taken ? &QDialog::accept : &QDialog::reject));
        EXPECT_EQ(samples.object(1)->speed().at(3), taken ? 36 : 3);
        EXPECT_EQ(samples.object(1)->speed().at(4), 4);
    }
    EXPECT_EQ(trips.column<TTripLogRecordedSampleTableColumn>().object(1)->speed().at(3), 3);
    EXPECT_EQ(samples.object(1)->series(0).series().size(), 4u);
    start("RecordEditSpeedBands", "Diagnostics / Edit Trip Log / Edit Speed Bands");
    const auto from = [&](const char* speed) {
        EXPECT_TRUE(dialog().findChild<TSpreadsheet*>()->model().type(2, 0, QLatin1String(speed)).ok());
        return end(&QDialog::accept);
    };
    EXPECT_FALSE(from("11")) << "below the end of the band before it";
    EXPECT_FALSE(from("30")) << "above its own end";
    EXPECT_TRUE(from("21"));
    EXPECT_EQ(trips.column<TTripLogSpeedBandsTableColumn>().object(1)->column<TTripLogSpeedBandFromColumn>().at(2), 21);
    document_.edits().undo();
    document_.edits().undo();
    EXPECT_EQ(test::logCells(document_), before);

    document_.troubles().insertRows(0, 1);
    document_.activity().insertRows(0, 2);
    document_.activity().column<TSecurityLogEventTypeColumn>().setAll({0, 5});
    open(LogId::Troubles);
    start("RecordEditTroubleLog", "Diagnostics / Edit Trouble Log");
    field("TTroubleLogTroubleCodeColumn")->setText("P0420");
    dialog().findChild<QComboBox*>("TTroubleLogFuelSystemOneStatusColumn")->setCurrentIndex(3);
    EXPECT_TRUE(end(&QDialog::accept));
    EXPECT_EQ(document_.troubles().column<TTroubleLogTroubleCodeColumn>().at(0), "P0420");
    EXPECT_EQ(document_.troubles().column<TTroubleLogFuelSystemOneStatusColumn>().at(0), 2);
    ScriptedPrompter told{{MessageId::ValuesRefused}};
    context_.prompter = &told;
    open(LogId::Activity);
    start("RecordEditSecurityLog", "Diagnostics / Edit Security Log");
    EXPECT_TRUE(end(&QDialog::accept));
    list().setCurrentRow(0);
    inMenu("RecordEditSecurityLog")->trigger(); // what the logger tells of a connection stays
    EXPECT_FALSE(view_->findChild<QDialog*>());
}

TEST_F(RecordCommandsTest, RecordsOfEveryLogAreDeletedWhenAPersonSaysSo) {
    document_.store().singleton<TAccidentLogTable>();
    for (const LogId log : {LogId::Troubles, LogId::Activity, LogId::Accidents})
        document_.log(logSpec(log))->insertRows(0, 4);
    document_.accidents()->column<TAccidentLogSpeedSamplesColumn>().makeObject(1).setAll({9, 0});
    document_.troubles().column<TTroubleLogTroubleCodeColumn>().set(3, "P0301");
    const auto before = test::logCells(document_);
    for (const LogSpec& log : logs()) {
        SCOPED_TRACE(log.name);
        const Table& table = *document_.log(log);
        open(log.id);
        ScriptedPrompter asked({{MessageId::DeleteRecords, Answer::No}, {MessageId::DeleteRecords, Answer::Yes}}, {});
        context_.prompter = &asked;
        open(log.id);
        select(1, 2);
        QAction& remove = list().commands().action(SpreadsheetCommand::Delete);
        ASSERT_TRUE(remove.isEnabled());
        remove.trigger();
        EXPECT_EQ(table.rowCount(), 4u);
        QTest::keyClick(&list().view(), Qt::Key_Delete);
        EXPECT_EQ(table.rowCount(), 2u);
        EXPECT_TRUE(asked.shown.back().starts_with("Delete 2 " + std::string(log.records.english()) + "?\n\n"));
        document_.edits().undo();
    }
    EXPECT_EQ(test::logCells(document_), before);
}

} // namespace
} // namespace quobrix
