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
struct SeenText {
    QString where, text;
};
using SeenTexts = std::vector<SeenText>;

/// Adds to ALL what an action, a model (its headings, and all cells of its first rows), or a window and everything in
/// it shows, says and explains.
void addTexts(SeenTexts& all, const QAction& action);
void addTexts(SeenTexts& all, const QAbstractItemModel& model, const QString& where);
void addTexts(SeenTexts& all, QWidget& window);
/// The same of what a report tells, its drawings included.
void addTexts(SeenTexts& all, const Report& report);

} // namespace quobrix::test
