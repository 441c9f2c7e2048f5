#include "texts/catalogue.h"

#include <utility>

namespace quobrix {
namespace {

struct Current {
    std::shared_ptr<const Catalogue> catalogue;
    std::string language = "en";
};

Current& current() {
    static Current current;
    return current;
}

thread_local int englishTexts = 0; // how many live

} // namespace

void setCatalogue(std::shared_ptr<const Catalogue> catalogue, std::string language) {
    current() = {std::move(catalogue), std::move(language)};
}

const Catalogue* catalogue() { return englishTexts == 0 ? current().catalogue.get() : nullptr; }
EnglishTexts::EnglishTexts() { ++englishTexts; }
EnglishTexts::~EnglishTexts() { --englishTexts; }
const std::string& textLanguage() { return current().language; }

} // namespace quobrix
