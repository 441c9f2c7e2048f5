#include "texts/plural_rule.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace quobrix {
namespace {

constexpr std::size_t kLongest = 1000; // the longest in use, for Arabic, has 87 characters
constexpr int kDeepest = 50;           // each level of which takes a place on the stack
constexpr std::uint64_t kMostForms = 10;

/// An operator of two values and how strongly it binds.
struct Operator {
    std::string_view sign;
    int strength;
};

// Of two that begin alike, the longer one comes first.
constexpr Operator kOperators[] = {{"||", 1}, {"&&", 2}, {"==", 3}, {"!=", 3}, {"<=", 4}, {">=", 4}, {"<", 4},
                                   {">", 4},  {"+", 5},  {"-", 5},  {"*", 6},  {"/", 6},  {"%", 6}};

/// Reads an expression and computes it on the way; both sides of all that C would skip are computed, too.
class Evaluation {
public:
    Evaluation(std::string_view expression, std::uint64_t count) : rest_(expression), count_(count) {}

    /// Nothing if it is no expression.
    std::optional<std::uint64_t> run() {
        const std::uint64_t value = choice(0);
        skipBlanks();
        return good_ && rest_.empty() ? std::optional(value) : std::nullopt;
    }
    /// Something was divided by nothing, perhaps on a side that C would skip.
    bool undefined() const { return undefined_; }

private:
    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t"), rest_.size())); }

    bool take(std::string_view sign) {
        skipBlanks();
        if (!rest_.starts_with(sign))
            return false;
        rest_.remove_prefix(sign.size());
        return true;
    }

    std::uint64_t choice(int depth) {
        if (depth > kDeepest)
            good_ = false;
        if (!good_)
            return 0;
        const std::uint64_t condition = operation(depth, 1);
        if (!take("?"))
            return condition;
        const std::uint64_t then = choice(depth + 1);
        good_ = good_ && take(":");
        const std::uint64_t otherwise = choice(depth + 1);
        return condition != 0 ? then : otherwise;
    }

    /// Operators that bind at least as strongly as STRENGTH.
    std::uint64_t operation(int depth, int strength) {
        std::uint64_t value = term(depth);
        while (good_) {
            skipBlanks();
            const auto* found =
                std::ranges::find_if(kOperators, [this](const Operator& one) { return rest_.starts_with(one.sign); });
            if (found == std::end(kOperators) || found->strength < strength)
                break;
            rest_.remove_prefix(found->sign.size());
            value = result(found->sign, value, operation(depth + 1, found->strength + 1));
        }
        return value;
    }

    std::uint64_t result(std::string_view sign, std::uint64_t a, std::uint64_t b) {
        if ((sign == "/" || sign == "%") && b == 0) {
            undefined_ = true;
            return 0;
        }
        switch (sign.front()) {
        case '|':
            return a != 0 || b != 0;
        case '&':
            return a != 0 && b != 0;
        case '=':
            return a == b;
        case '!':
            return a != b;
        case '<':
            return sign.size() == 2 ? a <= b : a < b;
        case '>':
            return sign.size() == 2 ? a >= b : a > b;
        case '+':
            return a + b;
        case '-':
            return a - b;
        case '*':
            return a * b;
        case '/':
            return a / b;
        default:
            return a % b;
        }
    }

    std::uint64_t term(int depth) {
        if (depth > kDeepest)
            good_ = false;
        if (!good_)
            return 0;
        if (take("!"))
            return term(depth + 1) == 0;
        if (take("(")) {
            const std::uint64_t value = choice(depth + 1);
            good_ = good_ && take(")");
            return value;
        }
        if (take("n"))
            return count_;
        std::uint64_t number = 0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
        good_ = error == std::errc();
        if (good_)
            rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return number;
    }

    std::string_view rest_;
    std::uint64_t count_;
    bool good_ = true;
    bool undefined_ = false;
};

/// What stands behind NAME in TEXT, up to a semicolon.
std::string_view valueOf(std::string_view text, std::string_view name) {
    const std::size_t at = text.find(name);
    if (at == std::string_view::npos)
        return {};
    text.remove_prefix(at + name.size());
    return text.substr(0, text.find(';'));
}

} // namespace

std::optional<PluralRule> PluralRule::parse(std::string_view header) {
    std::string_view number = valueOf(header, "nplurals=");
    const std::string_view expression = valueOf(header, "plural=");
    std::uint64_t forms = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), forms);
    if (error != std::errc() || forms == 0 || forms > kMostForms || expression.size() > kLongest ||
        !Evaluation(expression, 1).run())
        return {};
    return PluralRule(forms, std::string(expression));
}

std::uint64_t PluralRule::formOf(std::uint64_t count) const {
    Evaluation evaluation(expression_, count);
    const std::uint64_t form = evaluation.run().value_or(forms_);
    return evaluation.undefined() ? forms_ - 1 : std::min(form, forms_ - 1);
}

} // namespace quobrix
