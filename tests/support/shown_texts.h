#pragma once

#include <QString>

#include <vector>

class QAbstractItemModel;
class QAction;
class QWidget;

namespace quobrix {
struct Report;
}

namespace quobrix::test {

/// A text that a person sees, hears or is told when pointing at something, and where it stands.
struct ShownText {
    QString where, text;
};
using ShownTexts = std::vector<ShownText>;

/// Adds to ALL what an action, a model (its headings, and all cells of its first rows), or a window and everything in
/// it shows, says and explains.
void addTexts(ShownTexts& all, const QAction& action);
void addTexts(ShownTexts& all, const QAbstractItemModel& model, const QString& where);
void addTexts(ShownTexts& all, QWidget& window);
/// The same of what a report tells, its drawings included.
void addTexts(ShownTexts& all, const Report& report);

} // namespace quobrix::test
