#include "texts/translation.h"

#include "base/utf8.h"
#include "texts/plural_rule.h"
#include "texts/text.h"

#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

constexpr std::uint32_t kMagic = 0x950412DE;
constexpr std::size_t kPlaceOfText = 8; // bytes: its length and its offset
constexpr char kContextEnd = '\4';      // between a context and the English text
constexpr char kFormEnd = '\0';         // between the forms of a text that counts

class Translation final : public Catalogue {
public:
    std::optional<std::string> find(std::string_view context, std::string_view english,
                                    std::optional<std::uint64_t> count) const override {
        const auto found = texts_.find(context.empty() ? std::string(english)
                                                       : std::string(context) + kContextEnd + std::string(english));
        if (found == texts_.end())
            return {};
        const std::vector<std::string>& forms = found->second;
        return forms[count && forms.size() > 1 ? static_cast<std::size_t>(rule_.formOf(*count)) : 0];
    }

    PluralRule rule_;
    std::unordered_map<std::string, std::vector<std::string>>
        texts_; ///< forms of each: one, or as many as the rule has
};

std::vector<std::string> parts(std::string_view text, char end) {
    std::vector<std::string> all;
    while (true) {
        const std::size_t length = text.find(end);
        all.emplace_back(text.substr(0, length));
        if (length == std::string_view::npos)
            return all;
        text.remove_prefix(length + 1);
    }
}

/// The places of TEXT: "{0}" for a bare {} too, and the toolkit's "%1" and "%n". Nothing if a brace is out of place.
std::optional<std::set<std::string>> placesIn(std::string_view text) {
    std::set<std::string> places;
    int bare = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] == '%' && (next == 'n' || (next >= '1' && next <= '9'))) {
            places.insert({'%', next});
        } else if (text[i] == '{' || text[i] == '}') {
            if (next == text[i]) {
                ++i;
                continue;
            }
            const bool numbered = next >= '0' && next <= '9';
            if (text[i] != '{' || i + (numbered ? 2 : 1) >= text.size() || text[i + (numbered ? 2 : 1)] != '}')
                return {};
            places.insert(numbered ? std::string{'{', next} : "{" + std::to_string(bare++));
            i += numbered ? 2 : 1;
        }
    }
    return places;
}

/// Whether FORMS can stand for ENGLISH, one or two forms. Where things are counted, a form may leave out what the
/// English one for a single thing leaves out.
bool fits(const std::vector<std::string>& forms, const std::vector<std::string>& english) {
    const auto all = placesIn(english.back()), least = placesIn(english.front());
    return all && least && std::ranges::all_of(forms, [&](const std::string& form) {
               const auto places = placesIn(form);
               return !form.empty() && places && std::ranges::includes(*all, *places) &&
                      std::ranges::includes(*places, *least);
           });
}

/// The NUMBER-th text of the table at TABLE.
std::string_view textAt(ByteView bytes, std::uint32_t table, std::uint32_t number, bool& good) {
    const std::size_t at = table + std::size_t{number} * kPlaceOfText;
    ByteReader place(bytes.subspan(std::min(at, bytes.size())));
    const std::uint32_t length = place.u32(), offset = place.u32();
    ByteReader text(bytes.subspan(std::min<std::size_t>(offset, bytes.size())));
    const ByteView content = text.bytes(length);
    good = good && place.complete() && text.complete();
    return {reinterpret_cast<const char*>(content.data()), content.size()};
}

} // namespace

Result<std::shared_ptr<const Catalogue>> readTranslation(ByteView bytes) {
    ByteReader in(bytes);
    if (in.u32() != kMagic || (in.u32() >> 16) != 0)
        return Error{ErrorKind::NotADocument, text(TextId::NoTranslation)};
    const std::uint32_t count = in.u32(), originals = in.u32(), translations = in.u32();
    const Error damaged{ErrorKind::Corrupt, text(TextId::TranslationDamaged)};
    if (!in.complete() || count > bytes.size() / kPlaceOfText)
        return damaged;
    auto result = std::make_shared<Translation>();
    bool good = true, isUtf8 = false;
    std::size_t total = 0; // of all texts, which do not overlap
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string_view original = textAt(bytes, originals, i, good), own = textAt(bytes, translations, i, good);
        total += original.size() + own.size();
        if (!good || total > bytes.size())
            return damaged;
        if (original.empty()) { // the header, first of all since they are sorted
            isUtf8 = own.find("charset=UTF-8") != std::string_view::npos;
            const std::size_t plurals = own.find("Plural-Forms:");
            const auto rule = plurals == std::string_view::npos
                                  ? std::optional(PluralRule())
                                  : PluralRule::parse(own.substr(plurals, own.find('\n', plurals) - plurals));
            if (!rule)
                return Error{ErrorKind::Unsupported, text(TextId::TranslationPlurals)};
            result->rule_ = *rule;
            continue;
        }
        const std::vector<std::string> english = parts(original, kFormEnd);
        std::vector<std::string> forms = parts(own, kFormEnd);
        const std::size_t wanted = english.size() == 1 ? 1 : static_cast<std::size_t>(result->rule_.forms());
        if (english.size() <= 2 && forms.size() == wanted && validUtf8(own) == own && fits(forms, english))
            result->texts_[english.front()] = std::move(forms);
    }
    if (!isUtf8)
        return Error{ErrorKind::Unsupported, text(TextId::TranslationNotUtf8)};
    return std::shared_ptr<const Catalogue>(std::move(result));
}

} // namespace quobrix
