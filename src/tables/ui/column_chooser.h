#pragma once

#include <QDialog>

class QListWidget;
class QPushButton;
class QTableView;

namespace quobrix {

class SpreadsheetModel;

/// The dialog in which a person chooses which columns of a spreadsheet are shown, and in which order.
class ColumnChooser final : public QDialog {
    Q_OBJECT
public:
    ColumnChooser(QTableView& view, const SpreadsheetModel& model, QWidget* parent);

    void accept() override;

private:
    void add(int column, bool shown);
    void move(int step);
    void restoreOriginal();
    void enableButtons();

    QTableView& view_;
    const SpreadsheetModel& model_;
    QListWidget* list_;
    QPushButton* up_;
    QPushButton* down_;
    QPushButton* ok_;
};

} // namespace quobrix
