#include "platform/environment.h"
#include "platform/translations.h"

#include <optional>

namespace quobrix {

/// As gettext does: LANGUAGE counts unless the locale of messages is none in particular.
std::vector<std::string> preferredLanguages() {
    std::optional<std::string> locale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (locale = environmentVariable(variable); locale)
            break;
    if (!locale || *locale == "C" || *locale == "POSIX" || locale->starts_with("C."))
        return {};
    return languagesOf(environmentVariable("LANGUAGE").value_or(*locale));
}

} // namespace quobrix
