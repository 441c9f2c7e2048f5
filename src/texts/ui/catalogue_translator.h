#pragma once

#include <QTranslator>

namespace quobrix {

/// Looks the toolkit's texts (tr) up in the catalogue of the core. The class of a text is no context of it: the same
/// English is the same text wherever it stands, unless tr is given a comment that tells it apart.
class CatalogueTranslator : public QTranslator {
public:
    using QTranslator::QTranslator;

    bool isEmpty() const override { return false; } // or the application would not install it
    QString translate(const char* context, const char* english, const char* comment, int count) const override;
};

} // namespace quobrix
