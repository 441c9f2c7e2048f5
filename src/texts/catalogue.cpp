#include "texts/catalogue.h"

#include <utility>

namespace quobrix {
namespace {

std::shared_ptr<const Catalogue>& current() {
    static std::shared_ptr<const Catalogue> catalogue;
    return catalogue;
}

} // namespace

void setCatalogue(std::shared_ptr<const Catalogue> catalogue) { current() = std::move(catalogue); }
const Catalogue* catalogue() { return current().get(); }

} // namespace quobrix
