#include "platform/environment.h"
#include "platform/translations.h"
#include "platform/wide_text.h"

#include <algorithm>
#include <string>

#include <windows.h>

namespace quobrix {

std::vector<std::string> preferredLanguages() {
    if (const auto list = environmentVariable("LANGUAGE"))
        return languagesOf(*list);
    ULONG count = 0, size = 0;
    if (!GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, nullptr, &size))
        return {};
    std::wstring names(size, L'\0'); // "pt-BR", each ending in a NUL
    if (!GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, names.data(), &size))
        return {};
    std::ranges::replace(names, L'\0', L':');
    std::ranges::replace(names, L'-', L'_');
    return languagesOf(narrow(names));
}

} // namespace quobrix
