#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quobrix {

/// Which form of a text a number of things takes, as the header of a translation says it: "nplurals=3; plural=(n==1 ? 0
/// : n%10>=2 && n%10<=4 ? 1 : 2);", an expression of C over n.
class PluralRule {
public:
    /// English and many more: one form for one thing, another for all other numbers.
    PluralRule() : PluralRule(2, "n != 1") {}

    /// Nothing if HEADER's expression is none, or too long or deep to be one that a language needs.
    static std::optional<PluralRule> parse(std::string_view header);

    std::uint64_t forms() const { return forms_; }
    /// The form for COUNT, below forms(); the last one where the expression leads elsewhere, or divides by nothing.
    std::uint64_t formOf(std::uint64_t count) const;

private:
    PluralRule(std::uint64_t forms, std::string expression) : forms_(forms), expression_(std::move(expression)) {}

    std::uint64_t forms_;
    std::string expression_;
};

} // namespace quobrix
