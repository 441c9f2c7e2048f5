#pragma once

#include <QAbstractButton>

namespace quobrix {

/// A vehicle or driver among others: its name, its value and a bar that compares it with them. A button that leads to
/// what the value is made of.
class RankingRow final : public QAbstractButton {
public:
    /// PART: 0 to 1, of the longest bar.
    RankingRow(const QString& name, const QString& value, double part, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    const QString value_;
    const double part_;
};

} // namespace quobrix
