#include "tables/ui/column_chooser.h"

#include "tables/ui/spreadsheet_model.h"
#include "ui/fields.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>

namespace quobrix {

ColumnChooser::ColumnChooser(QTableView& view, const SpreadsheetModel& model, QWidget* parent)
    : QDialog(parent), view_(view), model_(model), list_(new QListWidget), up_(new QPushButton(tr("Move &Up"))),
      down_(new QPushButton(tr("Move &Down"))) {
    setObjectName(QStringLiteral("ColumnChooser"));
    setWindowTitle(tr("Columns"));
    QLabel* label = fieldLabel(tr("&Columns from left to right:"), *list_);
    list_->setObjectName(QStringLiteral("columnList"));
    up_->setObjectName(QStringLiteral("columnUp"));
    down_->setObjectName(QStringLiteral("columnDown"));
    auto* original = new QPushButton(tr("&Original Order"));
    original->setObjectName(QStringLiteral("columnOriginal"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    ok_ = buttons->button(QDialogButtonBox::Ok);

    auto* layout = new QGridLayout(this);
    layout->addWidget(label, 0, 0, 1, 2);
    layout->addWidget(list_, 1, 0, 4, 1);
    layout->addWidget(up_, 1, 1);
    layout->addWidget(down_, 2, 1);
    layout->addWidget(original, 3, 1);
    layout->setRowStretch(4, 1);
    layout->addWidget(buttons, 5, 0, 1, 2);
    resize(sizeHint().expandedTo({420, 420}));

    const QHeaderView& header = *view_.horizontalHeader();
    for (int place = 0; place < header.count(); ++place)
        add(header.logicalIndex(place), !header.isSectionHidden(header.logicalIndex(place)));
    list_->setCurrentRow(header.visualIndex(std::max(0, view_.currentIndex().column())));

    connect(list_, &QListWidget::currentRowChanged, this, &ColumnChooser::enableButtons);
    connect(list_, &QListWidget::itemChanged, this, &ColumnChooser::enableButtons);
    connect(up_, &QPushButton::clicked, this, [this] { move(-1); });
    connect(down_, &QPushButton::clicked, this, [this] { move(1); });
    connect(original, &QPushButton::clicked, this, &ColumnChooser::restoreOriginal);
    connect(buttons, &QDialogButtonBox::accepted, this, &ColumnChooser::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ColumnChooser::reject);
    list_->setFocus();
    enableButtons();
}

void ColumnChooser::add(int column, bool shown) {
    auto* item = new QListWidgetItem(model_.plainHeading(column), list_);
    item->setData(Qt::UserRole, column);
    item->setToolTip(model_.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString());
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(shown ? Qt::Checked : Qt::Unchecked);
}

void ColumnChooser::move(int step) {
    const int row = list_->currentRow();
    QListWidgetItem* item = list_->takeItem(row);
    list_->insertItem(row + step, item);
    list_->setCurrentItem(item);
}

void ColumnChooser::restoreOriginal() {
    list_->clear();
    for (int column = 0; column < model_.columnCount(); ++column)
        add(column, true);
    list_->setCurrentRow(0);
}

void ColumnChooser::enableButtons() {
    const int row = list_->currentRow();
    up_->setEnabled(row > 0);
    down_->setEnabled(row >= 0 && row + 1 < list_->count());
    bool any = false;
    for (int i = 0; i < list_->count(); ++i)
        any |= list_->item(i)->checkState() == Qt::Checked;
    ok_->setEnabled(any); // a list without columns would offer no way back
    ok_->setToolTip(any ? QString() : tr("At least one column must be shown."));
}

void ColumnChooser::accept() {
    QHeaderView& header = *view_.horizontalHeader();
    for (int place = 0; place < list_->count(); ++place) {
        const QListWidgetItem& item = *list_->item(place);
        const int column = item.data(Qt::UserRole).toInt();
        header.moveSection(header.visualIndex(column), place);
        header.setSectionHidden(column, item.checkState() != Qt::Checked);
    }
    QDialog::accept();
}

} // namespace quobrix
