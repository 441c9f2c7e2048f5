#pragma once

#include <QPointer>
#include <QWidget>

#include <string_view>

namespace quobrix {

class Settings;

/// Gives WINDOW the place and size that are remembered in SECTION of the settings, on a screen that is there. False if
/// none are.
bool restoreGeometry(QWidget& window, const Settings& settings, std::string_view section);
void rememberGeometry(const QWidget& window, Settings& settings, std::string_view section);

/// Shows WINDOW before all others and gives it the keyboard.
void bringToFront(QWidget& window);

/// What the windows of a program without a modal dialog are children of: FRAME; with one that dialog, since under it
/// they could not be used.
QWidget& usableParent(QWidget& frame);

/// The one window of its kind: brings WINDOW to the front, or what MAKE(QWidget* parent) returns if there is none that
/// can be used. It ends when it is closed.
template <class Window, class Make>
Window& inFront(QPointer<Window>& window, QWidget& frame, const Make& make) {
    QWidget& parent = usableParent(frame);
    if (window && (!window->isVisible() || window->parentWidget() != &parent)) // one about to end is not shown again
        delete window;
    if (!window) {
        window = make(&parent);
        window->setAttribute(Qt::WA_DeleteOnClose);
    }
    bringToFront(*window);
    return *window;
}

} // namespace quobrix
