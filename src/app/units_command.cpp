#include "app/units_command.h"

#include "app/main_frame.h"
#include "messages/file_messages.h"
#include "texts/text.h"
#include "ui/windows.h"
#include "units/ui/unit_system_dialog.h"

namespace quobrix {

UnitsCommand::UnitsCommand(TQuobrixFrame& frame, TUnitSystem& units, UnitSystemStore& store)
    : frame_(frame), units_(units), store_(store) {
    frame_.commands().handle(CommandId::Units, [this] { showDialog(); });
    frame_.beforeClosing([this] { return mayClose(); });
}

void UnitsCommand::showDialog() {
    inFront(dialog_, frame_, [&](QWidget* parent) {
        return new UnitSystemDialog(units_, store_, frame_.context().settings, frame_.prompter(), parent);
    });
}

bool UnitsCommand::mayClose() {
    if (dialog_) // which saves, and tells
        return dialog_->close();
    const Result<void> saved = store_.saveChanges();
    if (!saved)
        frame_.prompter().tell(
            fileMessage(saved.error(), FileAction::Save, text(TextId::TheUnitSystem, units_.name())));
    return true;
}

} // namespace quobrix
