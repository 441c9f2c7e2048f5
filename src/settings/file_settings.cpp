#include "settings/file_settings.h"

#include "platform/file_system.h"
#include "platform/paths.h"

#include <algorithm>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

// A settings file is a few kilobytes; one beyond this is not ours.
constexpr std::uint64_t kLargestFile = 1u << 22;

} // namespace

FileSettings::FileSettings(fs::path file) : file_(std::move(file)) {
    if (auto target = resolveLinks(file_))
        file_ = *std::move(target);
    load();
}

std::string FileSettings::read(std::string_view section, std::string_view name) const {
    return ini_.value(section, name);
}

void FileSettings::write(std::string_view section, std::string_view name, std::string_view value) {
    load(); // another program of ours may have changed other values since
    unwritten_.insert_or_assign({std::string(section), std::string(name)}, std::string(value));
    for (const auto& [key, text] : unwritten_)
        ini_.setValue(key.first, key.second, text);
    if (!putAside())
        return;
    std::error_code error;
    fs::create_directories(file_.parent_path(), error);
    const std::string text = ini_.text();
    if (writeFileAtomically(file_, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}))
        unwritten_.clear();
}

void FileSettings::load() {
    std::error_code error;
    unreadable_ = false;
    if (!fs::exists(fs::symlink_status(file_, error)))
        return;
    const auto bytes = readFile(file_, kLargestFile);
    unreadable_ = !bytes || std::find(bytes->begin(), bytes->end(), 0) != bytes->end();
    if (!unreadable_)
        ini_ = IniText({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

bool FileSettings::putAside() {
    if (!unreadable_)
        return true;
    fs::path aside = file_;
    aside += ".unreadable";
    std::error_code error;
    fs::rename(file_, aside, error);
    return !error;
}

#ifndef _WIN32
std::unique_ptr<SettingsBackend> userSettings() {
    const fs::path folder = userConfigFolder();
    if (folder.empty())
        return std::make_unique<MemorySettings>();
    return std::make_unique<FileSettings>(folder / "Quobrix.conf");
}
#endif

} // namespace quobrix
