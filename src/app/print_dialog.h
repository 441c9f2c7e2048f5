#pragma once

#include "app/printers.h"
#include "model/print_range.h"
#include "paper/page_setup.h"
#include "tables/table_edits.h"
#include "views/page.h"

#include <QDialog>

#include <functional>
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

/// Asks what is printed on which printer. The printers come up when the system has named them; a file can be chosen
/// meanwhile.
class PrintDialog final : public QDialog {
public:
    enum class Target { Printer, PdfFile };

    PrintDialog(const ViewContext& context, const Printable& printable, std::shared_ptr<Printers> printers,
                QWidget* parent);
    ~PrintDialog() override;

    /// After it was accepted.
    Target target() const { return target_; }
    const PrintOrder& order() const { return order_; }
    /// What is chosen; one page at least.
    const Report& report() const { return report_; }

private:
    struct Link;

    QWidget* makeRange();
    void lookForPrinters();
    void show(const Printers::Known& known);
    /// Lays the chosen records out to say how many pages they take; false if there are none.
    bool layOut();
    void finish(Target target);

    const ViewContext context_;
    const Printable& printable_;
    std::shared_ptr<Printers> printers_;
    std::shared_ptr<Link> link_;
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
    Report report_;
    PrintOrder order_;
    Target target_ = Target::Printer;
};

} // namespace quobrix
