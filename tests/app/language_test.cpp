#include "app/about_box.h"
#include "app/dialog_prompter.h"
#include "app/logger_dialogs.h"
#include "app/main_frame.h"
#include "app/miscellaneous_dialog.h"
#include "app/names_commands.h"
#include "app/page_setup_dialog.h"
#include "app/print_preview.h"
#include "app/properties_dialog.h"
#include "app/table_windows.h"
#include "app/text_file_window.h"
#include "app/unidentified_vehicle_dialog.h"
#include "base/ui/qt_text.h"
#include "config/configuration_codes.h"
#include "config/ui/configuration_dialogs.h"
#include "config/ui/parameter_threshold_dialog.h"
#include "model/quobrix_document.h"
#include "plots/ui/plot_options_dialog.h"
#include "plots/ui/plot_widget.h"
#include "settings/settings.h"
#include "summary/ui/trip_counter.h"
#include "support/fake_logger_library.h"
#include "support/frame_fixture.h"
#include "support/pseudo_catalogue.h"
#include "support/shown_texts.h"
#include "support/temporary_folder.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/ui/catalogue_translator.h"
#include "ui/waiting.h"
#include "units/ui/unit_system_dialog.h"
#include "units/ui/unit_system_name_dialogs.h"
#include "units/unit_catalogue.h"
#include "views/comments_dialog.h"
#include "views/driving_panel.h"
#include "views/fuel_entry_dialog.h"
#include "views/log_view.h"
#include "views/names_dialog.h"
#include "views/readiness_window.h"
#include "views/record_dialog.h"
#include "views/summary_log_dialog.h"
#include "views/trip_type_dialog.h"
#include "views/trip_type_window.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace quobrix::testing {
namespace {

/// What may stand outside of brackets, and why.
constexpr const char* kNoTexts[] = {
    "Quobrix",                                     // the product's name
    "1\\.0\\.0",                                   // its version
    "\\w{3} +\\d+ \\d{4}",                         // the day on which it was built, as the compiler
                                                   // gives it
    "S\\.I\\.|U\\.S\\.",                           // a unit system is called as its file
    "(^|\\s)/\\S+|\\S+\\.car",                     // files
    "\\b[AP]M\\b",                                 // the locale's halves of the day
    "\\b[A-Z]-\\d{4}-[A-Z]",                       // serial numbers of loggers
    "\\b[PBCU]\\d{4}\\b",                          // trouble codes
    "\\b(Business|Commuting|Personal)\\b",         // trip types, as their file has them
    "(Ctrl|Shift|Alt)\\+\\S+|\\((Del|Ins|Esc)\\)", // keys, which the toolkit
                                                   // names
};

/// Words that people, vehicles and standards have made.
struct Data {
    QStringList values;      ///< wherever they stand
    std::set<QString> words; ///< by themselves
};

/// The texts with words that no catalogue has seen, each with the first place where it stands.
std::set<std::string> untranslated(const test::SeenTexts& texts, Data data) {
    std::ranges::sort(data.values, std::greater(), &QString::size);
    static const QRegularExpression kWord(QStringLiteral("[A-Za-z]{2,}"));
    std::set<QString> seen;
    std::set<std::string> found;
    for (const auto& [where, text] : texts) {
        if (!seen.insert(text).second)
            continue;
        QString rest = toQt(outsideBrackets(text.toStdString()));
        if (!rest.contains(kWord))
            continue;
        for (const QString& value : data.values)
            rest.remove(value);
        for (const char* allowed : kNoTexts)
            rest.remove(QRegularExpression(QLatin1String(allowed)));
        for (auto word = kWord.globalMatch(rest); word.hasNext();)
            if (!data.words.contains(word.next().captured()))
                found.insert((where + QStringLiteral(": ") + text).toStdString());
    }
    return found;
}

class NoPrinters final : public Printers {
public:
    Known find() override { return {}; }
    Result<void> print(const PrintOrder&, const PageSource&, DiskProgress&) override { return {}; }
};

class LanguageTest : public ::testing::Test {
protected:
    LanguageTest() {
        qApp->installTranslator(&translator_);
        QObject::connect(&watch_, &QTimer::timeout, [this] {
            if (auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
                ++boxes_;
                test::addTexts(shown_, *box);
                box->reject();
            }
        });
        watch_.start(0);
        const QRegularExpression between(QStringLiteral("[^A-Za-z]+"));
        for (const UnitRecord& unit : allUnits())
            for (const std::string_view name : {unit.name, unit.nameOfOne()})
                for (const QString& word : toQt(name).split(between))
                    data_.words.insert(word);
    }
    ~LanguageTest() override { qApp->removeTranslator(&translator_); }

    /// Everything that has been added to shown_ must have been looked up. AT_LEAST so many texts show that there was
    /// something to see.
    void expectTranslated(std::size_t atLeast) {
        EXPECT_GE(shown_.size(), atLeast);
        for (const std::string& text : untranslated(shown_, data_))
            ADD_FAILURE() << text;
        shown_.clear();
    }

    void look(QWidget& window) {
        QApplication::processEvents();
        test::addTexts(shown_, window);
    }

    /// What the cells of TABLE hold that a person, or a vehicle, has written.
    void addData(const Table& table) {
        for (std::size_t i = 0; i < table.columnCount(); ++i)
            if (const Column& column = table.column(i); column.kind() == ColumnKind::Text && column.stored())
                for (RowIndex row = 0; row < table.rowCount(); ++row)
                    if (const std::string value = column.text(row, context_.text()); !value.empty())
                        data_.values << toQt(value);
    }

    /// WORK ends with so many boxes, each of which is looked at and closed.
    template <class Work>
    void expectBoxes(int boxes, const Work& work) {
        boxes_ = 0;
        work();
        QApplication::processEvents();
        EXPECT_EQ(boxes_, boxes);
    }

    const PseudoLanguage language_{PseudoCatalogue::Places::Bare};
    CatalogueTranslator translator_;
    Settings settings_{std::make_unique<MemorySettings>()};
    Reminders reminders_{settings_, [] { return 0; }};
    TQuobrixDocument document_;
    TUnitSystem units_;
    TimeZone zone_;
    const ViewContext context_{document_, settings_, units_, zone_};
    test::SeenTexts shown_;
    Data data_;
    QTimer watch_; ///< for boxes
    int boxes_ = 0;
};

TEST_F(LanguageTest, ACommandKeepsItsNameAndShortcut) {
    TQuobrixFrame frame(context_);
    EXPECT_EQ(frame.commands().action(CommandId::Open)->text(), QStringLiteral("⟦&Open...⟧"));
    EXPECT_EQ(frame.commands().action(CommandId::Open)->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
    EXPECT_TRUE(frame.menuBar()->findChild<QMenu*>(QStringLiteral("DiagnosticsMenu")));
}

TEST_F(LanguageTest, EveryPageIsTranslated) {
    TQuobrixFrame frame(context_);
    frame.show();
    ASSERT_TRUE(frame.files().openExample(QUOBRIX_EXAMPLE));
    for (const LogSpec& log : logs())
        if (const Table* table = document_.log(log))
            addData(*table);
    for (const Table* names :
         std::initializer_list<const Table*>{&document_.vehicles(), &document_.loggers(), &document_.drivers()})
        addData(*names);
    settings_.setText("Recent File List", "File1", "/home/driver/Family.car");
    frame.documentChanged();
    for (const MenuRow& row : menuRows())
        if (frame.pages().show(static_cast<int>(row.id)))
            look(frame);
    for (const LogSpec& log : logs()) {
        frame.pages().show(log.page);
        auto& page = static_cast<LogView&>(*frame.pages().page(log.page));
        page.findChild<QToolButton*>(QStringLiteral("filterMore"))->click();
        for (const char* field : {"filterWords", "filterFrom"}) {
            page.findChild<QLineEdit*>(QLatin1String(field))->setText(QStringLiteral("7"));
            QTest::keyClick(page.findChild<QLineEdit*>(QLatin1String(field)), Qt::Key_Return);
            look(frame); // with a filter, and then with a refusal
        }
        page.findChild<QToolButton*>(QStringLiteral("filterShowAll"))->click();
        for (const LogViewSpec& view : log.views()) {
            page.showView(view.kind);
            look(frame);
            if (const auto report = page.printable({}))
                test::addTexts(shown_, *report);
        }
    }
    expectTranslated(10'000);
}

TEST_F(LanguageTest, EveryDialogOfTheFrameIsTranslated) {
    AboutBox about(programLines(), {}, nullptr);
    look(about);
    MiscellaneousDialog miscellaneous(settings_, reminders_, nullptr);
    look(miscellaneous);
    AlarmDialog alarm({3, 10}, nullptr);
    look(alarm);
    for (const bool readOnly : {false, true}) {
        TDateAndTimeDialog dateAndTime({0, 0, readOnly}, context_.text(), nullptr);
        look(dateAndTime);
    }
    TTimeDifferenceDialog timeDifference({{}, {}, true, true}, nullptr);
    look(timeDifference);
    TUnidentifiedVehicleDialog vehicle({{}, 2, {}, {}, {}, true, false}, nullptr);
    look(vehicle);
    TextFileWindow logFile(nullptr);
    look(logFile);
    TMemoryDialog memory({1000, 500}, {}, units_, nullptr);
    look(memory);
    QWidget window;
    DialogPrompter prompter(window, reminders_, context_.text(), [](const QString&) {});
    const TableDialogContext tables{units_, zone_, settings_, prompter};
    const FakeLoggerLibrary fake;
    LoggerLink link(FakeLoggerLibrary::library());
    DirectCalls calls(link);
    ProgressReporter noProgress;
    ConfigurationFlow flow(calls, prompter, noProgress);
    const LoggerConfiguration set = withDefaultParameters(withDefaultLimits({}));
    TCurrentSpeedBandsDialog bands(tables, flow, set, nullptr);
    look(bands);
    for (const Maneuver maneuver : {Maneuver::Braking, Maneuver::Acceleration}) {
        ThresholdsDialog thresholds(maneuver, tables, document_.trips(), flow, set, nullptr);
        look(thresholds);
    }
    TCurrentParametersDialog parameters(tables, document_.trips(), flow, set, nullptr);
    look(parameters);
    SetParameterThreshDialog parameterThresholds(tables, nullptr);
    look(parameterThresholds);
    ViewContext asking = context_;
    asking.prompter = &prompter;
    TripTypeDialog types(asking, readTripTypes("Z\t0.5\tkm\nZ\t?"), nullptr);
    look(types);
    types.findChild<QTabWidget*>()->setCurrentIndex(1);
    look(types);
    TripTypeWindow typeReport(asking, readTripTypes("Z\t0.5\tkm"), nullptr);
    look(typeReport);
    ReadinessWindow readiness(context_, *readMonitors("Z\tcruise=300,warmups=1"), nullptr);
    QApplication::processEvents(); // which reads the trips
    look(readiness);
    const RowIndex trip = test::addTrip(document_, test::kStart);
    addData(document_.vehicles());
    TCommentsDialog comments(context_, logSpec(LogId::Trips), trip, nullptr);
    look(comments);
    RecordFieldsDialog fields(context_, logSpec(LogId::Trips), trip, QObject::tr("Diagnostics / Edit Trip Log"),
                              nullptr);
    look(fields);
    TTripLogSampleDialog samples(context_, trip, nullptr);
    look(samples);
    TTripLogSpeedBandsDialog tripBands(context_, trip, nullptr);
    look(tripBands);
    settings_.setInteger("Diagnostics", "Menu", 1);
    LogView log(context_, logSpec(LogId::Trips));
    log.refresh();
    emit log.summary().view().menuRequested({});
    look(log);
    for (QMenu* menu : log.findChildren<QMenu*>(QStringLiteral("SpreadsheetMenu")))
        menu->close();
    SummaryKeeper keeper({});
    TripCounter counter(document_, settings_, keeper);
    ViewContext counting = context_;
    counting.counter = &counter;
    SummaryLogDialog summaries(counting, nullptr);
    look(summaries);
    DrivingPanel driving(counting, {});
    driving.refresh();
    look(driving);
    PropertiesDialog properties(
        context_, [] {}, nullptr);
    look(properties);
    TPlotOptionsDialog plots(
        context_.text(), settings_, [] {}, nullptr);
    look(plots);
    log.showView(LogViewKind::Plot);
    for (auto* plot : log.findChildren<PlotWidget*>()) {
        emit plot->menuRequested({}, 0);
        look(log);
        for (QMenu* menu : log.findChildren<QMenu*>(QStringLiteral("PlotMenu")))
            menu->close();
    }
    PageSetupDialog setup({}, nullptr);
    look(setup);
    log.showView(LogViewKind::Summary);
    const Printable list{[&](const auto& range) { return log.printable(range); }, log.printableRecords()};
    Background threads;
    const PrintThreads printing{std::make_shared<NoPrinters>(), threads, threads};
    PrintDialog print(context_, list, *log.printable({}), printing, nullptr);
    look(print);
    auto& range = *print.findChild<TFixedTableSpreadsheet*>();
    for (const char* typed : {"9", "x"})
        shown_.push_back({QStringLiteral("print range"), toQt(range.model().type(0, 0, QLatin1String(typed)).refusal)});
    QApplication::processEvents();
    look(print); // without a printer
    PrintDialog pages(context_, {[&](const auto& all) { return log.printable(all); }}, *log.printable({}), printing,
                      nullptr);
    look(pages);
    PrintPreviewDialog preview(context_, *log.printable({}), {}, threads, nullptr);
    look(preview);
    expectTranslated(100);
}

TEST_F(LanguageTest, WhatASpreadsheetOffersIsTranslated) {
    TQuobrixFrame frame(context_);
    const NamesCommands names(frame);
    frame.show();
    for (const CommandId id : {CommandId::VehicleId, CommandId::QuobrixId, CommandId::DriverId, CommandId::FuelEntry})
        frame.commands().trigger(id);
    for (ListDialog* dialog : frame.listDialogs()) {
        look(*dialog); // without entries
        auto& list = *dialog->findChild<TTableSpreadsheet*>();
        SpreadsheetCommands& commands = list.commands();
        commands.action(SpreadsheetCommand::Add).trigger();
        look(*dialog); // with an entry that lacks its key
        // Where something is typed, not chosen.
        const int typed = dynamic_cast<FuelEntryDialog*>(dialog) ? 2 : 0;
        list.view().edit(list.model().index(0, typed));
        look(*dialog); // with an editor
        dialog->findChild<QLineEdit*>(QStringLiteral("cellEditor"))->setText(QStringLiteral("7"));
        dialog->finishEdit();
        look(*dialog); // with a refusal, or with what may be undone
        if (list.view().isEditing())
            QTest::keyClick(dialog->findChild<QWidget*>(QStringLiteral("cellEditor")), Qt::Key_Escape);
        commands.action(SpreadsheetCommand::Undo).trigger();
        look(*dialog); // with what may be done again
        commands.action(SpreadsheetCommand::Redo).trigger();
        commands.action(SpreadsheetCommand::Find).trigger();
        auto* find = dialog->findChild<QLineEdit*>(QStringLiteral("findText"));
        for (const char* wanted : {"e", "no such text"}) {
            find->setText(QLatin1String(wanted));
            look(*dialog);
        }
        emit list.view().menuRequested({});
        emit list.view().headingMenuRequested(0, {});
        look(*dialog); // with both menus
        for (QMenu* menu : dialog->findChildren<QMenu*>())
            menu->close();
        expectBoxes(1, [&] { commands.action(SpreadsheetCommand::Columns).trigger(); });
        expectBoxes(1, [&] { commands.action(SpreadsheetCommand::Paste).trigger(); });
        frame.tableWindows().showRequirements(list.model().column(0));
        frame.tableWindows().showErrors();
        look(frame);
    }
    data_.values << QStringLiteral("no such text");
    expectTranslated(1'000);
}

TEST_F(LanguageTest, TheUnitsDialogsAreTranslated) {
    const test::TemporaryFolder folder;
    UnitSystemStore store(units_, {folder.path(), folder.path()});
    TQuobrixFrame frame(context_);
    UnitSystemDialog dialog(units_, store, settings_, frame.prompter(), &frame);
    look(dialog);
    NewUnitSystemDialog fresh(store, frame.prompter(), "Mine", units_.name(), &frame);
    look(fresh);
    RenameUnitSystemDialog rename(store, frame.prompter(), "Mine", &frame);
    look(rename);
    data_.values << QStringLiteral("Mine");
    expectTranslated(150);
}

TEST_F(LanguageTest, TheWaitIsTranslated) {
    QWidget window;
    Waiting waiting(&window, "Wait", {.blink = {}, .patience = {}}, [] {});
    Completion work;
    waiting.until(work, [&] {
        for (QWidget* dialog : window.findChildren<QDialog*>())
            test::addTexts(shown_, *dialog);
        if (shown_.size() > 3)
            work.finish();
        return WaitState{.what = QStringLiteral("⟦…⟧")};
    });
    expectTranslated(3);
}

TEST_F(LanguageTest, EveryMessageAndItsBoxIsTranslated) {
    for (const MessageSpec& spec : kMessages)
        for (const SourceText& part : {spec.title, spec.text})
            shown_.push_back({toQt(spec.key), toQt(text(part))});
    EXPECT_EQ(fileMessage({ErrorKind::NotFound, {}}, FileAction::Open, "a.car").text,
              "a.car⟦ cannot be ⟧⟦opened⟧⟦ because it does not exist.⟧");
    QWidget window;
    DialogPrompter prompter(window, reminders_, context_.text(), [](const QString&) {});
    expectBoxes(4, [&] {
        prompter.askOrCancel(makeMessage(MessageId::KeepUnitChanges, "⟦⟧"));
        prompter.tell(makeMessage(MessageId::InvalidSerialNumber));
        prompter.choose(SourceText("vehicle"), {"COM3"}, 0);
        SerialPortForm form{{"COM3"}, "COM3", {}, {}};
        prompter.fillIn(form);
    });
    data_.values << QStringLiteral("COM3");
    expectTranslated(20);
}

} // namespace
} // namespace quobrix::testing
