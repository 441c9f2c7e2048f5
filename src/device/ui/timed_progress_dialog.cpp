#include "device/ui/timed_progress_dialog.h"

#include "ui/windows.h"

#include <QProgressDialog>
#include <QTimer>

namespace quobrix {

void TimedProgressDialog::show(const TimedProgress& progress) {
    const QString title = QString::fromUtf8(progress.title.data(), static_cast<qsizetype>(progress.title.size()));
    QProgressDialog dialog(title, {}, 0, progress.steps, &usableParent(parent_));
    dialog.setObjectName(QStringLiteral("timedProgress"));
    dialog.setAccessibleName(title);
    dialog.setWindowTitle(title);
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setMinimumDuration(0);
    dialog.setAutoClose(false);
    dialog.setAutoReset(false);
    dialog.setValue(0);
    QTimer step;
    QObject::connect(&step, &QTimer::timeout, &dialog, [&] {
        if (dialog.value() < progress.steps)
            dialog.setValue(dialog.value() + 1);
    });
    step.start(progress.interval / haste_);
    QTimer::singleShot(progress.total() / haste_, &dialog, &QDialog::accept);
    dialog.exec();
}

} // namespace quobrix
