#pragma once

#include "views/table_model.h"

#include <QTableView>

#include <optional>
#include <string>
#include <vector>

namespace quobrix {

class Settings;

/// A list of records: sorted by a click on a heading, its columns moved and sized by their headings, both remembered.
/// Enter or a double click activates a row.
class TableView : public QTableView {
    Q_OBJECT
public:
    /// SECTION: where the settings keep columns and sorting. EMPTY_TEXT is shown in place of rows.
    TableView(const TextContext& context, Settings& settings, std::string section, QString emptyText,
              QWidget* parent = nullptr);
    ~TableView() override;

    TableModel& table() { return table_; }
    const TableModel& table() const { return table_; }
    /// Shows COLUMNS as TableModel does; the headings keep what the user made of them. There is no current row then.
    void setColumns(std::vector<ShownColumn> columns, TableModel::RowTitle rowTitle = {});
    /// The stored row that is current; nothing if there is none.
    std::optional<RowIndex> currentRow() const;
    void setCurrentRow(RowIndex row);
    /// The row shown STEP rows below (above, if negative) ROW; nothing if there is none.
    std::optional<RowIndex> neighbour(RowIndex row, int step) const;

signals:
    void rowActivated(quobrix::RowIndex row);
    void currentRowChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void restoreLayout();
    void rememberLayout();

    Settings& settings_;
    std::string section_;
    QString emptyText_;
    TableModel table_;
    SortedTableModel sorted_;
    bool layoutRestored_ = false;
    bool layoutChanged_ = false;
};

} // namespace quobrix
