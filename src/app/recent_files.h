#pragma once

#include <filesystem>
#include <vector>

namespace quobrix {

class Settings;

/// The files opened last, newest first, kept in the settings.
class RecentFiles {
public:
    explicit RecentFiles(Settings& settings) : settings_(settings) {}

    std::vector<std::filesystem::path> list() const;
    /// Puts FILE in front.
    void add(const std::filesystem::path& file);
    void remove(const std::filesystem::path& file);

private:
    void store(const std::vector<std::filesystem::path>& files);

    Settings& settings_;
};

} // namespace quobrix
