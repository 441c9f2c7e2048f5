#pragma once

#include "app/printers.h"
#include "model/print_range.h"
#include "paper/page_setup.h"
#include "paper/painter.h"
#include "tables/table_edits.h"
#include "ui/background.h"
#include "views/page.h"

#include <QDialog>

#include <functional>
#include <memory>
#include <optional>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;

namespace quobrix {

class TFixedTableSpreadsheet;

/// What can be printed, as often as somebody looks.
struct Printable {
    /// Of a list those records whose numbers lie in the range (none: all). Nothing if there are none.
    std::function<std::optional<Report>(const std::optional<RecordRange>& range)> make{};
    std::size_t records = 0; ///< that a range can be chosen of; 0: no range is asked for
};

/// What printing does beside the window.
struct PrintThreads {
    std::shared_ptr<Printers> printers;
    Background& search; ///< for them, which may take as long as a printer in the network is silent
    Background& pages;  ///< are laid out
};

/// Asks what is printed on which printer. The printers come up when the system has named them; a file can be chosen
/// meanwhile.
class PrintDialog final : public QDialog {
public:
    enum class Target { Printer, PdfFile };

    /// REPORT is all of PRINTABLE. The latter and THREADS must outlive the dialog.
    PrintDialog(const ViewContext& context, const Printable& printable, Report report, PrintThreads threads,
                QWidget* parent);
    ~PrintDialog() override;

    /// After it was accepted.
    Target target() const { return target_; }
    const PrintOrder& order() const { return order_; }
    /// What is chosen.
    const Report& report() const { return *report_; }

private:
    QWidget* makeRange();
    void lookForPrinters();
    void show(const Printers::Known& known);
    /// Takes the records of the range that is typed.
    void choose();
    /// Says how many pages the report takes, once they are laid out.
    void countPages();
    void show(const PageSource& pages, const PageSetup& setup);
    void finish(Target target);

    const ViewContext context_;
    const Printable& printable_;
    const PrintThreads threads_;
    std::unique_ptr<QObject> counted_;         ///< who waits for the pages: what was asked before counts no more
    std::unique_ptr<PrintRangeTable> records_; ///< none: no range is asked for
    std::unique_ptr<TableEdits> edits_;
    TFixedTableSpreadsheet* range_ = nullptr;
    QComboBox* printer_;
    QSpinBox* copies_;
    QSpinBox* first_;
    QSpinBox* last_;
    QCheckBox* bothSides_;
    QLabel* pages_;
    QPushButton* print_;
    QPushButton* pdf_;
    int pageCount_ = 0;
    std::optional<Report> report_; ///< none: no record is in the range
    PrintOrder order_;
    Target target_ = Target::Printer;
};

} // namespace quobrix
