#include "app/printers.h"

#include "base/ui/qt_text.h"
#include "paper/ui/paper_painter.h"

#include <QPageLayout>
#include <QPrinter>
#include <QPrinterInfo>

#include <algorithm>
#include <mutex>

namespace quobrix {
namespace {

constexpr SourceText kPrinting("Printing");

class SystemPrinters final : public Printers {
public:
    Known find() override {
        const std::lock_guard lock(mutex_);
        return {QPrinterInfo::availablePrinterNames(), QPrinterInfo::defaultPrinterName()};
    }

    Result<void> print(const PrintOrder& order, const PageSource& pages, DiskProgress& progress) override {
        const std::lock_guard lock(mutex_);
        const Error failed{ErrorKind::Io, ShownText::asItIs(order.printer.toStdString())};
        const QPrinterInfo info = QPrinterInfo::printerInfo(order.printer);
        if (info.isNull())
            return failed;
        QPrinter printer(info, QPrinter::HighResolution);
        printer.setDocName(toQt(pages.title));
        printer.setCreator(QStringLiteral("Quobrix"));
        const bool landscape = pages.paper.width > pages.paper.height;
        const QSizeF size(pages.paper.width, pages.paper.height);
        printer.setPageLayout(QPageLayout(QPageSize(landscape ? size.transposed() : size, QPageSize::Point),
                                          landscape ? QPageLayout::Landscape : QPageLayout::Portrait, {}));
        printer.setFullPage(true); // pages have their margins
        printer.setCopyCount(order.copies);
        printer.setDuplex(!order.bothSides ? QPrinter::DuplexNone
                          : landscape      ? QPrinter::DuplexShortSide
                                           : QPrinter::DuplexLongSide);
        progress.what = &kPrinting;
        const std::size_t last = std::min(order.last, pages.count), first = std::min(order.first, last - 1);
        progress.total = last - first;
        const bool painted = paintPages(printer, pages, first, last, [&](std::size_t done) {
            progress.done = done;
            if (progress.cancelled)
                printer.abort();
            return !progress.cancelled;
        });
        if (progress.cancelled)
            return Error{ErrorKind::Cancelled, {}};
        return painted ? Result<void>() : failed;
    }

private:
    std::mutex mutex_;
};

} // namespace

std::shared_ptr<Printers> systemPrinters() { return std::make_shared<SystemPrinters>(); }

} // namespace quobrix
