#pragma once

#include <QString>
#include <Qt>

class QAbstractButton;
class QAction;
class QDialogButtonBox;
class QLabel;
class QWidget;

namespace quobrix {

/// The label TEXT ("&Units:") of FIELD: its mnemonic leads there, and assistive technology reads the field by it.
QLabel* fieldLabel(const QString& text, QWidget& field);

/// VALUE stands beside its name, whichever way it is read: one that is read from right to left would move to the far
/// edge.
void keepBesideName(QLabel& value);

/// What BUTTON is to show as the tool tip while it does what an action does.
using ActionTip = QString (*)(const QAction&);
/// The action's text, or its prompt, with its keys: "Undo (Ctrl+Z)".
QString textWithKeys(const QAction& action);
QString promptWithKeys(const QAction& action);
/// The action's own tool tip.
QString toolTipOf(const QAction& action);

/// BUTTON does what ACTION does, and can be pressed while that is enabled. With a queued connection it does so when
/// control returns to the event loop: for commands that may end the button.
void followAction(QAbstractButton& button, QAction& action, ActionTip tip,
                  Qt::ConnectionType connection = Qt::AutoConnection);

/// Adds Help to BUTTONS: it is there as everywhere, and says so when it can.
void addHelp(QDialogButtonBox& buttons);

} // namespace quobrix
