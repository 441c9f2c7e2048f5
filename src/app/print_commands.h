#pragma once

#include "app/print_dialog.h"

#include <QPointer>

#include <memory>
#include <string>
#include <vector>

namespace quobrix {

class PrintPreviewDialog;
class TQuobrixFrame;

/// Print, Print Preview and Print Setup, for whatever window is in front: the page of the main frame, a dialog of
/// names, the error log, a comparison. A report is saved as a file here, too. Pages are painted on another thread.
class PrintCommands final {
public:
    /// FRAME must outlive this.
    explicit PrintCommands(TQuobrixFrame& frame, std::shared_ptr<Printers> printers = systemPrinters());
    ~PrintCommands();

private:
    /// Nothing is told: what is in view has nothing to print, which has been told.
    std::optional<Report> reportOf(const Printable& printable);
    Printable inView() const;
    void print(const Printable& printable, QWidget& over);
    void preview();
    void setUp(QWidget& over);
    /// Saves REPORT in one of the formats that files with ENDINGS have.
    void save(const Report& report, const std::vector<std::string>& endings);

    TQuobrixFrame& frame_;
    std::shared_ptr<Printers> printers_;
    QPointer<PrintPreviewDialog> preview_;
};

} // namespace quobrix
