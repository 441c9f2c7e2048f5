#include "tables/ui/spreadsheet.h"

#include "base/ui/qt_text.h"

#include <QHeaderView>
#include <QVBoxLayout>

namespace quobrix {

TSpreadsheet::TSpreadsheet(const SpreadsheetContext& context, const SpreadsheetSpec& spec, QWidget* parent)
    : QWidget(parent), context_(context), model_(context.text),
      view_(new SpreadsheetView(model_, spec.use, spec.emptyText, this)),
      layout_(context.settings, spec.name, *view_, model_) {
    setObjectName(toQt(spec.name));
    view_->setObjectName(toQt(spec.name) + QStringLiteral("Cells"));
    view_->setAccessibleName(spec.title);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(view_);
    setFocusProxy(view_);
    connect(view_, &SpreadsheetView::rowActivated, this, &TSpreadsheet::rowActivated);
    connect(view_, &SpreadsheetView::currentRowChanged, this, &TSpreadsheet::currentRowChanged);
    connect(&model_, &QAbstractItemModel::layoutChanged, this, &TSpreadsheet::orderChanged);
}

TSpreadsheet::~TSpreadsheet() {
    layout_.remember();
    delete view_; // while its model is there
}

void TSpreadsheet::setColumns(std::vector<ShownColumn> columns, SpreadsheetModel::RowTitle rowTitle) {
    // A reset of the model takes widths and order of the columns with it only when their number changes.
    if (layout_.restored() && columns.size() != model_.columns().size()) {
        layout_.remember();
        layout_.forget();
    }
    view_->verticalHeader()->setVisible(rowTitle != nullptr);
    model_.setColumns(std::move(columns), std::move(rowTitle));
    if (!layout_.restored() && model_.rowCount() > 0)
        layout_.restore();
}

void TSpreadsheet::setCurrentRow(RowIndex row) {
    if (row >= static_cast<RowIndex>(model_.rowCount()))
        return;
    // The leftmost column in view, so that the list does not scroll sideways.
    const int column = std::max(0, view_->horizontalHeader()->logicalIndexAt(1));
    view_->setCurrentIndex(model_.index(model_.placeOf(row), column));
    view_->scrollTo(view_->currentIndex());
}

std::optional<RowIndex> TSpreadsheet::neighbour(RowIndex row, int step) const {
    const int place = model_.placeOf(row) + step;
    return place >= 0 && place < model_.rowCount() ? std::optional(model_.storedRow(place)) : std::nullopt;
}

} // namespace quobrix
