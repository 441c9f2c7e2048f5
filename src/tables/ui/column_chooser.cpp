#include "tables/ui/column_chooser.h"

#include "tables/ui/cell_block.h"
#include "tables/ui/spreadsheet_model.h"
#include "ui/fields.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableView>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <algorithm>
#include <numeric>

namespace quobrix {
namespace {

constexpr int kColumnRole = Qt::UserRole; // of an item: its column; a group has none

bool isColumn(const QTreeWidgetItem& item) { return item.data(0, kColumnRole).isValid(); }

} // namespace

ColumnChooser::ColumnChooser(QTableView& view, const SpreadsheetModel& model, QWidget* parent)
    : QDialog(parent), view_(view), model_(model), all_(new QTreeWidget), shown_(new QListWidget),
      up_(new QPushButton(tr("Move &Up"))), down_(new QPushButton(tr("Move &Down"))) {
    setObjectName(QStringLiteral("ColumnChooser"));
    setWindowTitle(tr("Columns"));
    QLabel* allLabel = fieldLabel(tr("&All columns:"), *all_);
    QLabel* shownLabel = fieldLabel(tr("&Shown, from left to right:"), *shown_);
    all_->setObjectName(QStringLiteral("columnTree"));
    all_->setHeaderHidden(true);
    shown_->setObjectName(QStringLiteral("columnList"));
    up_->setObjectName(QStringLiteral("columnUp"));
    down_->setObjectName(QStringLiteral("columnDown"));
    auto* original = new QPushButton(tr("&Original Columns"));
    original->setObjectName(QStringLiteral("columnOriginal"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    ok_ = buttons->button(QDialogButtonBox::Ok);

    auto* layout = new QGridLayout(this);
    layout->addWidget(allLabel, 0, 0);
    layout->addWidget(shownLabel, 0, 1);
    layout->addWidget(all_, 1, 0, 4, 1);
    layout->addWidget(shown_, 1, 1, 4, 1);
    layout->addWidget(up_, 1, 2);
    layout->addWidget(down_, 2, 2);
    layout->addWidget(original, 3, 2);
    layout->setRowStretch(4, 1);
    layout->addWidget(buttons, 5, 0, 1, 3);
    resize(sizeHint().expandedTo({680, 460}));

    for (int column = 0; column < model_.columnCount(); ++column)
        addToAll(column);
    all_->setRootIsDecorated(all_->topLevelItemCount() > 0 && !isColumn(*all_->topLevelItem(0)));
    all_->expandAll();
    setShown(shownColumns(view_));
    const int current = view_.currentIndex().column();
    for (int row = 0; row < shown_->count(); ++row)
        if (shown_->item(row)->data(kColumnRole).toInt() == current)
            shown_->setCurrentRow(row);

    connect(all_, &QTreeWidget::itemChanged, this, [this](const QTreeWidgetItem* item) { choose(*item); });
    connect(shown_, &QListWidget::currentRowChanged, this, &ColumnChooser::enableButtons);
    connect(up_, &QPushButton::clicked, this, [this] { move(-1); });
    connect(down_, &QPushButton::clicked, this, [this] { move(1); });
    connect(original, &QPushButton::clicked, this, [this] {
        std::vector<int> columns(static_cast<std::size_t>(model_.columnCount()));
        std::iota(columns.begin(), columns.end(), 0);
        std::erase_if(columns, [this](int column) { return model_.hiddenAtFirst(column); });
        setShown(columns);
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &ColumnChooser::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ColumnChooser::reject);
    all_->setCurrentItem(all_->topLevelItem(0));
    all_->setFocus();
    enableButtons();
}

/// Under its group, which stands where its first column does.
void ColumnChooser::addToAll(int column) {
    QTreeWidgetItem* under = all_->invisibleRootItem();
    if (const QString& group = model_.group(column); !group.isEmpty()) {
        const QList<QTreeWidgetItem*> groups = all_->findItems(group, Qt::MatchExactly);
        const auto found = std::ranges::find_if(groups, [](const QTreeWidgetItem* item) { return !isColumn(*item); });
        under = found != groups.end() ? *found : new QTreeWidgetItem(all_, {group});
        under->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    }
    auto* item = new QTreeWidgetItem(under, {model_.plainHeading(column)});
    item->setData(0, kColumnRole, column);
    item->setToolTip(0, model_.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString());
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
}

void ColumnChooser::addToShown(int column) {
    auto* item = new QListWidgetItem(model_.plainHeading(column), shown_);
    item->setData(kColumnRole, column);
    item->setToolTip(model_.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString());
}

/// COLUMNS are those that are shown, in their order.
void ColumnChooser::setShown(const std::vector<int>& columns) {
    const QSignalBlocker quiet(all_);
    for (QTreeWidgetItemIterator each(all_); *each; ++each)
        if (isColumn(**each)) {
            const bool chosen = std::ranges::find(columns, (*each)->data(0, kColumnRole).toInt()) != columns.end();
            (*each)->setCheckState(0, chosen ? Qt::Checked : Qt::Unchecked);
        }
    all_->viewport()->update();
    shown_->clear();
    for (const int column : columns)
        addToShown(column);
    shown_->setCurrentRow(0);
}

void ColumnChooser::choose(const QTreeWidgetItem& item) {
    const int column = item.data(0, kColumnRole).toInt();
    int row = shown_->count() - 1;
    while (row >= 0 && shown_->item(row)->data(kColumnRole).toInt() != column)
        --row;
    const bool chosen = item.checkState(0) == Qt::Checked;
    if (chosen && row < 0) {
        addToShown(column);
        shown_->setCurrentRow(shown_->count() - 1); // to be moved
    } else if (!chosen && row >= 0) {
        delete shown_->takeItem(row);
    }
    enableButtons();
}

void ColumnChooser::move(int step) {
    const int row = shown_->currentRow();
    QListWidgetItem* item = shown_->takeItem(row);
    shown_->insertItem(row + step, item);
    shown_->setCurrentItem(item);
}

void ColumnChooser::enableButtons() {
    const int row = shown_->currentRow();
    up_->setEnabled(row > 0);
    down_->setEnabled(row >= 0 && row + 1 < shown_->count());
    const bool any = shown_->count() > 0;
    ok_->setEnabled(any); // a list without columns would offer no way back
    ok_->setToolTip(any ? QString() : tr("At least one column must be shown."));
}

void ColumnChooser::accept() {
    QHeaderView& header = *view_.horizontalHeader();
    std::vector<bool> shown(static_cast<std::size_t>(header.count()), false);
    for (int place = 0; place < shown_->count(); ++place) {
        const int column = shown_->item(place)->data(kColumnRole).toInt();
        header.moveSection(header.visualIndex(column), place);
        shown[static_cast<std::size_t>(column)] = true;
    }
    for (int column = 0; column < header.count(); ++column)
        header.setSectionHidden(column, !shown[static_cast<std::size_t>(column)]);
    QDialog::accept();
}

} // namespace quobrix
