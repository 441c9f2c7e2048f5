#include "app/print_commands.h"

#include "app/main_frame.h"
#include "app/page_setup_dialog.h"
#include "app/print_preview.h"
#include "base/fold_case.h"
#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "drawing/palette.h"
#include "drawing/svg.h"
#include "export/export_file.h"
#include "messages/file_messages.h"
#include "model/quobrix_document.h"
#include "paper/printout.h"
#include "paper/ui/paper_painter.h"
#include "platform/file_system.h"
#include "report/pages.h"
#include "report/render.h"
#include "tables/ui/error_log.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/text.h"
#include "ui/windows.h"
#include "views/comparison_window.h"
#include "views/names_dialog.h"

#include <QApplication>
#include <QTreeView>

#include <algorithm>
#include <array>
#include <span>

namespace quobrix {
namespace {

constexpr double kPictureWidth = 760, kPictureText = 13, kPictureScale = 2; // pixels
constexpr SourceText kPainting("Laying out pages");

/// The lines of LIST under its headings.
Grid linesOf(const QAbstractItemModel& list) {
    Grid grid;
    for (int column = 0; column < list.columnCount(); ++column)
        grid.columns.push_back({list.headerData(column, Qt::Horizontal).toString().toStdString(), false});
    for (int row = 0; row < list.rowCount(); ++row) {
        std::vector<std::string>& cells = grid.rows.emplace_back();
        for (int column = 0; column < list.columnCount(); ++column)
            cells.push_back(list.index(row, column).data().toString().toStdString());
    }
    return grid;
}

std::optional<Report> tableReport(const QWidget& window, Grid grid) {
    if (grid.rows.empty())
        return {};
    Report report{window.windowTitle().toStdString(), {}};
    report.blocks.emplace_back(std::move(grid));
    return report;
}

/// A name for a file that REPORT is saved as.
std::filesystem::path fileNameOf(const Report& report, const std::string& ending) {
    std::string name = report.title;
    std::ranges::replace_if(
        name,
        [](unsigned char c) {
            return c < ' ' || std::string_view("\\/:*?\"<>|").find(static_cast<char>(c)) != std::string_view::npos;
        },
        '-');
    return pathFromUtf8((name.empty() ? std::string("Quobrix") : name) + "." + ending);
}

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

/// REPORT in the format of files with ENDING. Empty if it was cancelled, or would be too large a picture.
Bytes contentOf(const Report& report, const std::string& ending, const PageSetup& setup, DiskProgress& progress) {
    const PaperPainter painter;
    if (ending == "html")
        return bytesOf(renderHtml(report));
    if (ending == "txt")
        return bytesOf(renderText(report));
    if (ending == "svg")
        return bytesOf(writeSvg(drawReport(report, kPictureWidth, TableTextMeasure(kPictureText)), kPaperPalette));
    if (ending == "png")
        return painter.png(drawReport(report, kPictureWidth, *painter.measure(kPictureText)), kPictureScale);
    progress.what = &kPainting;
    const PageSource pages = layOut(report, setup, painter);
    progress.total = pages.count;
    return painter.pdf(pages, [&](std::size_t done) {
        progress.done = done;
        return !progress.cancelled;
    });
}

Result<void> write(const FileChooser::SavePlace& place, const Bytes& bytes) {
    Result<ReplacementFile> file = ReplacementFile::create(place.path);
    if (!file)
        return file.error();
    QUOBRIX_TRY(file->file().writeAt(0, bytes));
    return file->commit(place.ifThere);
}

} // namespace

PrintCommands::PrintCommands(TQuobrixFrame& frame, std::shared_ptr<Printers> printers)
    : frame_(frame), printers_(std::move(printers)) {
    frame_.commands().handle(CommandId::Print, [this] { print(inView(), usableParent(frame_)); });
    frame_.commands().handle(CommandId::PrintPreview, [this] { preview(); });
    frame_.commands().handle(CommandId::PrintSetup, [this] { setUp(usableParent(frame_)); });
    frame_.whenReportWanted([this](const Report& report) { save(report, {"pdf", "html", "svg", "png", "txt"}); });
}

PrintCommands::~PrintCommands() {
    frame_.whenReportWanted({});
    delete preview_;
}

Printable PrintCommands::inView() const {
    QWidget* window = QApplication::activeWindow();
    if (const QPointer names = dynamic_cast<NamesDialog*>(window))
        return {[names](const auto&) {
            auto* list = names ? names->findChild<TTableSpreadsheet*>() : nullptr;
            return list ? tableReport(*names, shownCells(*list)) : std::nullopt;
        }};
    if (const QPointer compared = dynamic_cast<ComparisonWindow*>(window))
        return {[compared](const auto&) { return compared ? std::optional(compared->printable()) : std::nullopt; }};
    if (const QPointer errors = qobject_cast<TErrorLog*>(window))
        return {[errors](const auto&) {
            const auto* list = errors ? errors->findChild<QTreeView*>() : nullptr;
            return list ? tableReport(*errors, linesOf(*list->model())) : std::nullopt;
        }};
    const QPointer page = frame_.pages().page(frame_.pages().current());
    if (!page)
        return {[](const auto&) { return std::optional<Report>(); }};
    return {[page](const std::optional<RecordRange>& range) {
                return page ? page->printable(range) : std::optional<Report>();
            },
            page->printableRecords()};
}

std::optional<Report> PrintCommands::reportOf(const Printable& printable) {
    std::optional<Report> report = printable.make({});
    if (!report)
        frame_.prompter().tell(makeMessage(MessageId::NothingToPrint));
    return report;
}

void PrintCommands::print(const Printable& printable, QWidget& over) {
    if (!reportOf(printable))
        return;
    PrintDialog dialog(frame_.context(), printable, printers_, &over);
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (dialog.target() == PrintDialog::Target::PdfFile)
        return save(dialog.report(), {"pdf"});
    const PageSetup setup = PageSetup::load(frame_.context().settings);
    const Result<void> printed = frame_.runDisk([&](DiskProgress& progress) {
        progress.what = &kPainting;
        return printers_->print(dialog.order(), layOut(dialog.report(), setup, PaperPainter()), progress);
    });
    if (!printed && printed.error().kind != ErrorKind::Cancelled)
        frame_.prompter().tell(
            makeMessage(MessageId::NotPrinted, dialog.report().title, dialog.order().printer.toStdString()));
}

void PrintCommands::preview() {
    const Printable printable = inView();
    std::optional<Report> report = reportOf(printable);
    if (!report)
        return;
    delete preview_;
    preview_ = new PrintPreviewDialog(frame_.context(), *report,
                                      {.print = [this, printable](QWidget& over) { print(printable, over); },
                                       .savePdf =
                                           [this, shown = *report](QWidget&) {
                                               save(shown, {"pdf", "html"});
                                           },
                                       .setUp = [this](QWidget& over) { setUp(over); }},
                                      &usableParent(frame_));
    preview_->setAttribute(Qt::WA_DeleteOnClose);
    preview_->open();
}

void PrintCommands::setUp(QWidget& over) {
    PageSetupDialog dialog(PageSetup::load(frame_.context().settings), &over);
    if (dialog.exec() == QDialog::Accepted)
        dialog.setup().save(frame_.context().settings);
}

void PrintCommands::save(const Report& report, const std::vector<std::string>& endings) {
    const TQuobrixDocument& document = frame_.context().document;
    auto place = frame_.chooser().chooseCopy(SourceText("Save As"),
                                             folderForCopies(document) / fileNameOf(report, endings.front()), endings);
    if (!place)
        return;
    const std::array opened{document.path()};
    if (isDocument(place->path, std::span(opened).first(document.hasFile() ? 1 : 0)))
        return frame_.prompter().tell(makeMessage(MessageId::ExportIsDocument, utf8(place->path.filename())));
    std::string ending = foldCase(utf8(place->path.extension()));
    ending.erase(0, 1);
    if (std::ranges::find(endings, ending) == endings.end()) {
        ending = endings.front();
        place->path += "." + ending;      // what is called otherwise would not open as what it is
        place->ifThere = IfThere::Refuse; // nobody has been asked about a file of this name
    }
    const PageSetup setup = PageSetup::load(frame_.context().settings);
    const Result<void> saved = frame_.runDisk([&](DiskProgress& progress) -> Result<void> {
        const Bytes bytes = contentOf(report, ending, setup, progress);
        progress.total = 0; // what is written is not given up half way
        if (progress.cancelled)
            return Error{ErrorKind::Cancelled, {}};
        if (bytes.empty())
            return Error{ErrorKind::Unsupported, text(TextId::PictureTooLarge)};
        return write(*place, bytes);
    });
    const std::string name = utf8(place->path);
    if (saved || saved.error().kind == ErrorKind::NotDurable)
        frame_.say(toQt(text(TextId::EventSaved, name)), 15'000);
    if (!saved && saved.error().kind != ErrorKind::Cancelled)
        frame_.prompter().tell(fileMessage(saved.error(), FileAction::Save, name));
}

} // namespace quobrix
