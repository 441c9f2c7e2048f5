#include "app/theme.h"

#include "settings/settings.h"
#include "views/qt_text.h"

#include <QApplication>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleFactory>

namespace quobrix {
namespace {

/// Lets the keyboard and the mouse reach disabled menu entries, so that the status bar can say why they are.
class MenuStyle final : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override {
        if (hint == SH_Menu_AllowActiveAndDisabled)
            return 1;
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }
};

enum class Theme { System, Light, Dark };

Theme themeNamed(const QString& name) {
    if (name.compare(QLatin1String("dark"), Qt::CaseInsensitive) == 0)
        return Theme::Dark;
    if (name.compare(QLatin1String("light"), Qt::CaseInsensitive) == 0)
        return Theme::Light;
    return Theme::System;
}

Theme chosenTheme(const Settings& settings) {
    if (qEnvironmentVariableIsSet("QUOBRIX_THEME"))
        return themeNamed(qEnvironmentVariable("QUOBRIX_THEME"));
    const Theme theme = themeNamed(toQt(settings.getText("Appearance", "Theme")));
    // Desktops without a Qt theme of their own tell GTK programs that they are dark, and no one else.
    const bool desktopIsDark = qEnvironmentVariable("GTK_THEME").endsWith(QLatin1String("dark"), Qt::CaseInsensitive);
    return theme == Theme::System && desktopIsDark ? Theme::Dark : theme;
}

QPalette lightPalette() {
    QPalette palette(QColor(0xef, 0xef, 0xef), QColor(0xf4, 0xf5, 0xf6));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xf4, 0xf6, 0xf8));
    palette.setColor(QPalette::WindowText, QColor(0x1d, 0x21, 0x25));
    palette.setColor(QPalette::Text, QColor(0x1d, 0x21, 0x25));
    palette.setColor(QPalette::ButtonText, QColor(0x1d, 0x21, 0x25));
    palette.setColor(QPalette::Highlight, QColor(0x1f, 0x6f, 0xc4));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x1a, 0x5f, 0xb4));
    palette.setColor(QPalette::PlaceholderText, QColor(0x1d, 0x21, 0x25, 128));
    return palette;
}

QPalette darkPalette() {
    const QColor window(0x25, 0x28, 0x2c);
    const QColor text(0xe6, 0xe8, 0xea);
    QPalette palette(QColor(0x35, 0x39, 0x3e), window);
    palette.setColor(QPalette::Base, QColor(0x1b, 0x1e, 0x21));
    palette.setColor(QPalette::AlternateBase, QColor(0x22, 0x25, 0x29));
    palette.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3f, 0x45));
    palette.setColor(QPalette::Highlight, QColor(0x2b, 0x78, 0xcf));
    palette.setColor(QPalette::Link, QColor(0x6c, 0xb2, 0xff));
    palette.setColor(QPalette::LinkVisited, QColor(0xb0, 0x9c, 0xf0));
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    palette.setColor(QPalette::PlaceholderText, QColor(0xe6, 0xe8, 0xea, 128));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, QColor(0x84, 0x8a, 0x90));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0x45, 0x4a, 0x50));
    return palette;
}

} // namespace

void applyTheme(QApplication& application, const Settings& settings) {
    const Theme theme = chosenTheme(settings);
    // The styles of some systems paint light whatever the palette; this one follows it.
    application.setStyle(new MenuStyle(theme == Theme::System ? QString() : QStringLiteral("Fusion")));
    if (theme != Theme::System)
        application.setPalette(theme == Theme::Dark ? darkPalette() : lightPalette());
}

} // namespace quobrix
