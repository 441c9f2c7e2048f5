#include "views/list_dialog.h"

#include "base/ui/qt_text.h"
#include "messages/message.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/text.h"
#include "ui/status_line.h"
#include "ui/windows.h"
#include "views/list_buttons.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QScreen>
#include <QStatusTipEvent>
#include <QVBoxLayout>

#include <utility>

namespace quobrix {

ListDialog::ListDialog(const ViewContext& context, const ListDialogSpec& spec, const QString& title, QWidget* parent)
    : QDialog(parent), context_(context), spec_(spec), left_(new QVBoxLayout), status_(new StatusLine) {
    setObjectName(QLatin1String(spec.name));
    setWindowTitle(title);
    list_ = new TTableSpreadsheet(context.spreadsheet(), {.name = std::string(spec.name) + " List",
                                                          .title = windowTitle(),
                                                          .emptyText = toQt(text(messageSpec(spec.emptyText).text)),
                                                          .use = SpreadsheetView::Use::Cells});
    list_->setMinimumHeight(fontMetrics().lineSpacing() * 8); // a row, and what is said below it of a refused entry
    connect(&list_->model(), &QAbstractItemModel::dataChanged, this, [this] {
        cellChanged();
        showStatus({});
    });
    connect(&list_->view(), &SpreadsheetView::selectionAltered, this, [this] { showStatus({}); });

    left_->addWidget(list_, 1);
    auto* columns = new QHBoxLayout;
    columns->addLayout(left_, 1);
    columns->addWidget(listButtons(*list_, context.document.edits()));
    auto* box = new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::Help);
    for (QPushButton* button : printButtons(*this, QLatin1String(spec.name), context.printing))
        box->addButton(button, QDialogButtonBox::ActionRole);
    for (QAbstractButton* button : box->buttons())
        static_cast<QPushButton*>(button)->setAutoDefault(false);
    QPushButton& help = *box->button(QDialogButtonBox::Help);
    const QAction& explain = list_->commands().action(SpreadsheetCommand::Help);
    help.setEnabled(explain.isEnabled());
    help.setToolTip(explain.statusTip());
    connect(&help, &QPushButton::clicked, &explain, &QAction::trigger);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addWidget(status_);
    layout->addWidget(box);

    list_->setFocus();
    if (!quobrix::restoreGeometry(*this, context_.settings, spec.name))
        resize(QSize(fontMetrics().averageCharWidth() * spec.width, fontMetrics().lineSpacing() * 26)
                   .boundedTo(screen()->availableSize() * 9 / 10));
}

ListDialog::~ListDialog() {
    rememberGeometry(*this, context_.settings, spec_.name);
    endList(); // which asks this
}

void ListDialog::endList() { delete std::exchange(list_, nullptr); }

void ListDialog::addBelowList(QWidget* widget) { left_->addWidget(widget); }

void ListDialog::layOutColumns() {
    QHeaderView& header = *list_->view().horizontalHeader();
    header.setStretchLastSection(false);
    // An entry without a key, and the mark that it is missing.
    header.setMinimumSectionSize(fontMetrics().horizontalAdvance(toQt(text(kEmptyCell))) + 2 * fontMetrics().height());
    header.setSectionResizeMode(spec_.widestColumn, QHeaderView::Stretch);
}

void ListDialog::showStatus(const QString& tip) {
    if (!list_) // it is ending
        return;
    status_->say(tip.isEmpty() ? list_->view().currentIndex().data(Qt::StatusTipRole).toString() : tip);
}

bool ListDialog::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip)
        return QDialog::event(event);
    showStatus(static_cast<QStatusTipEvent*>(event)->tip());
    return true;
}

std::optional<Report> ListDialog::printable() { return list_ ? listReport(*this, shownCells(*list_)) : std::nullopt; }

bool ListDialog::finishEdit() {
    if (list_->finishEdit())
        return true;
    bringToFront(*this);
    return false;
}

void ListDialog::showCell(std::string_view columnKey, RowIndex row) {
    if (!finishEdit())
        return;
    list_->showCell(columnKey, row);
    list_->setFocus();
}

void ListDialog::done(int result) {
    if (finishEdit())
        QDialog::done(result);
}

} // namespace quobrix
