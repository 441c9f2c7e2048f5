#pragma once

#include <QFrame>

class QLabel;

namespace quobrix {

/// What there is to say about a cell, in a bubble beside it: why a value is refused, or why it cannot be edited.
class CellNote final : public QFrame {
    Q_OBJECT
public:
    explicit CellNote(QWidget* viewport);

    /// Shows TEXT below CELL (in coordinates of the viewport), or above it where there is no room.
    void show(const QString& text, const QRect& cell);
    QString text() const;

private:
    QLabel* text_;
};

} // namespace quobrix
