#include "app/print_commands.h"

#include "app/main_frame.h"
#include "app/page_setup_dialog.h"
#include "app/print_preview.h"
#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "drawing/palette.h"
#include "drawing/svg.h"
#include "messages/file_messages.h"
#include "model/quobrix_document.h"
#include "paper/printout.h"
#include "paper/ui/paper_painter.h"
#include "platform/file_system.h"
#include "report/pages.h"
#include "report/render.h"
#include "report/ui/printable_window.h"
#include "texts/text.h"
#include "ui/windows.h"

#include <QApplication>

#include <algorithm>
#include <array>
#include <span>

namespace quobrix {
namespace {

constexpr double kPictureWidth = 760, kPictureText = 13, kPictureScale = 2; // pixels
constexpr SourceText kPainting("Laying out pages");

constexpr FileFormat kReportFormats[] = {FileFormat::Pdf, FileFormat::Html, FileFormat::Svg, FileFormat::Png,
                                         FileFormat::Text};
constexpr FileFormat kPageFormats[] = {FileFormat::Pdf, FileFormat::Html};
constexpr FileFormat kPdf[] = {FileFormat::Pdf};

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

/// Those of PAGES that ORDER wants.
PageSource wanted(const PageSource& pages, const PrintOrder& order) {
    const std::size_t last = std::min(order.last, pages.count), first = std::min(order.first, last);
    return {pages.title, pages.paper, last - first,
            [page = pages.page, first](std::size_t i) { return page(first + i); }};
}

/// REPORT in FORMAT, of one in pages those that ORDER wants. The errors are Cancelled; Unsupported, which says what to
/// do instead; Io.
Result<Bytes> contentOf(const Report& report, FileFormat format, const PageSetup& setup, const PrintOrder& order,
                        DiskProgress& progress) {
    const PaperPainter painter;
    switch (format) {
    case FileFormat::Html:
        return bytesOf(renderHtml(report));
    case FileFormat::Text:
        return bytesOf(renderText(report));
    case FileFormat::Svg:
        return bytesOf(writeSvg(drawReport(report, kPictureWidth, TableTextMeasure(kPictureText)), kPaperPalette));
    case FileFormat::Png: {
        Bytes picture = painter.png(drawReport(report, kPictureWidth, *painter.measure(kPictureText)), kPictureScale);
        if (picture.empty())
            return Error{ErrorKind::Unsupported, text(TextId::PictureTooLarge)};
        return picture;
    }
    default:
        break;
    }
    progress.what = &kPainting;
    const PageSource pages = wanted(layOut(report, setup, painter), order);
    progress.total = pages.count;
    Bytes file = painter.pdf(pages, [&](std::size_t done) {
        progress.done = done;
        return !progress.cancelled;
    });
    progress.total = 0; // what is written is not given up half way
    if (progress.cancelled)
        return Error{ErrorKind::Cancelled, {}};
    if (file.empty())
        return Error{ErrorKind::Io, text(TextId::PagesNotPainted)};
    return file;
}

Result<void> write(const CopyPlace& place, const Bytes& bytes) {
    Result<ReplacementFile> file = ReplacementFile::create(place.path);
    if (!file)
        return file.error();
    QUOBRIX_TRY(file->file().writeAt(0, bytes));
    return file->commit(place.ifThere);
}

} // namespace

PrintCommands::PrintCommands(TQuobrixFrame& frame, Background& search, std::shared_ptr<Printers> printers)
    : frame_(frame), threads_{std::move(printers), search, pages_} {
    frame_.commands().handle(CommandId::Print, [this] { print(inView(), windowInView()); });
    frame_.commands().handle(CommandId::PrintPreview, [this] { preview(); });
    frame_.commands().handle(CommandId::PrintSetup, [this] { setUp(windowInView()); });
    frame_.whenReportWanted(
        [this](const Report& report) { guarded(CommandId::SaveAs, [&] { save(report, kReportFormats); }); });
}

PrintCommands::~PrintCommands() {
    frame_.whenReportWanted({});
    delete preview_;
}

Printable PrintCommands::inView() const {
    QWidget* window = QApplication::activeWindow();
    if (auto* own = dynamic_cast<PrintableWindow*>(window)) // which may end before it is printed
        return {[there = QPointer(window), own](const auto&) { return there ? own->printable() : std::nullopt; }};
    const QPointer page = frame_.pages().page(frame_.pages().current());
    if (!page)
        return {[](const auto&) { return std::optional<Report>(); }};
    return {[page](const std::optional<RecordRange>& range) {
                return page ? page->printable(range) : std::optional<Report>();
            },
            page->printableRecords()};
}

/// What dialogs stand over: it is in front again once they are closed.
QWidget& PrintCommands::windowInView() const {
    QWidget* const window = QApplication::activeWindow();
    return window && !QApplication::activeModalWidget() ? *window : usableParent(frame_);
}

std::optional<Report> PrintCommands::reportOf(const Printable& printable) {
    std::optional<Report> report = printable.make({});
    if (!report)
        frame_.prompter().tell(makeMessage(MessageId::NothingToPrint));
    return report;
}

void PrintCommands::print(const Printable& printable, QWidget& over) {
    std::optional<Report> report = reportOf(printable);
    if (!report)
        return;
    PrintDialog dialog(frame_.context(), printable, *std::move(report), threads_, &over);
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (dialog.target() == PrintDialog::Target::PdfFile)
        return save(dialog.report(), kPdf, dialog.order());
    const PageSetup setup = PageSetup::load(frame_.context().settings);
    const Result<void> printed = frame_.runDisk([&](DiskProgress& progress) {
        progress.what = &kPainting;
        return threads_.printers->print(dialog.order(), layOut(dialog.report(), setup, PaperPainter()), progress);
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
    preview_ = new PrintPreviewDialog(
        frame_.context(), *report,
        {.print = [this, printable](QWidget& over) { guarded(CommandId::Print, [&] { print(printable, over); }); },
         .savePdf = [this,
                     shown = *report](QWidget&) { guarded(CommandId::SaveAs, [&] { save(shown, kPageFormats); }); },
         .setUp = [this](QWidget& over) { guarded(CommandId::PrintSetup, [&] { setUp(over); }); }},
        pages_, &windowInView());
    preview_->setAttribute(Qt::WA_DeleteOnClose);
    preview_->open();
}

void PrintCommands::setUp(QWidget& over) {
    PageSetupDialog dialog(PageSetup::load(frame_.context().settings), &over);
    if (dialog.exec() == QDialog::Accepted)
        dialog.setup().save(frame_.context().settings);
}

void PrintCommands::guarded(CommandId command, const std::function<void()>& work) {
    frame_.commands().guard(*frame_.commands().action(command), work);
}

void PrintCommands::save(const Report& report, std::span<const FileFormat> formats, const PrintOrder& order) {
    const auto place = chooseCopyOf(frame_.context().document, frame_.chooser(), frame_.prompter(),
                                    SourceText("Save As"), report.title, formats);
    if (!place)
        return;
    const PageSetup setup = PageSetup::load(frame_.context().settings);
    const Result<void> saved = frame_.runDisk([&](DiskProgress& progress) -> Result<void> {
        const Result<Bytes> bytes = contentOf(report, place->format, setup, order, progress);
        return bytes ? write(*place, *bytes) : bytes.error();
    });
    const std::string name = utf8(place->path);
    if (saved || saved.error().kind == ErrorKind::NotDurable)
        frame_.say(toQt(text(TextId::EventSaved, name)), 15'000);
    if (!saved && saved.error().kind == ErrorKind::Unsupported)
        frame_.prompter().tell(makeMessage(MessageId::CannotExport, saved.error().detail));
    else if (!saved && saved.error().kind != ErrorKind::Cancelled)
        frame_.prompter().tell(fileMessage(saved.error(), FileAction::Save, name));
}

} // namespace quobrix
