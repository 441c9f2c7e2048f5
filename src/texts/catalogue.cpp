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

} // namespace

void setCatalogue(std::shared_ptr<const Catalogue> catalogue, std::string language) {
    current() = {std::move(catalogue), std::move(language)};
}

const Catalogue* catalogue() { return current().catalogue.get(); }
const std::string& textLanguage() { return current().language; }

} // namespace quobrix
