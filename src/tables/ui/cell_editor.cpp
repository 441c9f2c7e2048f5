#include "tables/ui/cell_editor.h"

#include "base/ui/qt_text.h"
#include "tables/ui/spreadsheet_model.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

namespace quobrix {
namespace {

/// A line with HINT at its right end.
QLineEdit* makeLine(const QString& hint, QWidget* parent) {
    auto* line = new QLineEdit(parent);
    line->setFrame(true);
    if (hint.isEmpty())
        return line;
    auto* label = new QLabel(hint, line);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setCursor(Qt::IBeamCursor);
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 6, 0);
    layout->addStretch();
    layout->addWidget(label);
    line->setTextMargins(0, 0, label->sizeHint().width() + 6, 0);
    return line;
}

/// A list that is typed into: all that was typed so far is looked for, blanks as any character, however slowly that is
/// done. What nothing begins with is passed over; after a pause it begins anew.
class CellList final : public QComboBox {
public:
    explicit CellList(QWidget* parent) : QComboBox(parent) { view()->installEventFilter(this); }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (!takes(*event))
            QComboBox::keyPressEvent(event);
    }
    bool eventFilter(QObject* object, QEvent* event) override {
        return (object == view() && event->type() == QEvent::KeyPress && takes(*static_cast<QKeyEvent*>(event))) ||
               QComboBox::eventFilter(object, event);
    }

private:
    bool takes(const QKeyEvent& key) {
        const QString text = key.text();
        const bool typed = !text.isEmpty() && text.front().isPrint() &&
                           !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
        if (!typed) // it may choose something else
            typed_.clear();
        if (!typed || (typed_.isEmpty() && text == QLatin1String(" "))) // which opens the list
            return false;
        const bool paused = !lastKey_.isValid() || lastKey_.hasExpired(QApplication::keyboardInputInterval());
        lastKey_.start();
        int row = findText(typed_ + text, Qt::MatchStartsWith);
        if (row < 0 && (paused || typed_ == text)) {
            row = next(text);
            typed_.clear();
        }
        if (row < 0)
            return true;
        typed_ += text;
        if (view()->isVisible())
            view()->setCurrentIndex(model()->index(row, modelColumn()));
        else
            setCurrentIndex(row);
        return true;
    }
    /// The next row that begins with TEXT.
    int next(const QString& text) const {
        const int here = view()->isVisible() ? view()->currentIndex().row() : currentIndex();
        for (int step = 1; step <= count(); ++step)
            if (const int row = (here + step) % count(); itemText(row).startsWith(text, Qt::CaseInsensitive))
                return row;
        return -1;
    }

    QString typed_;
    QElapsedTimer lastKey_;
};

QComboBox* makeList(const Column& column, QWidget* parent) {
    auto* list = new CellList(parent);
    if (column.requirements().need != Need::Required)
        list->addItem(QString());
    for (const Selection& selection : column.selections())
        list->addItem(toQt(selection.text));
    return list;
}

} // namespace

QWidget* makeCellEditor(const SpreadsheetModel& model, const QModelIndex& cell, QWidget* parent) {
    const Column& column = model.column(cell.column());
    QWidget* editor = column.kind() == ColumnKind::Selection || !column.selections().empty()
                          ? static_cast<QWidget*>(makeList(column, parent))
                          : makeLine(model.editHint(cell.row(), cell.column()), parent);
    editor->setObjectName(QStringLiteral("cellEditor"));
    editor->setAccessibleName(
        QObject::tr("%1, row %2")
            .arg(model.plainHeading(cell.column()), model.headerData(cell.row(), Qt::Vertical).toString()));
    return editor;
}

void setEditorText(QWidget& editor, const QString& text) {
    if (auto* list = qobject_cast<QComboBox*>(&editor)) {
        if (!list->property("filled").toBool())
            list->setCurrentText(text);
        list->setProperty("filled", true);
    } else if (auto* line = qobject_cast<QLineEdit*>(&editor); line && !line->isModified()) {
        line->setText(text);
    }
}

QString editorText(const QWidget& editor) {
    if (const auto* list = qobject_cast<const QComboBox*>(&editor))
        return list->currentText();
    return static_cast<const QLineEdit&>(editor).text();
}

void clearEditor(QWidget& editor) {
    if (auto* line = qobject_cast<QLineEdit*>(&editor)) {
        line->clear();
        line->setModified(true);
    }
}

void whenEdited(QWidget& editor, QObject* context, const std::function<void()>& work) {
    if (auto* list = qobject_cast<QComboBox*>(&editor))
        QObject::connect(list, &QComboBox::currentIndexChanged, context, work);
    else if (auto* line = qobject_cast<QLineEdit*>(&editor))
        QObject::connect(line, &QLineEdit::textEdited, context, work);
}

} // namespace quobrix
