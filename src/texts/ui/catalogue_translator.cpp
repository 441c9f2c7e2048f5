#include "texts/ui/catalogue_translator.h"

#include "texts/catalogue.h"

namespace quobrix {

QString CatalogueTranslator::translate(const char*, const char* english, const char* comment, int count) const {
    const Catalogue* all = catalogue();
    if (!all)
        return {};
    const auto counted = count < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(count));
    const auto translation = all->find(comment ? comment : "", english, counted);
    return translation ? QString::fromStdString(*translation) : QString();
}

} // namespace quobrix
