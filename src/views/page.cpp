#include "views/page.h"

#include "model/quobrix_document.h"

namespace quobrix {

SpreadsheetContext ViewContext::spreadsheet() const { return {text(), settings, &document.edits(), prompter, windows}; }

void retextTables(const QWidget& widget) {
    for (TSpreadsheet* spreadsheet : widget.findChildren<TSpreadsheet*>())
        spreadsheet->unitsChanged();
}

} // namespace quobrix
