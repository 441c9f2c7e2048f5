#include "app/recent_files.h"

#include "app/command_table.h"
#include "base/ui/qt_text.h"
#include "settings/settings.h"

#include <fmt/format.h>

#include <algorithm>

namespace quobrix {
namespace {

constexpr std::string_view kSection = "Recent File List";

std::string valueName(int index) { return fmt::format("File{}", index + 1); }

} // namespace

std::vector<std::filesystem::path> RecentFiles::list() const {
    std::vector<std::filesystem::path> files;
    for (int i = 0; i < kRecentFileCount; ++i)
        if (const std::string text = settings_.getText(kSection, valueName(i)); !text.empty())
            files.push_back(pathFromUtf8(text));
    return files;
}

void RecentFiles::add(const std::filesystem::path& file) {
    std::vector<std::filesystem::path> files = list();
    std::erase(files, file);
    files.insert(files.begin(), file);
    store(files);
}

void RecentFiles::remove(const std::filesystem::path& file) {
    std::vector<std::filesystem::path> files = list();
    std::erase(files, file);
    store(files);
}

void RecentFiles::store(const std::vector<std::filesystem::path>& files) {
    for (int i = 0; i < kRecentFileCount; ++i) {
        const auto index = static_cast<std::size_t>(i);
        settings_.setText(kSection, valueName(i), index < files.size() ? utf8(files[index]) : std::string());
    }
}

} // namespace quobrix
