#pragma once

class QApplication;

namespace quobrix {

class Settings;

/// How the program is to look: as the desktop has it, or light or dark whatever the desktop is.
enum class Theme { System, Light, Dark };

/// "Appearance" / "Theme" in the settings: "light", "dark", anything else means System.
Theme themeSetting(const Settings& settings);
void setThemeSetting(Settings& settings, Theme theme);

/// Gives the program its style and, where it is to be dark or light by choice, its palette. QUOBRIX_THEME
/// ("light", "dark" or "system") decides before the settings; "system" leaves the palette to the desktop. May be called
/// again while windows are open.
void applyTheme(QApplication& application, const Settings& settings);

} // namespace quobrix
