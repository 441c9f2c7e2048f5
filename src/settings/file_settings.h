#pragma once

#include "settings/ini_text.h"
#include "settings/settings.h"

#include <filesystem>

namespace quobrix {

/// Settings in a text file, which is replaced as a whole (new file, then rename) at every change, so that a crash
/// leaves the old or the new settings. A file that is missing, too large, not text or not permitted to be read means
/// defaults. It is not destroyed by the next change: it then goes aside under its name with ".unreadable".
class FileSettings final : public SettingsBackend {
public:
    explicit FileSettings(std::filesystem::path file);

    std::string read(std::string_view section, std::string_view name) const override;
    void write(std::string_view section, std::string_view name, std::string_view value) override;

private:
    void load();
    bool putAside();

    std::filesystem::path file_; ///< where the symbolic links end
    IniText ini_;
    std::map<std::pair<std::string, std::string>, std::string> unwritten_; ///< changes that never reached the file
    bool unreadable_ = false;
};

/// The settings of the user who runs the program: the registry branch Software\Halvern\Quobrix on Windows, elsewhere
/// the file quobrix/Quobrix.conf in XDG_CONFIG_HOME (or ~/.config). With no such place, settings that end with the
/// process.
std::unique_ptr<SettingsBackend> userSettings();

} // namespace quobrix
