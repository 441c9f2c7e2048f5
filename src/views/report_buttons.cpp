#include "views/report_buttons.h"

#include "ui/fields.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>

#include <utility>

namespace quobrix {

void addReportButtons(QDialogButtonBox& box, QDialog& window, const char* prefix, const ViewContext& context,
                      std::function<std::optional<Report>()> report) {
    for (QAction* action : context.printing ? *context.printing : std::vector<QAction*>()) {
        window.addAction(action); // for its keys
        auto* button = box.addButton(action->text(), QDialogButtonBox::ActionRole);
        button->setObjectName(QLatin1String(prefix) + action->objectName());
        followAction(*button, *action, promptWithKeys);
    }
    auto* save = box.addButton(QObject::tr("&Save As..."), QDialogButtonBox::ActionRole);
    save->setObjectName(QLatin1String(prefix) + QLatin1String("SaveAs"));
    save->setToolTip(QObject::tr("Saves the report as a file for people: PDF, HTML, a picture or text."));
    const std::function<void(Report)>* saveReport = context.saveReport;
    save->setEnabled(saveReport && *saveReport);
    QObject::connect(save, &QPushButton::clicked, &window, [saveReport, make = std::move(report)] {
        if (std::optional<Report> made = make())
            (*saveReport)(*std::move(made));
    });
}

} // namespace quobrix
