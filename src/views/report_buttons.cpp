#include "views/report_buttons.h"

#include "report/ui/printable_window.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>

#include <utility>

namespace quobrix {

void addReportButtons(QDialogButtonBox& box, QDialog& window, const char* prefix, const ViewContext& context,
                      std::function<std::optional<Report>()> report) {
    for (QPushButton* button : printButtons(window, QLatin1String(prefix), context.printing))
        box.addButton(button, QDialogButtonBox::ActionRole);
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
