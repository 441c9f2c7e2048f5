#pragma once

#include <QDialog>

#include <vector>

class QListWidget;
class QPushButton;
class QTableView;
class QTreeWidget;
class QTreeWidgetItem;

namespace quobrix {

class SpreadsheetModel;

/// The dialog in which a person chooses which columns of a spreadsheet are shown, from all of them in their groups, and
/// in which order.
class ColumnChooser final : public QDialog {
    Q_OBJECT
public:
    ColumnChooser(QTableView& view, const SpreadsheetModel& model, QWidget* parent);

    void accept() override;

private:
    void addToAll(int column);
    void addToShown(int column);
    void setShown(const std::vector<int>& columns);
    void choose(const QTreeWidgetItem& item);
    void move(int step);
    void enableButtons();

    QTableView& view_;
    const SpreadsheetModel& model_;
    QTreeWidget* all_;
    QListWidget* shown_;
    QPushButton* up_;
    QPushButton* down_;
    QPushButton* ok_;
};

} // namespace quobrix
