#pragma once

#include <QAbstractButton>

namespace quobrix {

/// A figure with what it is called, and what has changed: a button that leads to what it is made of.
class FigureTile final : public QAbstractButton {
public:
    explicit FigureTile(const QString& name, QWidget* parent = nullptr);

    /// REMARK stands below the value, in small letters; empty: none.
    void show(const QString& title, const QString& value, const QString& remark);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QFont valueFont() const;
    QFont smallFont() const;

    QString title_, value_, remark_;
};

} // namespace quobrix
