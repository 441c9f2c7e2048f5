#include "views/fuel_entry_dialog.h"

#include "base/ui/qt_text.h"
#include "messages/message.h"
#include "model/quobrix_document.h"
#include "tables/ui/table_spreadsheet.h"

#include <QLabel>

#include <ctime>

namespace quobrix {
namespace {

enum : std::size_t { kVehicleColumn, kTimeColumn, kFullTankColumn = 4 };
constexpr int kCommentsColumn = 8;

constexpr ListDialogSpec kSpec{"FuelEntryDialog", MessageId::EmptyFuelEntries, kCommentsColumn, 170};

} // namespace

FuelEntryDialog::FuelEntryDialog(const ViewContext& context, QWidget* parent)
    : HearsFirst(context.document.edits()),
      ListDialog(context, kSpec, toQt(text(TFuelEntryTable().spec().title)), parent), totals_(new QLabel) {
    totals_->setObjectName(QStringLiteral("fuelTotals"));
    totals_->setTextFormat(Qt::PlainText);
    totals_->setWordWrap(true);
    totals_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    addBelowList(totals_);
    list().setMakeTable([this]() -> Table* {
        auto& made = this->context().document.store().singleton<TFuelEntryTable>();
        return made.store() ? &made : nullptr; // else one that cannot be read
    });
    list().setNewRow([this](RowIndex row) { return newEntry(row); });
    showEntries();
    layOutColumns();
}

void FuelEntryDialog::refresh() { showEntries(); }

void FuelEntryDialog::showEntries() {
    shown_ = context().document.fuelEntries();
    list().showTable(shown_ ? *shown_ : none_);
    showTotals();
}

void FuelEntryDialog::tableChanged(const TableChange& change) {
    const TFuelEntryTable* entries = context().document.fuelEntries();
    // The table goes with its first entry, before anything else may look at it, and comes when all of it is there.
    if ((shown_ && !entries) || (change.kind == TableChange::Kind::Objects && shown_ != entries))
        showEntries();
    else
        showTotals();
}

void FuelEntryDialog::showTotals() {
    QStringList lines;
    if (shown_)
        for (const std::string& vehicle : shown_->vehicles())
            if (const ShownText line = shown_->summaryOf(vehicle, context().text()); !line.empty())
                lines << toQt(line);
    totals_->setText(lines.join(QLatin1Char('\n')));
    totals_->setVisible(!lines.isEmpty());
}

/// Most entries are of the vehicle that was filled last, made when it has just been filled up.
std::vector<CellEdit> FuelEntryDialog::newEntry(RowIndex row) const {
    TQuobrixDocument& document = context().document;
    const TFuelEntryTable* entries = document.fuelEntries();
    const TVehicleNamesTable& vehicles = document.vehicles();
    std::string vehicle;
    if (entries && row > 0)
        vehicle = entries->column<TFuelEntryVehicleColumn>().at(row - 1);
    else if (vehicles.rowCount() == 1)
        vehicle = vehicles.key(0);
    std::vector<CellEdit> cells{{kTimeColumn, row, std::int64_t{std::time(nullptr) / 60 * 60}},
                                {kFullTankColumn, row, true}};
    if (!vehicle.empty())
        cells.push_back({kVehicleColumn, row, vehicle});
    return cells;
}

} // namespace quobrix
