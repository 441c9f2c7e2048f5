/// What a page shows, written to a file for other programs.
#include "app/record_export.h"

#include "base/ui/qt_text.h"
#include "export/xlsx.h"
#include "support/frame_fixture.h"
#include "support/scripted_prompter.h"
#include "support/temporary_folder.h"
#include "views/log_view.h"

#include <QAction>
#include <QFileDialog>
#include <QLineEdit>
#include <QProgressDialog>
#include <QStatusBar>
#include <QTabWidget>
#include <QTest>

#include <fstream>
#include <sstream>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

std::string content(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return (std::ostringstream() << stream.rdbuf()).str();
}

class Chooser final : public FileChooser {
public:
    std::optional<fs::path> chooseToOpen() override { return {}; }
    std::optional<fs::path> chooseLogs() override { return {}; }
    std::optional<SavePlace> chooseToSave(const fs::path&) override { return {}; }
    std::optional<SavePlace> chooseCopy(SourceText, const fs::path&, const std::string& name,
                                        std::span<const FileFormat> formats) override {
        suggested = name;
        EXPECT_EQ(formats.back(), FileFormat::Csv);
        return place;
    }
    std::optional<SavePlace> place;
    std::string suggested;
};

class RecordExportTest : public test::ViewTest {
protected:
    void SetUp() override {
        for (int day = 0; day < 3; ++day)
            test::addTrip(document_, test::kStart + day * 86'400);
        document_.trips().column<TTripLogCommentsColumn>().setAll({"a", "=b", "c"});
    }
    /// The numbers and comments of TRIPS, in that order.
    ExportContent trips(std::vector<RowIndex> rows) {
        const TTripLogTable& log = document_.trips();
        return {.records = {{{{&log.column<TTripLogRecordColumn>()}, {&log.column<TTripLogCommentsColumn>()}},
                             std::move(rows)}},
                .title = ShownText::asItIs("Trip: Log")};
    }
    struct How {
        IfThere ifThere = IfThere::Refuse;
        DiskRunner disk = runs;
        std::optional<MessageId> tells{}; ///< in told_
        std::optional<qint64> patience{};
    };
    bool write(const ExportContent& content, const fs::path& to, const How& how) {
        chooser_.place = {to, how.ifThere};
        std::vector<testing::ScriptedPrompter::Line> lines;
        if (how.tells)
            lines.push_back({*how.tells});
        testing::ScriptedPrompter prompter(lines, {});
        RecordExport records(document_, context_.text(), prompter, chooser_, how.disk, window_,
                             [this](const QString& text) { said_ = text.toStdString(); });
        records.patience = how.patience.value_or(records.patience);
        said_.clear();
        const bool written = records.run(content);
        told_ = prompter.shown.empty() ? "" : prompter.shown.front();
        return written;
    }
    static Result<void> runs(const DiskWork& work) {
        DiskProgress progress;
        return work(progress);
    }
    static Result<void> fails(const DiskWork&) { return Error{ErrorKind::DiskFull, {}}; }

    const test::TemporaryFolder folder_;
    Chooser chooser_;
    QWidget window_;
    std::string said_, told_;
};

TEST_F(RecordExportTest, TheFileIsThereWholeOrNotAtAll) {
    EXPECT_TRUE(write(trips({2, 1}), folder_ / "out.csv", {}));
    EXPECT_EQ(content(folder_ / "out.csv"), "Trip,Comments\r\n3,c\r\n2,'=b\r\n");
    EXPECT_EQ(said_, "2 rows have been written to out.csv");
    EXPECT_EQ(chooser_.suggested, "Trip- Log") << "what files may be called";
    EXPECT_FALSE(write(trips({0}), folder_ / "out.csv", {.tells = MessageId::FileExists}));
    EXPECT_EQ(told_, "out.csv cannot be saved because there is a file of that name already.");
    EXPECT_TRUE(write(trips({0}), folder_ / "out.csv", {IfThere::Replace}));
    EXPECT_EQ(content(folder_ / "out.csv"), "Trip,Comments\r\n1,a\r\n");

    ASSERT_TRUE(document_.saveAs(folder_ / "mine.car"));
    fs::create_hard_link(folder_ / "mine.car", folder_ / "other name.csv");
    const struct {
        fs::path to;
        DiskRunner disk;
        MessageId why;
    } refused[] = {
        {folder_ / "theirs.car", runs, MessageId::ExportIsDocument},
        {folder_ / "other name.csv", runs, MessageId::ExportIsDocument},
        {folder_ / "missing" / "out.csv", runs, MessageId::FolderNotFound},
        {folder_ / "out.csv", fails, MessageId::FileDiskFull},
        {folder_ / "new.csv", fails, MessageId::FileDiskFull},
    };
    const std::vector<std::string> before = folder_.names();
    for (const auto& each : refused) {
        EXPECT_FALSE(write(trips({2}), each.to, {IfThere::Replace, each.disk, each.why})) << each.to;
        EXPECT_EQ(said_, "");
    }
    EXPECT_EQ(folder_.names(), before);
    EXPECT_EQ(content(folder_ / "out.csv"), "Trip,Comments\r\n1,a\r\n");
}

TEST_F(RecordExportTest, SpreadsheetsSayWhatTheyCannotHold) {
    if (!canWriteXlsx())
        GTEST_SKIP() << "no library for them";
    document_.trips().column<TTripLogCommentsColumn>().set(1, std::string(40'000, 'x'));
    EXPECT_TRUE(write(trips({0, 1}), folder_ / "out.XLSX", {.tells = MessageId::TextsCut}));
    EXPECT_EQ(content(folder_ / "out.XLSX").substr(0, 2), "PK");
    EXPECT_TRUE(told_.ends_with("(1 of them). A CSV file holds them whole."));
    EXPECT_FALSE(write(trips(std::vector<RowIndex>(kMostXlsxRecords + 1)), folder_ / "more.xlsx",
                       {.tells = MessageId::CannotExport}));
    EXPECT_NE(told_.find("1,048,575 rows at most"), std::string::npos);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"out.XLSX"});
}

TEST_F(RecordExportTest, WhatTakesLongIsShownAndCanBeCancelled) {
    for (const char* name : {"out.csv", "out.xlsx"}) {
        if (name == std::string_view("out.xlsx") && !canWriteXlsx())
            continue;
        bool seen = false;
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, [&] {
            if (auto* dialog = window_.findChild<QProgressDialog*>("ExportProgress")) {
                seen = true;
                dialog->cancel();
            }
        });
        look.start(0);
        EXPECT_FALSE(write(trips(std::vector<RowIndex>(1'000'000)), folder_ / name, {.patience = 0}));
        EXPECT_TRUE(seen);
        EXPECT_TRUE(folder_.names().empty()) << name;
        EXPECT_EQ(said_, "");
    }
}

class ExportCommand : public test::FrameTest {
protected:
    void SetUp() override {
        for (int day = 0; day < 3; ++day)
            test::addTrip(document_, test::kStart + day * 86'400);
        document_.trips().column<TTripLogCommentsColumn>().setAll({"coast", "hills", "coast"});
        frame_.documentChanged();
        frame_.show();
        frame_.pages().show(kTripLogPage);
    }
    LogView& log() { return static_cast<LogView&>(*frame_.pages().page(kTripLogPage)); }
    QAction& command() { return *frame_.commands().action(CommandId::Export); }
    /// What ACTION writes; NAME is proposed for it.
    std::string written(QAction& action, const char* name) {
        const fs::path file = folder_ / (std::to_string(++files_) + ".csv");
        QTimer::singleShot(0, qApp, [&] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            EXPECT_TRUE(dialog->selectedFiles().value(0).contains(QLatin1String(name)))
                << dialog->selectedFiles().value(0).toStdString();
            dialog->selectFile(toQtPath(file));
            static_cast<QDialog*>(dialog)->accept();
        });
        action.trigger();
        return content(file);
    }

    const test::TemporaryFolder folder_;
    int files_ = 0;
};

TEST_F(ExportCommand, WritesWhatIsInView) {
    LogList& list = log().summary();
    list.view().sortByColumn(0, Qt::DescendingOrder);
    for (int column = 1; column < list.model().columnCount() - 1; ++column)
        list.view().setColumnHidden(column, list.model().spec(column).key != "TTripLogCommentsColumn");
    list.view().setColumnHidden(list.model().columnCount() - 1, true);
    const auto words = log().findChild<QLineEdit*>("filterWords");
    words->setText("coast");
    QTest::keyClick(words, Qt::Key_Return);
    const std::string shown = "Trip,Comments\r\n3,coast\r\n1,coast\r\n";
    EXPECT_EQ(written(command(), "Trip Log"), shown);
    EXPECT_EQ(frame_.statusBar()->currentMessage(), "2 rows have been written to 1.csv");
    EXPECT_EQ(written(list.commands().action(SpreadsheetCommand::Export), "Trip Log"), shown) << "from its menu";
    words->setText("none has this");
    QTest::keyClick(words, Qt::Key_Return);
    EXPECT_FALSE(command().isEnabled());

    log().showRecord(2);
    const std::string fromReport = written(command(), "Trip 3 Samples");
    EXPECT_EQ(fromReport.substr(0, 7), "Sample,") << fromReport;
    log().showView(LogViewKind::Table);
    EXPECT_EQ(written(command(), "Trip 3 Samples"), fromReport);
    log().findChild<QTabWidget*>("TTripLogTableView")->setCurrentIndex(1);
    EXPECT_EQ(written(command(), "Trip 3 Speed Bands").substr(0, 4), "From");
    frame_.pages().show(kHomePage);
    EXPECT_FALSE(command().isEnabled());
}

} // namespace
} // namespace quobrix
