#pragma once

class QApplication;

namespace quobrix {

class Settings;

/// Gives the program its style and, where it is to be dark or light by choice, its palette. QUOBRIX_THEME decides, then
/// "Appearance" / "Theme" in the settings, each "light", "dark" or "system"; the last one leaves the palette to the
/// desktop.
void applyTheme(QApplication& application, const Settings& settings);

} // namespace quobrix
