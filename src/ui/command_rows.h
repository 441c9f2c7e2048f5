#pragma once

#include "texts/source_text.h"

#include <QString>

class QAction;
class QWidget;

namespace quobrix {

/// A command as the .def file of its kind has it.
struct CommandRow {
    const char* name;
    int id;
    SourceText text; ///< its tab precedes the keys, which are the same in every language
    SourceText prompt;
};

/// The text of ROW without its keys.
QString textWithoutKeys(const CommandRow& row);

/// What the prompt of a command says before it can do anything.
QString notAvailableYet(const QString& prompt);

/// An action of OWNER, in which its keys work: PREFIX and the command's name are its object name, the id is its data.
/// It is disabled, and not available yet.
QAction* addCommand(QWidget& owner, const char* prefix, const CommandRow& row);

} // namespace quobrix
