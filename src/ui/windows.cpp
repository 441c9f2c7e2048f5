#include "ui/windows.h"

#include "settings/settings.h"

#include <QApplication>

namespace quobrix {
namespace {

constexpr std::string_view kGeometry = "Geometry";

} // namespace

bool restoreGeometry(QWidget& window, const Settings& settings, std::string_view section) {
    const QByteArray stored = QByteArray::fromStdString(settings.getText(section, kGeometry));
    return window.restoreGeometry(QByteArray::fromBase64(stored));
}

void rememberGeometry(const QWidget& window, Settings& settings, std::string_view section) {
    settings.setText(section, kGeometry, window.saveGeometry().toBase64().toStdString());
}

void bringToFront(QWidget& window) {
    window.show();
    window.raise();
    window.activateWindow();
}

QWidget& usableParent(QWidget& frame) {
    QWidget* const modal = QApplication::activeModalWidget();
    return modal ? *modal : frame;
}

} // namespace quobrix
