#pragma once

#include "views/page.h"

#include <QTabWidget>

#include <optional>

namespace quobrix {

/// The tables of one trip: its samples, its speed bands with the time spent in each, its parameters.
class TTripLogTableView final : public QTabWidget {
    Q_OBJECT
public:
    explicit TTripLogTableView(const ViewContext& context, QWidget* parent = nullptr);

    /// Shows the tables of the trip of ROW, or empty ones.
    void showTrip(std::optional<RowIndex> row);
    /// The tables that have rows.
    std::vector<Block> printable() const;

private:
    TSpreadsheet* addTable(const char* name, const QString& title);

    ViewContext context_;
    TSpreadsheet* samples_;
    TSpreadsheet* bands_;
    TSpreadsheet* parameters_;
};

} // namespace quobrix
