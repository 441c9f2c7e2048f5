#pragma once

#include "units/unit_system_store.h"

#include <QPointer>

namespace quobrix {

class TQuobrixFrame;
class UnitSystemDialog;

/// The command Units: one dialog, which stays open beside the pages while they show what is chosen in it. Changes that
/// it left unsaved are saved before the program ends.
class UnitsCommand {
public:
    /// All arguments must outlive the command, which must outlive the frame's last question.
    UnitsCommand(TQuobrixFrame& frame, TUnitSystem& units, UnitSystemStore& store);

private:
    void showDialog();
    bool mayClose();

    TQuobrixFrame& frame_;
    TUnitSystem& units_;
    UnitSystemStore& store_;
    QPointer<UnitSystemDialog> dialog_;
};

} // namespace quobrix
