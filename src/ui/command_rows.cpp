#include "ui/command_rows.h"

#include "base/ui/qt_text.h"

#include <QAction>
#include <QKeySequence>
#include <QWidget>

namespace quobrix {

QString textWithoutKeys(const CommandRow& row) { return toQt(text(row.text)).section(QLatin1Char('\t'), 0, 0); }

QString notAvailableYet(const QString& prompt) { return QObject::tr("%1 (not available yet)").arg(prompt); }

QAction* addCommand(QWidget& owner, const char* prefix, const CommandRow& row) {
    auto* action = new QAction(textWithoutKeys(row), &owner);
    action->setObjectName(QLatin1String(prefix) + QLatin1String(row.name));
    action->setData(row.id);
    action->setShortcut({toQt(row.text.english()).section(QLatin1Char('\t'), 1), QKeySequence::PortableText});
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    action->setStatusTip(notAvailableYet(toQt(text(row.prompt))));
    action->setEnabled(false);
    owner.addAction(action);
    return action;
}

} // namespace quobrix
