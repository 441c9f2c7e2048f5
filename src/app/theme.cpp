#include "app/theme.h"

#include "base/ui/qt_text.h"
#include "settings/settings.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>

namespace quobrix {
namespace {

class ProgramStyle final : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        // On a dark window the style's own outline of an empty box cannot be seen.
        if ((element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck) &&
            option->palette.color(QPalette::Window).lightness() < 128) {
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setBrush(Qt::NoBrush);
            painter->setPen(option->palette.color(QPalette::PlaceholderText));
            painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
            painter->restore();
        }
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override {
        const auto* button = qstyleoption_cast<const QStyleOptionToolButton*>(option);
        if (control != CC_ToolButton || !button || !widget ||
            widget->objectName() != QLatin1String("qt_toolbar_ext_button"))
            return QProxyStyle::drawComplexControl(control, option, painter, widget);
        // The style's own picture of what goes on is dark, whatever it lies on.
        QPixmap picture = button->icon.pixmap(button->iconSize, widget->devicePixelRatioF());
        QPainter colour(&picture);
        colour.setCompositionMode(QPainter::CompositionMode_SourceIn);
        colour.fillRect(picture.rect(), option->palette.color(QPalette::ButtonText));
        colour.end();
        QStyleOptionToolButton coloured = *button;
        coloured.icon = QIcon(picture);
        QProxyStyle::drawComplexControl(control, &coloured, painter, widget);
    }

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override {
        switch (hint) {
        case SH_Menu_AllowActiveAndDisabled: // so that the status bar can say why an entry is disabled
            return 1;
        case SH_DialogButtonBox_ButtonsHaveIcons: // the fallback icons are of another age,
        case SH_EtchDisabledText:                 // and so is this
            return 0;
        default:
            return QProxyStyle::styleHint(hint, option, widget, returned);
        }
    }
};

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
    const Theme theme = themeSetting(settings);
    // Desktops without a Qt theme of their own tell GTK programs that they are dark, and no one else.
    const bool desktopIsDark = qEnvironmentVariable("GTK_THEME").endsWith(QLatin1String("dark"), Qt::CaseInsensitive);
    return theme == Theme::System && desktopIsDark ? Theme::Dark : theme;
}

void setTextColors(QPalette& palette, const QColor& text, const QColor& disabled) {
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, disabled);
    }
    QColor placeholder = text;
    placeholder.setAlpha(165);
    palette.setColor(QPalette::PlaceholderText, placeholder);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, disabled);
}

QPalette lightPalette() {
    QPalette palette(QColor(0xef, 0xef, 0xef), QColor(0xf4, 0xf5, 0xf6));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xf4, 0xf6, 0xf8));
    palette.setColor(QPalette::Highlight, QColor(0x1f, 0x6f, 0xc4));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0xd5, 0xda, 0xdf));
    palette.setColor(QPalette::Link, QColor(0x1a, 0x5f, 0xb4));
    setTextColors(palette, QColor(0x1d, 0x21, 0x25), QColor(0x8d, 0x94, 0x9b));
    return palette;
}

QPalette darkPalette() {
    QPalette palette(QColor(0x35, 0x39, 0x3e), QColor(0x25, 0x28, 0x2c));
    palette.setColor(QPalette::Base, QColor(0x1b, 0x1e, 0x21));
    palette.setColor(QPalette::AlternateBase, QColor(0x22, 0x25, 0x29));
    palette.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3f, 0x45));
    palette.setColor(QPalette::ToolTipText, QColor(0xe6, 0xe8, 0xea));
    palette.setColor(QPalette::Highlight, QColor(0x2b, 0x78, 0xcf));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0x45, 0x4a, 0x50));
    palette.setColor(QPalette::Link, QColor(0x6c, 0xb2, 0xff));
    palette.setColor(QPalette::LinkVisited, QColor(0xb0, 0x9c, 0xf0));
    palette.setColor(QPalette::BrightText, Qt::white);
    setTextColors(palette, QColor(0xe6, 0xe8, 0xea), QColor(0x84, 0x8a, 0x90));
    return palette;
}

} // namespace

Theme themeSetting(const Settings& settings) { return themeNamed(toQt(settings.getText("Appearance", "Theme"))); }

void setThemeSetting(Settings& settings, Theme theme) {
    settings.setText("Appearance", "Theme", theme == Theme::Dark ? "dark" : theme == Theme::Light ? "light" : "");
}

void applyTheme(QApplication& application, const Settings& settings) {
    const Theme theme = chosenTheme(settings);
    // The styles of some systems paint light whatever the palette; this one follows it.
    application.setStyle(new ProgramStyle(theme == Theme::System ? QString() : QStringLiteral("Fusion")));
    // An empty palette is that of the style and the desktop.
    application.setPalette(theme == Theme::System ? QPalette() : theme == Theme::Dark ? darkPalette() : lightPalette());
}

} // namespace quobrix
