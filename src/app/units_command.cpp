#include "app/units_command.h"

#include "app/main_frame.h"
#include "messages/file_messages.h"
#include "units/ui/unit_system_dialog.h"

#include <QApplication>

namespace quobrix {

UnitsCommand::UnitsCommand(TQuobrixFrame& frame, TUnitSystem& units, UnitSystemStore& store)
    : frame_(frame), units_(units), store_(store) {
    frame_.commands().handle(CommandId::Units, [this] { showDialog(); });
    frame_.beforeClosing([this] { return mayClose(); });
}

void UnitsCommand::showDialog() {
    // Over a modal dialog it can be used only as a child of that.
    QWidget* parent = QApplication::activeModalWidget();
    if (!parent)
        parent = &frame_;
    if (dialog_ && dialog_->parentWidget() != parent) {
        delete dialog_;
        dialog_ = nullptr;
    }
    if (!dialog_) {
        dialog_ = new UnitSystemDialog(units_, store_, frame_.context().settings, frame_.prompter(), parent);
        dialog_->setAttribute(Qt::WA_DeleteOnClose);
    }
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
}

bool UnitsCommand::mayClose() {
    if (dialog_) // which saves, and tells
        return dialog_->close();
    const Result<void> saved = store_.saveChanges();
    if (!saved)
        frame_.prompter().tell(fileMessage(saved.error(), FileAction::Save, "The unit system " + units_.name()));
    return true;
}

} // namespace quobrix
