#include "views/page.h"

#include <QTableView>

namespace quobrix {

void retextTables(const QWidget& widget) {
    for (const QTableView* table : widget.findChildren<QTableView*>()) {
        QAbstractItemModel* model = table->model();
        if (!model || model->rowCount() == 0 || model->columnCount() == 0)
            continue;
        const int lastRow = model->rowCount() - 1;
        const int lastColumn = model->columnCount() - 1;
        emit model->dataChanged(model->index(0, 0), model->index(lastRow, lastColumn));
        emit model->headerDataChanged(Qt::Horizontal, 0, lastColumn);
        emit model->headerDataChanged(Qt::Vertical, 0, lastRow);
    }
}

} // namespace quobrix
