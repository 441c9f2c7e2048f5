#pragma once

#include "app/command_table.h"
#include "app/print_dialog.h"
#include "export/file_format.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <span>

namespace quobrix {

class PrintPreviewDialog;
class TQuobrixFrame;

/// Print, Print Preview and Print Setup, for whatever window is in front: the page of the main frame, a dialog of
/// names, the error log, a comparison. A report is saved as a file here, too. Pages are laid out on another thread, and
/// painted on one for files and printers.
class PrintCommands final {
public:
    /// Printers are looked for on the thread of SEARCH. It and FRAME must outlive this.
    PrintCommands(TQuobrixFrame& frame, Background& search, std::shared_ptr<Printers> printers = systemPrinters());
    ~PrintCommands();

private:
    /// Nothing is told: what is in view has nothing to print, which has been told.
    std::optional<Report> reportOf(const Printable& printable);
    Printable inView() const;
    QWidget& windowInView() const;
    void print(const Printable& printable, QWidget& over);
    void preview();
    void setUp(QWidget& over);
    /// Saves REPORT in one of FORMATS; of one in pages those that ORDER wants.
    void save(const Report& report, std::span<const FileFormat> formats, const PrintOrder& order = {});
    /// Does WORK, which a window has asked for, as COMMAND does its own: what goes wrong is told.
    void guarded(CommandId command, const std::function<void()>& work);

    TQuobrixFrame& frame_;
    Background pages_; ///< lays them out
    const PrintThreads threads_;
    QPointer<PrintPreviewDialog> preview_;
};

} // namespace quobrix
