#include "app/print_commands.h"

#include "app/page_setup_dialog.h"
#include "app/print_preview.h"
#include "app/table_windows.h"
#include "base/ui/qt_text.h"
#include "model/logger_tables.h"
#include "paper/ui/page_view.h"
#include "report/ui/printable_window.h"
#include "support/frame_fixture.h"
#include "support/temporary_folder.h"
#include "support/text_file.h"
#include "tables/ui/table_spreadsheet.h"
#include "views/fuel_entry_dialog.h"
#include "views/log_view.h"
#include "views/names_dialog.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include <condition_variable>
#include <mutex>
#include <regex>

namespace quobrix {
namespace {

/// One printer, found when the test lets it be, which keeps what is printed.
class FakePrinters final : public Printers {
public:
    Known find() override {
        std::unique_lock lock(mutex);
        found.wait(lock, [this] { return ready; });
        return {{QStringLiteral("Attic"), QStringLiteral("Office")}, QStringLiteral("Office")};
    }
    Result<void> print(const PrintOrder& what, const PageSource& pages, DiskProgress&) override {
        if (broken)
            return Error{ErrorKind::Io, {}};
        order = what;
        paper = pages.paper;
        for (std::size_t i = what.first; i < std::min(what.last, pages.count); ++i)
            for (const DrawingCommand& command : pages.page(i).commands)
                if (const auto* text = std::get_if<Text>(&command))
                    texts.push_back(text->text);
        return {};
    }
    void letFind() {
        const std::lock_guard lock(mutex);
        ready = true;
        found.notify_all();
    }

    std::mutex mutex;
    std::condition_variable found;
    bool ready = false, broken = false;
    PrintOrder order;
    Size paper;
    std::vector<std::string> texts;
};

class PrintTest : public test::FrameTest {
protected:
    void SetUp() override {
        for (std::int32_t n = 0; n < 40; ++n)
            test::addTrip(document_, 1'000'000'000 + n * 86'400);
        frame_.resize(1000, 700);
        frame_.show();
        frame_.pages().show(kTripLogPage);
    }
    ~PrintTest() override { printers_->letFind(); }

    LogView& trips() { return static_cast<LogView&>(*frame_.pages().page(kTripLogPage)); }
    /// Runs COMMAND; LOOK sees the dialog that it opens.
    template <class Dialog, class Look>
    void run(CommandId command, Look look) {
        bool seen = false;
        test::inNextDialog<QDialog>([&](QDialog& shown) {
            if (auto* dialog = dynamic_cast<Dialog*>(&shown)) {
                seen = true;
                look(*dialog);
            } else {
                shown.reject();
            }
        });
        frame_.commands().trigger(command);
        EXPECT_TRUE(seen);
    }
    /// Once it shows its pages.
    PrintPreviewDialog* preview() {
        const auto* view = frame_.findChild<PageView*>();
        EXPECT_TRUE(!view || QTest::qWaitFor([&] { return view->count() > 0; }));
        return static_cast<PrintPreviewDialog*>(frame_.findChild<QDialog*>(QStringLiteral("PrintPreview")));
    }
    template <class Widget>
    static Widget& part(QWidget& window, const char* name) {
        return *window.findChild<Widget*>(QLatin1String(name));
    }
    static bool printable(QWidget& dialog) { return part<QPushButton>(dialog, "PrintButton").isEnabled(); }
    void typeRange(QWidget& dialog, const char* first, const char* last) {
        auto& range = part<TFixedTableSpreadsheet>(dialog, "TLogPrintRange");
        refusal_ = range.model().type(0, 0, QLatin1String(first)).refusal;
        refusal_ += range.model().type(0, 1, QLatin1String(last)).refusal;
    }

    std::shared_ptr<FakePrinters> printers_ = std::make_shared<FakePrinters>();
    Background search_;
    PrintCommands commands_{frame_, search_, printers_};
    std::string refusal_;
};

TEST_F(PrintTest, TheRecordsOfARangeArePrintedAsTheyAreShown) {
    QTableView& list = trips().summary().view();
    list.sortByColumn(trips().summary().model().indexOf("TTripLogStartTimeColumn"), Qt::DescendingOrder);
    printers_->letFind();
    std::string pages;
    run<PrintDialog>(CommandId::Print, [&](PrintDialog& dialog) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return printable(dialog); }));
        EXPECT_EQ(part<QComboBox>(dialog, "Printer").currentText(), "Office");
        typeRange(dialog, "12", "3");
        EXPECT_EQ(refusal_, "");
        const auto& count = part<QLabel>(dialog, "Pages");
        EXPECT_TRUE(QTest::qWaitFor([&] { return count.text().at(0).isDigit(); }));
        pages = count.text().section(QLatin1Char(' '), 0, 0).toStdString();
        part<QSpinBox>(dialog, "Copies").setValue(2);
        part<QPushButton>(dialog, "PrintButton").click();
    });
    EXPECT_EQ(printers_->order.printer, "Office");
    EXPECT_EQ(printers_->order.copies, 2);
    EXPECT_GT(printers_->paper.width, printers_->paper.height) << "lists lie on their side";
    std::vector<std::string> numbers;
    for (const std::string& text : printers_->texts)
        if (std::regex_match(text, std::regex("\\d{1,2}")) && text != "0")
            numbers.push_back(text);
    const std::vector<std::string> expected{"12", "11", "10", "9", "8", "7", "6", "5", "4", "3"};
    std::vector<std::string> rows;
    for (const std::string& number : numbers)
        if (std::ranges::find(expected, number) != expected.end() && std::ranges::find(rows, number) == rows.end())
            rows.push_back(number);
    EXPECT_EQ(rows, expected);
    EXPECT_EQ(printers_->texts.back(), "Page " + pages + " of " + pages) << "as many as the range takes";
}

TEST_F(PrintTest, ARecordThatDoesNotExistIsRefused) {
    const struct {
        const char* typed;
        const char* refusal;
    } cases[] = {{"41", "Record (41) doesn't exist!"},
                 {"0", "Record (0) doesn't exist!"},
                 {"all", "'all' is not a valid record"},
                 {"", "'' is not a valid record"}};
    for (const auto& c : cases)
        run<PrintDialog>(CommandId::Print, [&](PrintDialog& dialog) {
            typeRange(dialog, c.typed, "40");
            EXPECT_EQ(refusal_, c.refusal);
            dialog.reject();
        });
    EXPECT_TRUE(printers_->texts.empty());
}

TEST_F(PrintTest, NothingWaitsForPrinters) {
    run<PrintDialog>(CommandId::Print, [&](PrintDialog& dialog) {
        EXPECT_FALSE(printable(dialog)) << "none is known yet";
        EXPECT_TRUE(part<QPushButton>(dialog, "PdfButton").isEnabled());
        dialog.reject();
    });
    printers_->letFind(); // the dialog is gone by now
    QApplication::processEvents();
}

TEST_F(PrintTest, APrinterThatFailsIsTold) {
    printers_->letFind();
    printers_->broken = true;
    run<PrintDialog>(CommandId::Print, [&](PrintDialog& dialog) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return printable(dialog); }));
        test::inNextDialog<QDialog>([&](QDialog& told) {
            EXPECT_EQ(told.objectName(), "NotPrinted");
            told.reject();
        });
        part<QPushButton>(dialog, "PrintButton").click();
    });
}

TEST_F(PrintTest, WhatIsInFrontIsPrinted) {
    const auto titleInPreview = [&] {
        frame_.commands().trigger(CommandId::PrintPreview);
        PrintPreviewDialog* shown = preview();
        const QString title = shown ? shown->windowTitle() : QString();
        delete shown;
        return title.section(QStringLiteral(" - "), 1).toStdString();
    };
    EXPECT_EQ(titleInPreview(), "Trip Log");
    trips().showRecord(2);
    EXPECT_EQ(titleInPreview(), "Trip 3");
    trips().showView(LogViewKind::Table);
    EXPECT_EQ(titleInPreview(), "Trip 3");
    frame_.pages().show(kHomePage);
    EXPECT_EQ(titleInPreview(), document_.title());
    frame_.pages().show(static_cast<int>(CommandId::AccidentLog));
    bool told = false;
    test::inNextDialog<QDialog>([&](QDialog& box) {
        told = box.objectName() == QLatin1String("NothingToPrint");
        box.reject();
    });
    EXPECT_EQ(titleInPreview(), "");
    EXPECT_TRUE(told) << "an empty log has no pages";
    trips().summary().view().selectRow(1);
    trips().summary().view().selectionModel()->select(trips().summary().model().index(4, 0),
                                                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    trips().findChild<QAction*>("RecordCompare")->trigger();
    auto* compared = trips().findChild<QDialog*>("Comparison");
    ASSERT_TRUE(compared);
    EXPECT_TRUE(compared->actions().contains(frame_.commands().action(CommandId::Print)));
    compared->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(compared));
    EXPECT_EQ(titleInPreview(), "Comparison of Trip 2, Trip 5") << "although the logger began all at one time";
    compared->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(compared));
    frame_.commands().trigger(CommandId::PrintPreview);
    EXPECT_EQ(preview()->parentWidget(), compared) << "which is in front again afterwards";
    delete preview();
    delete compared;
    frame_.tableWindows().showErrors();
    QWidget* errors = frame_.findChild<QWidget*>("TErrorLog");
    ASSERT_TRUE(errors);
    EXPECT_TRUE(errors->actions().contains(frame_.commands().action(CommandId::Print)));
    // Such windows hide the menus: each has its own buttons.
    TVehicleNamesDialog names(frame_.context(), &frame_);
    FuelEntryDialog fills(frame_.context(), &frame_);
    document_.vehicles().addMissing(std::vector<std::string>{"V"});
    for (QDialog* window : std::initializer_list<QDialog*>{&names, &fills}) {
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
        auto* button = window->findChild<QPushButton*>(window->objectName() + QLatin1String("PrintPreview"));
        ASSERT_TRUE(button) << window->objectName().toStdString();
        if (window == &fills)
            test::inNextDialog<QDialog>([](QDialog& box) { box.reject(); }); // there are no entries
        button->click();
        EXPECT_EQ(preview() != nullptr, window == &names);
        EXPECT_TRUE(!preview() || preview()->windowTitle() == "Print Preview - Vehicle ID");
        delete preview();
    }
    EXPECT_TRUE(static_cast<PrintableWindow&>(names).printable()->wide);
}

TEST_F(PrintTest, ThePreviewIsWalkedThrough) {
    for (std::int32_t n = 0; n < 160; ++n)
        test::addTrip(document_, 1'010'000'000 + n * 86'400);
    frame_.documentChanged();
    frame_.commands().trigger(CommandId::PrintPreview);
    PrintPreviewDialog* const shown = preview();
    ASSERT_TRUE(shown);
    PageView& view = shown->view();
    const std::size_t count = view.count();
    ASSERT_GT(count, 5u);
    const auto trigger = [&](const char* name) { shown->findChild<QAction*>(QLatin1String(name))->trigger(); };
    EXPECT_FALSE(shown->findChild<QAction*>("PreviewPrevious")->isEnabled());
    trigger("PreviewNext");
    EXPECT_EQ(view.current(), 1u);
    trigger("PreviewLast");
    EXPECT_EQ(view.current(), count - 1);
    EXPECT_FALSE(shown->findChild<QAction*>("PreviewNext")->isEnabled());
    auto& page = part<QSpinBox>(*shown, "PreviewPage");
    EXPECT_EQ(page.text(), QStringLiteral("%1 of %1").arg(count));
    page.setValue(3);
    EXPECT_EQ(view.current(), 2u);
    QTest::keyClick(&view, Qt::Key_PageUp);
    EXPECT_EQ(view.current(), 1u);
    QTest::keyClick(&view, Qt::Key_End);
    EXPECT_EQ(view.current(), count - 1);
    QTest::keyClick(&view, Qt::Key_Home);
    EXPECT_EQ(view.current(), 0u);
    EXPECT_EQ(view.accessibleName(), QStringLiteral("Page 1 of %1").arg(count));
    auto& zoom = part<QComboBox>(*shown, "PreviewZoom");
    EXPECT_EQ(zoom.currentText(), "Fit Page");
    const double whole = view.scale();
    trigger("PreviewZoomIn");
    EXPECT_GT(view.scale(), whole);
    trigger("PreviewTwoPages");
    trigger("PreviewNext");
    EXPECT_EQ(view.current(), 2u) << "two by two";
    // Other paper lays the pages out anew.
    test::inNextDialog<QDialog>([&](QDialog& dialog) {
        part<QComboBox>(dialog, "Orientation").setCurrentIndex(static_cast<int>(Orientation::Portrait));
        dialog.accept();
    });
    trigger("PreviewSetup");
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.count() != count; }));
    EXPECT_EQ(PageSetup::load(settings_).orientation, Orientation::Portrait);
    delete shown;
    frame_.commands().trigger(CommandId::PrintPreview);
    EXPECT_EQ(preview()->view().columns(), 2) << "is remembered";
}

TEST_F(PrintTest, AReportIsCopiedAsDrawingAndPicture) {
    trips().showRecord(2);
    auto* report = trips().findChild<QWidget*>("TTripLogRecordView");
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), report->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(report, &event);
    auto* menu = report->findChild<QMenu*>("ReportMenu");
    ASSERT_TRUE(menu);
    const auto trigger = [&](const char* name) { menu->findChild<QAction*>(QLatin1String(name))->trigger(); };
    trigger("ReportCopyMetafile");
    const QByteArray svg = QApplication::clipboard()->mimeData()->data(QStringLiteral("image/svg+xml"));
    EXPECT_TRUE(svg.contains(">Trip 3</text>")) << svg.left(400).toStdString();
    trigger("ReportCopyBitmap");
    EXPECT_GT(QApplication::clipboard()->image().height(), 300);
    trigger("ReportCopy");
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith("Trip 3\n"));
    menu->close();
}

TEST_F(PrintTest, AReportIsSavedAsWhatItsFileIsCalled) {
    test::TemporaryFolder folder;
    const struct {
        const char* chosen;
        std::vector<std::string> files;
        QString told;
    } cases[] = {{"mine.car", {}, QStringLiteral("ExportIsDocument")},
                 {"Trip.HTML", {"Trip.HTML"}, {}},
                 {"Trip 3.5", {"Trip 3.5.pdf", "Trip.HTML"}, {}},
                 {"Trip.png", {"Trip 3.5.pdf", "Trip.HTML"}, QStringLiteral("CannotExport")}};
    trips().showRecord(2);
    const Report report = *trips().printable({});
    Report high = report; // than any picture can be
    high.blocks.emplace_back(Paragraph{std::string(2'000, '\n')});
    for (const auto& c : cases) {
        QString told;
        QTimer answer;
        QObject::connect(&answer, &QTimer::timeout, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (auto* files = qobject_cast<QFileDialog*>(dialog)) {
                files->selectFile(toQtPath(folder / c.chosen));
                static_cast<QDialog*>(files)->accept();
            } else if (dialog) {
                told = dialog->objectName();
                dialog->reject();
            }
        });
        answer.start(0);
        (*frame_.context().saveReport)(c.chosen == std::string_view("Trip.png") ? high : report);
        EXPECT_EQ(told, c.told) << c.chosen;
        EXPECT_EQ(folder.names(), c.files) << c.chosen;
    }
    EXPECT_TRUE(test::textOf(folder / "Trip.HTML").starts_with("<!DOCTYPE html>"));
}

TEST_F(PrintTest, APdfHasThePagesThatAreChosen) {
    std::string words;
    while (words.size() < 20'000)
        words += "far ";
    document_.trips().column<TTripLogCommentsColumn>().set(2, words);
    trips().showRecord(2);
    const test::TemporaryFolder folder;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (auto* files = qobject_cast<QFileDialog*>(dialog)) {
            files->selectFile(toQtPath(folder / "two.pdf"));
            static_cast<QDialog*>(files)->accept();
        } else if (auto* last = dialog ? dialog->findChild<QSpinBox*>(QStringLiteral("LastPage")) : nullptr;
                   last && last->isEnabled() && last->value() > 2) {
            dialog->findChild<QSpinBox*>(QStringLiteral("FirstPage"))->setValue(2);
            last->setValue(3);
            part<QPushButton>(*dialog, "PdfButton").click();
        }
    });
    answer.start(0);
    frame_.commands().trigger(CommandId::Print);
    EXPECT_NE(test::textOf(folder / "two.pdf").find("/Count 2"), std::string::npos);
}

} // namespace
} // namespace quobrix
