#pragma once

#include "model/trip_report.h"
#include "views/page.h"

#include <QScrollArea>

#include <optional>

class QGridLayout;

namespace quobrix {

/// The report of one trip: a card for each of its sections.
class TTripLogRecordView final : public QScrollArea {
    Q_OBJECT
public:
    explicit TTripLogRecordView(const ViewContext& context, QWidget* parent = nullptr);

    /// Shows the report of the trip of ROW, or that there is none.
    void showTrip(std::optional<RowIndex> row);
    /// Puts the report on the clipboard as text.
    void copy() const;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void arrange();

    ViewContext context_;
    Report report_;
    QGridLayout* grid_ = nullptr;
    std::vector<QWidget*> cards_;
    int columns_ = 0;
};

} // namespace quobrix
