#pragma once

#include <QLabel>

namespace quobrix {

/// The line at the foot of a dialog that says what the status bar says in the main window. It takes the same room
/// whatever it says: what is longer ends in an ellipsis, and its tool tip has all of it.
class StatusLine final : public QLabel {
public:
    explicit StatusLine(QWidget* parent = nullptr);

    /// Says TEXT, which may be empty.
    void say(const QString& text);
    /// All of what it says; text() has the lines as they are broken.
    const QString& said() const { return said_; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void fit();

    QString said_;
};

} // namespace quobrix
