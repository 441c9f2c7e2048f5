#pragma once

#include "texts/catalogue.h"

#include <memory>

namespace quobrix::testing {

/// A language in which every text is the English one with each line in brackets, so that what is shown without them has
/// not been looked up. What follows a tab (a shortcut) stays. With bare places, those for arguments stand outside, so
/// that an argument must have been looked up by itself.
class PseudoCatalogue final : public Catalogue {
public:
    enum class Places { Bracketed, Bare };
    explicit PseudoCatalogue(Places places = Places::Bracketed) : places_(places) {}

    std::optional<std::string> find(std::string_view, std::string_view english,
                                    std::optional<std::uint64_t>) const override {
        std::string result;
        while (true) {
            const std::size_t end = english.find_first_of("\n\t");
            std::string_view line = english.substr(0, end);
            appendBracketed(result, line);
            if (end == std::string_view::npos)
                return result;
            if (english[end] == '\t')
                return result.append(english.substr(end));
            result += '\n';
            english.remove_prefix(end + 1);
        }
    }

private:
    /// Of the place that TEXT begins with ("{}", "{0}", "%1"); 0 if it begins with none.
    static std::size_t placeLength(std::string_view text) {
        const auto isDigit = [&](std::size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
        if (text.starts_with("{}") || (text.starts_with('%') && isDigit(1)))
            return 2;
        return text.starts_with('{') && isDigit(1) && text.substr(2).starts_with('}') ? 3 : 0;
    }

    void appendBracketed(std::string& result, std::string_view line) const {
        while (!line.empty()) {
            std::size_t end = 0;
            while (end < line.size() && (places_ == Places::Bracketed || placeLength(line.substr(end)) == 0))
                end += line.substr(end).starts_with("{{") || line.substr(end).starts_with("}}") ? 2 : 1;
            if (end > 0)
                result.append("⟦").append(line.substr(0, end)).append("⟧");
            line.remove_prefix(end);
            const std::size_t place = placeLength(line);
            result.append(line.substr(0, place));
            line.remove_prefix(place);
        }
    }

    Places places_;
};

/// The pseudo language while it lives.
class PseudoLanguage {
public:
    explicit PseudoLanguage(PseudoCatalogue::Places places = PseudoCatalogue::Places::Bracketed) {
        setCatalogue(std::make_shared<PseudoCatalogue>(places));
    }
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
