#pragma once

#include "tables/column.h"

#include <QTableView>

#include <optional>

namespace quobrix {

class SpreadsheetModel;

/// The grid of a spreadsheet.
class SpreadsheetView final : public QTableView {
    Q_OBJECT
public:
    /// How a person works with the rows.
    enum class Use {
        Records, ///< a row at a time: Enter or a double click activates it
        Cells,   ///< a cell at a time
    };

    /// MODEL must outlive the view. EMPTY_TEXT stands in place of rows.
    SpreadsheetView(SpreadsheetModel& model, Use use, QString emptyText, QWidget* parent);
    ~SpreadsheetView() override;

    std::optional<RowIndex> currentRow() const;

signals:
    void rowActivated(quobrix::RowIndex row);
    void currentRowChanged();

protected:
    int sizeHintForColumn(int column) const override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    SpreadsheetModel& model_;
    Use use_;
    QString emptyText_;
};

} // namespace quobrix
