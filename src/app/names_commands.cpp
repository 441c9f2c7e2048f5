#include "app/names_commands.h"

#include "app/main_frame.h"
#include "app/table_windows.h"
#include "ui/windows.h"
#include "views/fuel_entry_dialog.h"

namespace quobrix {

NamesCommands::NamesCommands(TQuobrixFrame& frame) : frame_(frame) {
    offer<TVehicleNamesDialog, TVehicleNamesTable>(CommandId::VehicleId);
    offer<TQuobrixNamesDialog, TQuobrixNamesTable>(CommandId::QuobrixId);
    offer<DriverNamesDialog, DriverNamesTable>(CommandId::DriverId);
    offer<FuelEntryDialog, TFuelEntryTable>(CommandId::FuelEntry);
}

template <class Dialog, class Table>
void NamesCommands::offer(CommandId id) {
    frame_.commands().handle(id, [this] { open<Dialog>(); });
    frame_.tableWindows().addSource(
        Table::kType, [this](std::string_view columnKey, RowIndex row) { open<Dialog>().showCell(columnKey, row); });
}

template <class Dialog>
Dialog& NamesCommands::open() {
    Dialog* dialog = nullptr;
    for (ListDialog* shown : frame_.listDialogs())
        if (auto* found = dynamic_cast<Dialog*>(shown); found && found->isVisible()) // not one about to be deleted
            dialog = found;
    if (!dialog) {
        dialog = new Dialog(frame_.context(), &frame_);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
    }
    bringToFront(*dialog);
    return *dialog;
}

void NamesCommands::name(const NewKeys& keys) {
    const auto nameVehicles = [this, vehicles = keys.vehicles] {
        if (!vehicles.empty())
            open<TVehicleNamesDialog>().nameKeys(vehicles);
    };
    if (keys.loggers.empty())
        return nameVehicles();
    auto& loggers = open<TQuobrixNamesDialog>();
    loggers.nameKeys(keys.loggers);
    QObject::connect(&loggers, &QDialog::finished, &frame_, nameVehicles); // one after the other: typing goes to one
}

} // namespace quobrix
