#include "platform/translations.h"

#include "platform/file_system.h"
#include "platform/paths.h"
#include "texts/translation.h"

#include <algorithm>

namespace quobrix {
namespace {

/// A name that cannot lead to another folder.
bool isLanguage(std::string_view name) {
    return !name.empty() && std::ranges::all_of(name, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
}

} // namespace

std::vector<std::string> languagesOf(std::string_view list) {
    std::vector<std::string> languages;
    while (!list.empty()) {
        const std::string_view locale = list.substr(0, list.find(':'));
        list.remove_prefix(std::min(locale.size() + 1, list.size()));
        const std::string_view whole = locale.substr(0, locale.find_first_of(".@"));
        if (!isLanguage(whole))
            continue;
        languages.emplace_back(whole);
        if (const std::size_t country = whole.find('_'); country != std::string_view::npos)
            languages.emplace_back(whole.substr(0, country));
    }
    return languages;
}

void useTranslation(const std::vector<std::filesystem::path>& folders, const std::vector<std::string>& languages) {
    for (const std::string& language : languages) {
        if (language == "en") // what the texts are written in
            return;
        for (const std::filesystem::path& folder : folders) {
            if (folder.empty())
                continue;
            const Result<Bytes> bytes = readFile(folder / "translations" / (language + ".mo"), kMaxTranslation);
            if (!bytes)
                continue;
            if (auto translation = readTranslation(*bytes); translation) {
                std::string name = language;
                std::ranges::replace(name, '_', '-');
                return setCatalogue(*std::move(translation), std::move(name));
            }
        }
    }
}

void useTranslation() { useTranslation({userDataFolder(), deliveredFolder()}, preferredLanguages()); }

} // namespace quobrix
