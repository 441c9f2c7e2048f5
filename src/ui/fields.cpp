#include "ui/fields.h"

#include <QAbstractButton>
#include <QAction>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

namespace quobrix {
namespace {

QString withKeys(const QString& text, const QAction& action) {
    return QStringLiteral("%1 (%2)").arg(text, action.shortcut().toString(QKeySequence::NativeText));
}

} // namespace

QLabel* fieldLabel(const QString& text, QWidget& field) {
    auto* label = new QLabel(text);
    label->setBuddy(&field);
    field.setAccessibleName(QString(text).remove(QLatin1Char('&')).remove(QLatin1Char(':')));
    return label;
}

void keepBesideName(QLabel& value) {
    value.setAlignment(QStyle::visualAlignment(value.layoutDirection(), Qt::AlignLeft) | Qt::AlignAbsolute |
                       Qt::AlignVCenter);
}

QString textWithKeys(const QAction& action) { return withKeys(action.text(), action); }

QString promptWithKeys(const QAction& action) {
    QString prompt = action.statusTip();
    if (prompt.endsWith(QLatin1Char('.')))
        prompt.chop(1);
    return withKeys(prompt, action);
}

QString toolTipOf(const QAction& action) { return action.toolTip(); }

void followAction(QAbstractButton& button, QAction& action, ActionTip tip, Qt::ConnectionType connection) {
    const auto follow = [&button, &action, tip] {
        button.setEnabled(action.isEnabled());
        button.setToolTip(tip(action));
        button.setStatusTip(action.statusTip());
    };
    follow();
    QObject::connect(&action, &QAction::changed, &button, follow);
    QObject::connect(&button, &QAbstractButton::clicked, &action, &QAction::trigger, connection);
}

void addHelp(QDialogButtonBox& buttons) {
    QPushButton* help = buttons.addButton(QDialogButtonBox::Help);
    help->setEnabled(false);
    help->setToolTip(QObject::tr("Help is not available yet."));
}

} // namespace quobrix
