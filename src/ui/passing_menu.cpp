#include "ui/passing_menu.h"

#include <QAccessible>

namespace quobrix {

PassingMenu::PassingMenu(const char* name, QWidget& parent) : QMenu(&parent) {
    setObjectName(QLatin1String(name));
    setAttribute(Qt::WA_DeleteOnClose);
}

PassingMenu::~PassingMenu() {
    QList<QMenu*> menus = findChildren<QMenu*>();
    menus.append(this);
    for (const QMenu* menu : menus)
        for (QAction* entry : menu->actions())
            if (QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(entry))
                QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(read));
}

} // namespace quobrix
