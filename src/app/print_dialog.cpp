#include "app/print_dialog.h"

#include "app/page_setup_dialog.h"
#include "base/ui/qt_text.h"
#include "messages/prompter.h"
#include "paper/printout.h"
#include "paper/ui/paper_painter.h"
#include "settings/settings.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/text.h"
#include "ui/fields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <thread>
#include <utility>

namespace quobrix {
namespace {

constexpr std::string_view kPrintSection = "Print";
constexpr int kMostCopies = 99;

} // namespace

PrintDialog::PrintDialog(const ViewContext& context, const Printable& printable, Report report, PrintThreads threads,
                         QWidget* parent)
    : QDialog(parent), context_(context), printable_(printable), threads_(std::move(threads)), printer_(new QComboBox),
      copies_(new QSpinBox), first_(new QSpinBox), last_(new QSpinBox), bothSides_(new QCheckBox(tr("On &both sides"))),
      pages_(new QLabel), report_(std::move(report)) {
    setObjectName(QStringLiteral("Print"));
    setWindowTitle(tr("Print"));
    printer_->setObjectName(QStringLiteral("Printer"));
    printer_->setMinimumContentsLength(28);
    copies_->setObjectName(QStringLiteral("Copies"));
    copies_->setRange(1, kMostCopies);
    bothSides_->setObjectName(QStringLiteral("BothSides"));
    bothSides_->setChecked(context_.settings.getBoolean(kPrintSection, "BothSides", false));
    pages_->setObjectName(QStringLiteral("Pages"));
    auto* setup = new QPushButton(tr("Page Set&up..."));
    setup->setObjectName(QStringLiteral("PageSetupButton"));
    setup->setAutoDefault(false);
    connect(setup, &QPushButton::clicked, this, [this] {
        PageSetupDialog dialog(PageSetup::load(context_.settings), this);
        if (dialog.exec() != QDialog::Accepted)
            return;
        dialog.setup().save(context_.settings);
        countPages();
    });

    auto* form = new QFormLayout;
    form->addRow(fieldLabel(tr("P&rinter:"), *printer_), printer_);
    form->addRow(fieldLabel(tr("&Copies:"), *copies_), copies_);
    form->addRow(QString(), bothSides_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    if (printable_.records > 0) {
        layout->addWidget(makeRange());
    } else {
        auto* from = new QHBoxLayout;
        first_->setObjectName(QStringLiteral("FirstPage"));
        last_->setObjectName(QStringLiteral("LastPage"));
        first_->setEnabled(false);
        last_->setEnabled(false);
        last_->setAccessibleName(tr("Last page"));
        from->addWidget(first_);
        from->addWidget(new QLabel(tr("through")));
        from->addWidget(last_);
        from->addStretch();
        form->addRow(fieldLabel(tr("Pa&ges:"), *first_), from);
        first_->setAccessibleName(tr("First page"));
    }
    auto* foot = new QHBoxLayout;
    foot->addWidget(pages_, 1);
    foot->addWidget(setup);
    layout->addLayout(foot);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    print_ = buttons->addButton(tr("&Print"), QDialogButtonBox::AcceptRole);
    print_->setObjectName(QStringLiteral("PrintButton"));
    pdf_ = buttons->addButton(tr("Save as P&DF..."), QDialogButtonBox::ActionRole);
    pdf_->setObjectName(QStringLiteral("PdfButton"));
    pdf_->setAutoDefault(true);
    connect(print_, &QPushButton::clicked, this, [this] { finish(Target::Printer); });
    connect(pdf_, &QPushButton::clicked, this, [this] { finish(Target::PdfFile); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    countPages();
    lookForPrinters();
}

PrintDialog::~PrintDialog() {
    delete range_; // which shows the table
}

QWidget* PrintDialog::makeRange() {
    records_ = std::make_unique<PrintRangeTable>(printable_.records);
    edits_ = std::make_unique<TableEdits>(*records_);
    range_ = new TFixedTableSpreadsheet({context_.text(), context_.settings, edits_.get(), nullptr, context_.windows},
                                        {.name = "TLogPrintRange",
                                         .title = tr("Records to print"),
                                         .emptyText = {},
                                         .use = SpreadsheetView::Use::Cells});
    range_->showTable(*records_);
    SpreadsheetView& view = range_->view();
    view.horizontalHeader()->setStretchLastSection(true);
    constexpr int kLinesOfNote = 3; // below the row: why an entry is refused
    range_->setFixedHeight(view.horizontalHeader()->sizeHint().height() + view.rowHeight(0) + 2 * view.frameWidth() +
                           kLinesOfNote * fontMetrics().lineSpacing());
    connect(&range_->model(), &QAbstractItemModel::dataChanged, this, [this] { choose(); });
    range_->setCurrentCell(0, 0);
    return range_;
}

void PrintDialog::lookForPrinters() {
    printer_->addItem(tr("Looking for printers..."));
    printer_->setEnabled(false);
    print_->setEnabled(false);
    threads_.search.run(
        *this, [printers = threads_.printers] { return printers->find(); },
        [this](const Printers::Known& known) { show(known); });
}

void PrintDialog::show(const Printers::Known& known) {
    printer_->clear();
    printer_->addItems(known.names);
    printer_->setEnabled(!known.names.isEmpty());
    print_->setEnabled(!known.names.isEmpty());
    if (known.names.isEmpty())
        printer_->addItem(tr("There is no printer; save as PDF"));
    const QString last = toQt(context_.settings.getText(kPrintSection, "Printer"));
    printer_->setCurrentText(known.names.contains(last) ? last : known.usual);
    (known.names.isEmpty() ? pdf_ : print_)->setDefault(true);
}

void PrintDialog::choose() {
    const auto [first, last] = records_->range();
    report_ = printable_.make(RecordRange{first, last});
    countPages();
}

void PrintDialog::countPages() {
    if (!report_) {
        counted_.reset();
        return pages_->setText(tr("No record in view has such a number."));
    }
    pages_->setText(tr("Laying out pages..."));
    counted_ = std::make_unique<QObject>();
    const PageSetup setup = PageSetup::load(context_.settings);
    threads_.pages.run(
        *counted_, [report = *report_, setup] { return layOut(report, setup, PaperPainter()); },
        [this, setup](const PageSource& pages) { show(pages, setup); });
}

void PrintDialog::show(const PageSource& pages, const PageSetup& setup) {
    pages_->setText(tr("%1, %2 %3")
                        .arg(toQt(counted(TextId::PagesCounted, pages.count, pages.count)),
                             toQt(text(setup.paper->name)),
                             pages.paper.width > pages.paper.height ? tr("landscape") : tr("portrait")));
    // Who has not chosen pages wants all, of a list in any case.
    const int count = static_cast<int>(pages.count);
    const bool all = pageCount_ == 0 || last_->value() == pageCount_;
    pageCount_ = count;
    for (QSpinBox* page : {first_, last_}) {
        page->setRange(1, count);
        page->setEnabled(true);
    }
    if (all)
        last_->setValue(count);
}

void PrintDialog::finish(Target target) {
    if ((range_ && !range_->finishEdit()) || !report_)
        return;
    order_ = {printer_->currentText(), copies_->value(), bothSides_->isChecked()};
    if (!records_ && pageCount_ > 0) {
        const auto [first, last] = std::minmax({first_->value(), last_->value()});
        order_.first = static_cast<std::size_t>(first - 1);
        order_.last = static_cast<std::size_t>(last);
    }
    target_ = target;
    if (target == Target::Printer) {
        context_.settings.setText(kPrintSection, "Printer", order_.printer.toStdString());
        context_.settings.setBoolean(kPrintSection, "BothSides", order_.bothSides);
    }
    accept();
}

} // namespace quobrix
