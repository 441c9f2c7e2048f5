#pragma once

#include "plots/plot_data.h"
#include "tables/column.h"

#include <QWidget>

#include <optional>

class QLabel;
class QTableWidget;

namespace quobrix {

class PlotWidget;

/// What a plot comes to as figures, a row for each quantity: at the cursor, and the least, mean and greatest value of
/// the range that is marked, or else of what is seen. Says the same as the plot to who cannot see it.
class PlotFiguresTable final : public QWidget {
public:
    /// Follows PLOT, which must outlive it, while it is shown.
    PlotFiguresTable(const TextContext& text, PlotWidget& plot, QWidget* parent = nullptr);

    /// Takes no more than HEIGHT but for what is at the cursor.
    void fitInto(int height);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    int rowsShown() const;
    void showAll();
    void showCursor();
    void sizeColumns();
    int heightOfRows(int rows) const;
    void setCell(int row, int column, const QString& text);

    TextContext text_;
    PlotWidget& plot_;
    QLabel* cursor_;
    QLabel* range_;
    QTableWidget* table_;
    int room_ = 0;                   ///< to fit into
    std::optional<PlotRange> shown_; ///< the range that figures are of
};

} // namespace quobrix
