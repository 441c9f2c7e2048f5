#pragma once

#include "texts/catalogue.h"

#include <memory>

namespace quobrix::testing {

/// A language in which every text is the English one with each line in brackets, so that what is shown without them has
/// not been looked up. What follows a tab (a shortcut) and "[*]" (the toolkit's place in a title) stay.
class PseudoCatalogue final : public Catalogue {
public:
    std::optional<std::string> find(std::string_view, std::string_view english,
                                    std::optional<std::uint64_t>) const override {
        std::string result;
        while (true) {
            const std::size_t end = english.find_first_of("\n\t");
            std::string_view line = english.substr(0, end);
            if (!line.empty())
                result.append("⟦").append(line).append("⟧");
            if (end == std::string_view::npos)
                return result;
            if (english[end] == '\t')
                return result.append(english.substr(end));
            result += '\n';
            english.remove_prefix(end + 1);
        }
    }
};

/// The pseudo language while it lives.
class PseudoLanguage {
public:
    PseudoLanguage() { setCatalogue(std::make_shared<PseudoCatalogue>()); }
    ~PseudoLanguage() { setCatalogue(nullptr); }
    PseudoLanguage(const PseudoLanguage&) = delete;
    PseudoLanguage& operator=(const PseudoLanguage&) = delete;
};

/// What of TEXT stands outside of all brackets.
inline std::string outsideBrackets(std::string_view text) {
    std::string outside;
    int depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i).starts_with("⟦"))
            ++depth, i += 2;
        else if (text.substr(i).starts_with("⟧"))
            --depth, i += 2;
        else if (depth == 0)
            outside += text[i];
    }
    return outside;
}

} // namespace quobrix::testing
