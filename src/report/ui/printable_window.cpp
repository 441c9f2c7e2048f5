#include "report/ui/printable_window.h"

#include "ui/fields.h"

#include <QAction>
#include <QPushButton>

#include <utility>

namespace quobrix {

std::optional<Report> listReport(const QWidget& window, Grid lines) {
    if (lines.rows.empty())
        return {};
    Report report{window.windowTitle().toStdString(), {}, true};
    report.blocks.emplace_back(std::move(lines));
    return report;
}

std::vector<QPushButton*> printButtons(QWidget& window, const QString& prefix, std::span<QAction* const> commands) {
    std::vector<QPushButton*> buttons;
    for (QAction* command : commands) {
        window.addAction(command); // for its keys
        QPushButton* button = buttons.emplace_back(new QPushButton(command->text()));
        button->setObjectName(prefix + command->objectName());
        button->setAutoDefault(false);
        followAction(*button, *command, promptWithKeys);
    }
    return buttons;
}

} // namespace quobrix
