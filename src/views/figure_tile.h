#pragma once

#include <QAbstractButton>

namespace quobrix {

/// A figure with what it is called, and what has changed: a button that leads to what it is made of.
class FigureTile final : public QAbstractButton {
public:
    enum class Room {
        Card, ///< two lines for what it is called, and a remark
        Line, ///< one line, and no remark
    };
    explicit FigureTile(const QString& name, Room room = Room::Card, QWidget* parent = nullptr);

    /// REMARK stands below the value, in small letters; empty: none.
    void show(const QString& title, const QString& value, const QString& remark);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {sizeHint().width() / 2, sizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    int titleLines() const { return room_ == Room::Card ? 2 : 1; }
    QFont valueFont() const;
    QFont smallFont() const;

    const Room room_;
    QString title_, value_, remark_;
};

} // namespace quobrix
