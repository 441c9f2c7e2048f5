#pragma once

#include "app/command_table.h"
#include "model/name_questions.h"
#include "views/names_dialog.h"

#include <QPointer>

namespace quobrix {

class TQuobrixFrame;

/// The commands Vehicle ID, Quobrix ID, Driver ID and Fuel Entry: a dialog each, which stays open beside the pages
/// while they show what is edited in it.
class NamesCommands {
public:
    /// FRAME must outlive the commands.
    explicit NamesCommands(TQuobrixFrame& frame);

    /// Opens the dialogs of the tables that have some of KEYS, for these to be named: loggers, and when that dialog is
    /// closed, vehicles.
    void name(const NewKeys& keys);

private:
    template <class Dialog>
    Dialog& open();
    /// Makes Dialog what the command ID opens, and where the values of its table are found.
    template <class Dialog, class Table>
    void offer(CommandId id);

    TQuobrixFrame& frame_;
};

} // namespace quobrix
