#pragma once

#include <QString>

#include <functional>

class QModelIndex;
class QObject;
class QWidget;

namespace quobrix {

class SpreadsheetModel;

/// The editor of a cell, by the kind of its column: a list for selections, else a line with the unit, or the form of a
/// date, behind what is typed.
QWidget* makeCellEditor(const SpreadsheetModel& model, const QModelIndex& cell, QWidget* parent);
/// Puts TEXT into an editor, unless something has been typed there.
void setEditorText(QWidget& editor, const QString& text);
QString editorText(const QWidget& editor);
/// Empties an editor, as if a person did.
void clearEditor(QWidget& editor);
/// Runs WORK, while CONTEXT lives, whenever a person changes what is in an editor.
void whenEdited(QWidget& editor, QObject* context, const std::function<void()>& work);

} // namespace quobrix
