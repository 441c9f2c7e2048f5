#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quobrix {

/// A translation of the program's texts.
class Catalogue {
public:
    virtual ~Catalogue() = default;
    /// What the English text is in this language, its places {} among its words; CONTEXT, mostly empty, tells texts
    /// apart that are the same in English. Of a text that counts something, the form for COUNT; ENGLISH is then the one
    /// for a single thing. Nothing where it is not translated. May be called on any thread.
    virtual std::optional<std::string> find(std::string_view context, std::string_view english,
                                            std::optional<std::uint64_t> count) const = 0;
};

/// What every text is looked up in from now on, and its language as BCP 47 names it ("pt-BR"); without one, they are
/// English. To be set before other threads are started: texts that have been shown stay as they are.
void setCatalogue(std::shared_ptr<const Catalogue> catalogue, std::string language = "en");
const Catalogue* catalogue();

/// While one lives, the texts that its thread makes are English: what programs read has one language.
class EnglishTexts {
public:
    EnglishTexts();
    ~EnglishTexts();
    EnglishTexts(const EnglishTexts&) = delete;
    EnglishTexts& operator=(const EnglishTexts&) = delete;
};

const std::string& textLanguage();

} // namespace quobrix
