#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// The languages in LIST, names of locales with colons between ("pt_BR.UTF-8:es"), as "pt_BR", "pt", "es": each with a
/// country is followed by the same without.
std::vector<std::string> languagesOf(std::string_view list);

/// The languages that the user prefers, best first, in the form of languagesOf: what LANGUAGE names, else the system.
std::vector<std::string> preferredLanguages();

/// Shows texts in the first of LANGUAGES that has a translation, translations/LANGUAGE.mo in one of FOLDERS, and in
/// English where there is none, or none that can be read. To be called before other threads are started.
void useTranslation(const std::vector<std::filesystem::path>& folders, const std::vector<std::string>& languages);
/// The user's, from this user's data folder, where a translator tries one, or from what is delivered with the program.
void useTranslation();

} // namespace quobrix
